// What differs between the tool's hosts: host_linux.cpp and host_windows.cpp each hold all of it.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "mox_classes/text/unicode_string.h"

namespace qv {

enum class Stream { kInput, kOutput, kError };
// Whether a person sits at the stream's other end.
bool IsTerminal(Stream stream);

// Whether the write to standard output that failed last found no reader.
bool OutputHasNoReader();

// The program's arguments in UTF-8, and the streams made ready for bytes.
std::vector<std::string> PrepareConsole(int argc, char** argv);

// Gives the file `from` the name `to` in one step, in place of the file that had it. Returns the
// Win32 error code, 0 when it is done.
DWORD MoveInPlace(const UnicodeString& from, const UnicodeString& to);

// Seconds that local time is ahead of UTC at a moment, in seconds since 1970.
std::int64_t LocalOffset(std::int64_t utc);

struct HostFacts {
    std::string library;  // file of the library that is loaded
    std::string machine;
    std::string root;  // the folder that stands in for a Windows machine; empty on Windows
};
HostFacts GetHostFacts();

// The folder for the user's own data of this program, which may not exist yet; UTF-8. Throws
// Failure (kCannotOpen) when it is not known.
std::string UserDataFolder();

}  // namespace qv
