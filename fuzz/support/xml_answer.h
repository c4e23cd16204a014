// What must hold for responses of DoXML and of its strict reading.
#pragma once

#include "mox_classes/containers/memory_stream.h"
#include "support/input.h"

namespace fuzz {

// Whether the response can be promised to be readable: its layout and some of its names are the
// request's own.
bool IsPlain(Bytes request);

void RequireReadable(Classes::TMemoryStream& response);

}  // namespace fuzz
