// GetFileVersionInfoW and VerQueryValueW.
#include <windows.h>
#include <winver.h>

#include <algorithm>
#include <cstring>

#include "base/os_error.h"
#include "root/host_path.h"
#include "version/pe_file.h"
#include "version/version_block.h"

namespace host {
namespace {

DWORD ReadVersion(LPCWSTR file, std::vector<BYTE>& block) {
    const HostPath target = ToHostPath(file);
    if (target.error != NO_ERROR) return target.error;
    const DWORD error = ReadVersionResource(target.path, block);
    if (error != NO_ERROR) return error;
    const bool whole = VersionBlock::At(block.data(), block.size(), 0).has_value();
    return whole ? NO_ERROR : ERROR_RESOURCE_DATA_NOT_FOUND;
}

// Follows a path of keys; an empty one names the block itself.
std::optional<VersionBlock> Follow(std::optional<VersionBlock> block, std::u16string_view path) {
    while (block.has_value() && !path.empty()) {
        const std::size_t end = std::min(path.find(u'\\'), path.size());
        if (end > 0) block = block->Child(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return block;
}

}  // namespace
}  // namespace host

DWORD GetFileVersionInfoSizeW(LPCWSTR file, LPDWORD handle) {
    std::vector<BYTE> block;
    if (handle != nullptr) *handle = 0;
    const DWORD error = host::ReadVersion(file, block);
    SetLastError(error);
    return error == NO_ERROR ? static_cast<DWORD>(block.size()) : 0;
}

BOOL GetFileVersionInfoW(LPCWSTR file, DWORD, DWORD size, LPVOID data) {
    std::vector<BYTE> block;
    const DWORD error = host::ReadVersion(file, block);
    if (error != NO_ERROR) return host::Fail(error);
    if (data == nullptr) return host::Fail(ERROR_INVALID_PARAMETER);
    if (size < block.size()) return host::Fail(ERROR_INSUFFICIENT_BUFFER);
    std::memcpy(data, block.data(), block.size());
    return TRUE;
}

// This call gets no size. So it checks against the size that the block states, which
// GetFileVersionInfoW has checked before.
BOOL VerQueryValueW(LPCVOID data, LPCWSTR path, LPVOID* value, UINT* size) {
    if (data == nullptr || path == nullptr || value == nullptr || size == nullptr) {
        return host::Fail(ERROR_INVALID_PARAMETER);
    }
    std::uint16_t bytes = 0;
    std::memcpy(&bytes, data, sizeof bytes);
    const auto* const start = static_cast<const BYTE*>(data);
    const auto block = host::Follow(host::VersionBlock::At(start, bytes, 0), path);
    UINT found_size = 0;
    const BYTE* const found = block.has_value() ? block->Value(found_size) : nullptr;
    const bool is_root = std::u16string_view(path).find_first_not_of(u'\\') == std::u16string::npos;
    if (found == nullptr || (is_root && found_size < sizeof(VS_FIXEDFILEINFO))) {
        return host::Fail(ERROR_RESOURCE_TYPE_NOT_FOUND);
    }
    *value = const_cast<BYTE*>(found);
    *size = found_size;
    return TRUE;
}
