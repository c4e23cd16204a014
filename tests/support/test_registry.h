// Writes registry values for a test, in one line each.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace test {

/// One key, made when it is missing. A refused call throws std::runtime_error.
class TestKey {
  public:
    TestKey(HKEY root, const std::basic_string<WCHAR>& path);
    ~TestKey();
    TestKey(const TestKey&) = delete;
    TestKey& operator=(const TestKey&) = delete;

    TestKey& Set(const WCHAR* name, const std::basic_string<WCHAR>& text);
    TestKey& Set(const WCHAR* name, DWORD number);
    TestKey& Set(const WCHAR* name, const std::vector<BYTE>& bytes, DWORD type = REG_BINARY);

  private:
    HKEY key_ = nullptr;
};

}  // namespace test
