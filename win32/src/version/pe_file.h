// The version resource of a PE image (EXE, DLL; 32 and 64 bit) on disk.
//
// Every offset and size in the file is checked against the file before use. A file with a wrong one
// counts as a file without a version.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace host {

// Reads the first version resource of the file in its first language. Win32 codes:
// ERROR_RESOURCE_DATA_NOT_FOUND when the file is no image or has no resources,
// ERROR_RESOURCE_TYPE_NOT_FOUND when none of them is a version. The result has at most 64 KiB,
// because a version block states its size in 16 bits.
DWORD ReadVersionResource(const std::string& path, std::vector<BYTE>& block);

}  // namespace host
