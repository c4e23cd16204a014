// A folder of its own on drive C for one test, and a few verbs on files in it. Holds on both hosts.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <chrono>
#include <string>
#include <vector>

#include "support/fresh_host_root.h"
#include "support/last_error.h"
#include "support/wine_gap.h"

namespace test {

using Wide = std::basic_string<WCHAR>;

// The last error of `call`, which must fail, from a marker that no call sets.
constexpr DWORD kUntouched = 0xDEAD;

inline Wide Decimal(DWORD number) {
    const std::string digits = std::to_string(number);
    return Wide(digits.begin(), digits.end());
}

class FileTest : public testing::Test {
  protected:
    void SetUp() override {
        folder_ = TEXT("C:\\qv_files_") +
                  Decimal(static_cast<DWORD>(
                      std::chrono::steady_clock::now().time_since_epoch().count()));
        ASSERT_TRUE(CreateDirectoryW(folder_.c_str(), nullptr)) << GetLastError();
        SetLastError(kUntouched);
    }
    void TearDown() override {
        CloseAll();
        for (auto name = names_.rbegin(); name != names_.rend(); ++name) {
            if (!DeleteFileW(name->c_str())) RemoveDirectoryW(name->c_str());
        }
        EXPECT_TRUE(RemoveDirectoryW(folder_.c_str())) << GetLastError();
    }

    const Wide& Folder() const { return folder_; }
    // A name in the folder, removed at the end.
    Wide Path(const Wide& name) {
        names_.push_back(folder_ + TEXT('\\') + name);
        return names_.back();
    }
    // Opens; the end closes what is still open. Invalid with the last error on failure.
    HANDLE Open(const Wide& name, DWORD access, DWORD share, DWORD disposition) {
        SetLastError(kUntouched);
        const HANDLE file = CreateFileW(name.c_str(), access, share, nullptr, disposition,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file != INVALID_HANDLE_VALUE) open_.push_back(file);
        return file;
    }
    HANDLE OpenShared(const Wide& name) {
        return Open(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                    OPEN_ALWAYS);
    }
    // The last error of an Open that must fail; 0 when it did not.
    DWORD OpenError(const Wide& name, DWORD access, DWORD share, DWORD disposition) {
        return ErrorUnless(Open(name, access, share, disposition) != INVALID_HANDLE_VALUE);
    }
    void Close(HANDLE file) {
        EXPECT_TRUE(CloseHandle(file));
        std::erase(open_, file);
    }
    void CloseAll() {
        for (const HANDLE handle : open_) CloseHandle(handle);
        open_.clear();
    }
    void Write(HANDLE file, const std::string& text) {
        DWORD done = 0;
        EXPECT_TRUE(WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &done, nullptr));
        EXPECT_EQ(done, text.size());
    }
    std::string Read(HANDLE file, DWORD bytes) {
        std::string text(bytes, '\0');
        DWORD done = 0;
        EXPECT_TRUE(ReadFile(file, text.data(), bytes, &done, nullptr)) << GetLastError();
        text.resize(done);
        return text;
    }
    static bool There(const WCHAR* name) {
        return GetFileAttributesW(name) != INVALID_FILE_ATTRIBUTES;
    }
    void MakeFile(const Wide& name, const std::string& text) {
        const HANDLE file = Open(name, GENERIC_WRITE, 0, CREATE_ALWAYS);
        Write(file, text);
        Close(file);
    }

  private:
    FreshHostRoot root_;
    Wide folder_;
    std::vector<Wide> names_;
    std::vector<HANDLE> open_;
};

}  // namespace test
