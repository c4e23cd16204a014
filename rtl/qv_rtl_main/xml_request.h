// The XML request call: a request document in, a response document out. docs/xml.md describes both
// for their users.
//
// A request is parsed whole before anything is applied: one that is not well-formed changes
// nothing. Answers, problems and warnings stand in the response; every call returns 1. Any thread.
#pragma once

#include <windows.h>

#include "qv_api.h"

namespace Classes {
class TStream;
}
class TXmlDoc;

extern "C" {
// Answers the request file in the response file, which is created or replaced. No exception leaves
// the call. A request file that cannot be read gives a response that says so; a response file that
// cannot be created is logged, and nothing is applied.
QV_API int DoXMLW(const WCHAR* requestFile, const WCHAR* responseFile);
// File names in the system ANSI code page.
QV_API int DoXMLA(const char* requestFile, const char* responseFile);
}

// Reads the request from the stream's start to its end. What the response stream throws passes
// through.
QV_API int DoXML(Classes::TStream* request, Classes::TStream* response);
// Fills a fresh response document for a request that was parsed to its end.
QV_API int DoXML(TXmlDoc* request, TXmlDoc* response);
