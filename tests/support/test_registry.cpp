#include "support/test_registry.h"

#include <cstring>
#include <stdexcept>

namespace test {

namespace {

void Require(const char* call, LSTATUS status) {
    if (status == ERROR_SUCCESS) return;
    throw std::runtime_error(std::string(call) + " failed: " + std::to_string(status));
}

std::vector<BYTE> BytesOf(const void* data, size_t size) {
    std::vector<BYTE> bytes(size);
    if (size != 0) std::memcpy(bytes.data(), data, size);
    return bytes;
}

}  // namespace

TestKey::TestKey(HKEY root, const std::basic_string<WCHAR>& path) {
    Require("RegCreateKeyExW",
            RegCreateKeyExW(root, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                            nullptr, &key_, nullptr));
}

TestKey::~TestKey() {
    RegCloseKey(key_);
}

TestKey& TestKey::Set(const WCHAR* name, const std::basic_string<WCHAR>& text) {
    return Set(name, BytesOf(text.c_str(), (text.size() + 1) * sizeof(WCHAR)), REG_SZ);
}

TestKey& TestKey::Set(const WCHAR* name, DWORD number) {
    return Set(name, BytesOf(&number, sizeof(number)), REG_DWORD);
}

TestKey& TestKey::Set(const WCHAR* name, const std::vector<BYTE>& bytes, DWORD type) {
    Require("RegSetValueExW",
            RegSetValueExW(key_, name, 0, type, bytes.data(), static_cast<DWORD>(bytes.size())));
    return *this;
}

}  // namespace test
