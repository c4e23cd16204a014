// The text command call: a line of tab-separated items in, a result text and a status out.
// docs/commands.md describes the language for its users.
#pragma once

#include <windows.h>

#include "qv_api.h"

// Runs one command. `length` counts the units of text that may be stored: the buffer has room for
// length + 1, the terminator included. A null buffer receives nothing, a negative length counts as
// 0. Returns the handler's status when it is negative, else the length of the whole result, which
// passes `length` when the text was cut. No exception leaves the call: one that carries a text, as
// for a value that is not a number, is status -60, any other -70, and the text is the result. Any
// thread.
extern "C" {
QV_API int DoCommandW(const WCHAR* command, WCHAR* buffer, int length);
QV_API int DoCommand(const WCHAR* command, WCHAR* buffer, int length);
// The same in the system ANSI code page; lengths are bytes.
QV_API int DoCommandA(const char* command, char* buffer, int length);
}
