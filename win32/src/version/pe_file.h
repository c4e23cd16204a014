// The version resource of a PE image (EXE, DLL; 32 and 64 bit) on disk.
//
// Every offset and size of the file is checked against the file before it is used; a file that lies
// is a file without a version.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace host {

// Reads the first version resource of the file in its first language. Win32 codes:
// ERROR_RESOURCE_DATA_NOT_FOUND when the file is no image or has no resources,
// ERROR_RESOURCE_TYPE_NOT_FOUND when none of them is a version. At most 64 KiB, which is the
// largest a version block can say it is.
DWORD ReadVersionResource(const std::string& path, std::vector<BYTE>& block);

}  // namespace host
