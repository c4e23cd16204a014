// The strict reading of a request: the XML request call passes over what it does not know, and this
// says beforehand what that would be.
#pragma once

#include "qv_api.h"

namespace Classes {
class TStream;
}

// Reads the request from the stream's start to its end and carries nothing out. True when the call
// would use every name, value and text of it; nothing is written then. Else the response names each
// that it would not, up to a hundred, in an `error` with its line and column; for a request that is
// not well-formed it is the response of the call.
QV_API bool CheckXmlRequest(Classes::TStream* request, Classes::TStream* response);
