// What Windows would say about a file of this host.
#pragma once

#include <windows.h>

#include <sys/stat.h>

namespace host {

// FILE_ATTRIBUTE_... bits. Nobody's write permission means read-only; names that begin with a dot
// are not hidden.
DWORD AttributesOf(const struct stat& info);

// Nanoseconds of this host's clock as units of 100 ns since 1601.
FILETIME FileTimeOf(const timespec& time);

}  // namespace host
