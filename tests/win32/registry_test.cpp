// Registry semantics that hold on every host.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <thread>
#include <vector>

#include "support/fresh_host_root.h"
#include "support/wine_gap.h"

namespace {

using Text = std::basic_string<WCHAR>;
using Bytes = std::vector<BYTE>;

const Text kTestKey = TEXT("Software\\QvTestRegistry");

class Registry : public testing::Test {
  protected:
    Registry() {
        RegDeleteTreeW(HKEY_CURRENT_USER, kTestKey.c_str());
        key_ = Create(HKEY_CURRENT_USER, kTestKey.c_str());
    }
    ~Registry() override {
        RegCloseKey(key_);
        RegDeleteTreeW(HKEY_CURRENT_USER, kTestKey.c_str());
    }

    static HKEY Create(HKEY parent, LPCWSTR path, DWORD* disposition = nullptr) {
        HKEY key = nullptr;
        EXPECT_EQ(RegCreateKeyExW(parent, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                                  disposition),
                  ERROR_SUCCESS);
        return key;
    }
    static LSTATUS Open(HKEY parent, LPCWSTR path, HKEY& key, REGSAM access = KEY_READ) {
        return RegOpenKeyExW(parent, path, 0, access, &key);
    }
    // Windows counts a terminator that stands right behind a text; here none does.
    LSTATUS Set(LPCWSTR name, DWORD type, const Bytes& data) {
        Bytes guarded = data;
        guarded.insert(guarded.end(), 4, 0xEE);
        return RegSetValueExW(key_, name, 0, type, guarded.data(), static_cast<DWORD>(data.size()));
    }
    // The value's bytes; the type in `type`.
    Bytes Get(LPCWSTR name, DWORD& type) {
        Bytes data(200);
        auto size = static_cast<DWORD>(data.size());
        EXPECT_EQ(RegQueryValueExW(key_, name, nullptr, &type, data.data(), &size), ERROR_SUCCESS);
        data.resize(size);
        return data;
    }
    LSTATUS Query(LPCWSTR name) {
        return RegQueryValueExW(key_, name, nullptr, nullptr, nullptr, nullptr);
    }

    const test::FreshHostRoot root_;
    HKEY key_ = nullptr;
};

TEST_F(Registry, CreateTellsNewKeysFromOldOnes) {
    DWORD disposition = 0;
    RegCloseKey(Create(key_, TEXT("A\\B"), &disposition));
    EXPECT_EQ(disposition, DWORD{REG_CREATED_NEW_KEY});
    RegCloseKey(Create(key_, TEXT("a\\b\\"), &disposition));
    EXPECT_EQ(disposition, DWORD{REG_OPENED_EXISTING_KEY});
}

TEST_F(Registry, NamesOfKeysCompareWithoutCaseAndKeepTheirSpelling) {
    RegCloseKey(Create(key_, TEXT("\u00C4rger-\u0416")));
    HKEY found = nullptr;
    EXPECT_EQ(Open(key_, TEXT("\u00E4RGER-\u0436"), found), ERROR_SUCCESS);
    RegCloseKey(found);
    WCHAR name[20];
    DWORD size = 20;
    EXPECT_EQ(RegEnumKeyExW(key_, 0, name, &size, nullptr, nullptr, nullptr, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(Text(name, size), TEXT("\u00C4rger-\u0416"));
}

TEST_F(Registry, MissingKeysAndBadArgumentsHaveTheirCodes) {
    HKEY key = nullptr;
    EXPECT_EQ(Open(key_, TEXT("None"), key), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Open(key_, TEXT("\\Lead"), key), ERROR_BAD_PATHNAME);
    EXPECT_EQ(RegOpenKeyExW(key_, TEXT("None"), 0, KEY_READ, nullptr), ERROR_INVALID_PARAMETER);
    test::ExpectExceptOnWine(RegCreateKeyExW(key_, Text(256, 'k').c_str(), 0, nullptr, 0, KEY_READ,
                                             nullptr, &key, nullptr) == ERROR_INVALID_PARAMETER,
                             "a key's name has at most 255 characters");
    RegCloseKey(key);
    RegCloseKey(Create(key_, Text(255, 'k').c_str()));
    EXPECT_EQ(RegDeleteValueW(key_, TEXT("None")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteKeyW(key_, TEXT("None")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteTreeW(key_, TEXT("None")), ERROR_FILE_NOT_FOUND);
}

TEST_F(Registry, ClosedAndForeignHandlesAreRefused) {
    const HKEY closed = Create(key_, TEXT("A"));
    EXPECT_EQ(RegCloseKey(closed), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(closed), ERROR_INVALID_HANDLE);
    DWORD size = 0;
    for (const HKEY bad : {closed, HKEY{}, reinterpret_cast<HKEY>(&size)}) {
        EXPECT_EQ(RegQueryValueExW(bad, TEXT("x"), nullptr, nullptr, nullptr, &size),
                  ERROR_INVALID_HANDLE);
    }
    EXPECT_EQ(RegCloseKey(HKEY_CURRENT_USER), ERROR_SUCCESS);
}

TEST_F(Registry, AHandleAllowsWhatItWasOpenedFor) {
    HKEY reader = nullptr, writer = nullptr;
    ASSERT_EQ(Open(key_, TEXT(""), reader, KEY_READ | KEY_WOW64_64KEY), ERROR_SUCCESS);
    ASSERT_EQ(Open(key_, nullptr, writer, KEY_SET_VALUE), ERROR_SUCCESS);
    const BYTE one = 1;
    EXPECT_EQ(RegSetValueExW(reader, TEXT("v"), 0, REG_BINARY, &one, 1), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegSetValueExW(writer, TEXT("v"), 0, REG_BINARY, &one, 1), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValueW(reader, TEXT("v")), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegQueryValueExW(writer, TEXT("v"), nullptr, nullptr, nullptr, nullptr),
              ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegQueryValueExW(reader, TEXT("V"), nullptr, nullptr, nullptr, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(reader);
    RegCloseKey(writer);
}

TEST_F(Registry, ValuesComeBackByteForByte) {
    const struct {
        DWORD type;
        Bytes data;
    } rows[] = {
        {REG_SZ, {'a', 0, 0, 0}},
        {REG_SZ, {}},
        {REG_SZ, {0, 0}},
        {REG_SZ, {'a', 0, 0}},
        {REG_SZ, {'a', 0, 0, 0, 'b', 0}},
        {REG_SZ, {'\n', 0, 0x3D, 0xD8, 0, 0}},
        {REG_DWORD, {1, 2, 3, 4}},
        {REG_DWORD, {1}},
        {REG_BINARY, {0, 255}},
        {REG_MULTI_SZ, {'a', 0, 0, 0, 0, 0}},
        {REG_EXPAND_SZ, {'%', 0, 0, 0}},
        {0x12345678, {7, 7, 7}},
        {REG_NONE, {}},
        {REG_QWORD, {1, 2, 3, 4, 5, 6, 7, 8}},
    };
    for (const auto& row : rows) {
        DWORD type = 99;
        ASSERT_EQ(Set(TEXT("Value"), row.type, row.data), ERROR_SUCCESS);
        EXPECT_EQ(Get(TEXT("vALUE"), type), row.data);
        EXPECT_EQ(type, row.type);
    }
}

TEST_F(Registry, SizesAreAskedForFirst) {
    const Bytes text{'a', 0, 'b', 0, 0, 0};
    ASSERT_EQ(Set(nullptr, REG_SZ, text), ERROR_SUCCESS);
    DWORD type = 0, size = 0;
    EXPECT_EQ(RegQueryValueExW(key_, TEXT(""), nullptr, &type, nullptr, &size), ERROR_SUCCESS);
    EXPECT_EQ(type, REG_SZ);
    EXPECT_EQ(size, 6u);
    BYTE small[5] = {9, 9, 9, 9, 9};
    size = sizeof small;
    EXPECT_EQ(RegQueryValueExW(key_, nullptr, nullptr, nullptr, small, &size), ERROR_MORE_DATA);
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(RegQueryValueExW(key_, nullptr, nullptr, nullptr, small, nullptr),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegQueryValueExW(key_, nullptr, &size, nullptr, nullptr, nullptr),
              ERROR_INVALID_PARAMETER);
}

TEST_F(Registry, EnumerationsEndWithTheirCode) {
    for (const WCHAR* name : {TEXT("zz"), TEXT("Aa"), TEXT("m")}) RegCloseKey(Create(key_, name));
    Text keys, values;
    WCHAR name[4];
    for (DWORD i = 0;; ++i) {
        DWORD size = 4;
        if (RegEnumKeyExW(key_, i, name, &size, nullptr, nullptr, nullptr, nullptr) != 0) break;
        keys += Text(name, size) + TEXT(" ");
    }
    EXPECT_EQ(keys, TEXT("Aa m zz "));
    DWORD size = 2, type = 0, bytes = 1;
    EXPECT_EQ(RegEnumKeyExW(key_, 0, name, &size, nullptr, nullptr, nullptr, nullptr),
              ERROR_MORE_DATA);
    EXPECT_EQ(RegEnumKeyExW(key_, 3, name, &size, nullptr, nullptr, nullptr, nullptr),
              ERROR_NO_MORE_ITEMS);
    ASSERT_EQ(Set(TEXT("one"), REG_BINARY, {5}), ERROR_SUCCESS);
    BYTE data = 0;
    size = 4;
    EXPECT_EQ(RegEnumValueW(key_, 0, name, &size, nullptr, &type, &data, &bytes), ERROR_SUCCESS);
    EXPECT_EQ(Text(name, size), TEXT("one"));
    EXPECT_EQ(data, 5);
    EXPECT_EQ(RegEnumValueW(key_, 1, name, &size, nullptr, nullptr, nullptr, nullptr),
              ERROR_NO_MORE_ITEMS);
}

TEST_F(Registry, ADeletedKeyStaysDeletedForItsHandles) {
    const HKEY parent = Create(key_, TEXT("P")), child = Create(parent, TEXT("C"));
    EXPECT_EQ(RegDeleteKeyW(key_, TEXT("P")), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteTreeW(key_, TEXT("p")), ERROR_SUCCESS);
    RegCloseKey(Create(key_, TEXT("P\\C")));
    for (const HKEY gone : {parent, child}) {
        EXPECT_EQ(RegSetValueExW(gone, TEXT("v"), 0, REG_NONE, nullptr, 0), ERROR_KEY_DELETED);
        HKEY key = nullptr;
        EXPECT_EQ(RegOpenKeyExW(gone, TEXT("C"), 0, KEY_READ, &key), ERROR_KEY_DELETED);
        EXPECT_EQ(RegCloseKey(gone), ERROR_SUCCESS);
    }
}

TEST_F(Registry, ATreeWithoutANameEmptiesTheKey) {
    RegCloseKey(Create(key_, TEXT("A\\B")));
    ASSERT_EQ(Set(TEXT("v"), REG_BINARY, {1}), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteTreeW(key_, nullptr), ERROR_SUCCESS);
    EXPECT_EQ(Query(TEXT("v")), ERROR_FILE_NOT_FOUND);
    HKEY key = nullptr;
    EXPECT_EQ(Open(key_, TEXT("A"), key), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Set(TEXT("v"), REG_BINARY, {1}), ERROR_SUCCESS);
    EXPECT_EQ(RegFlushKey(key_), ERROR_SUCCESS);
}

TEST_F(Registry, ThreadsDoNotLoseEachOthersValues) {
    const auto work = [this](WCHAR mark) {
        for (WCHAR i = 'a'; i < 'k'; ++i) {
            const WCHAR name[] = {mark, i, 0};
            const BYTE data = static_cast<BYTE>(i);
            EXPECT_EQ(RegSetValueExW(key_, name, 0, REG_BINARY, &data, 1), ERROR_SUCCESS);
            EXPECT_EQ(Query(name), ERROR_SUCCESS);
        }
    };
    std::thread first(work, WCHAR{'1'}), second(work, WCHAR{'2'});
    first.join();
    second.join();
    WCHAR name[4];
    DWORD size = 4;
    EXPECT_EQ(RegEnumValueW(key_, 19, name, &size, nullptr, nullptr, nullptr, nullptr),
              ERROR_SUCCESS);
}

}  // namespace
