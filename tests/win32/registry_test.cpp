// Registry semantics that hold on every host.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <thread>
#include <utility>
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
    // The code of an open; the handle is closed again.
    static LSTATUS Open(HKEY parent, LPCWSTR path) {
        HKEY key = nullptr;
        const LSTATUS code = RegOpenKeyExW(parent, path, 0, KEY_READ, &key);
        if (code == ERROR_SUCCESS) RegCloseKey(key);
        return code;
    }
    // Windows counts a terminator that stands right behind a text; here none does.
    static LSTATUS Set(HKEY key, LPCWSTR name, const Bytes& data, DWORD type = REG_BINARY) {
        Bytes guarded = data;
        guarded.insert(guarded.end(), 4, 0xEE);
        return RegSetValueExW(key, name, 0, type, guarded.data(), static_cast<DWORD>(data.size()));
    }
    static LSTATUS Query(HKEY key, LPCWSTR name) {
        return RegQueryValueExW(key, name, nullptr, nullptr, nullptr, nullptr);
    }
    LSTATUS NameAt(bool keys, DWORD i, WCHAR* name, DWORD& size) {
        return keys ? RegEnumKeyExW(key_, i, name, &size, nullptr, nullptr, nullptr, nullptr)
                    : RegEnumValueW(key_, i, name, &size, nullptr, nullptr, nullptr, nullptr);
    }
    // The names of the keys below, or of the values, with a blank behind each.
    Text Names(bool keys) {
        Text names;
        WCHAR name[30];
        for (DWORD i = 0, size = 30;; ++i, size = 30) {
            const LSTATUS code = NameAt(keys, i, name, size);
            EXPECT_TRUE(code == ERROR_SUCCESS || code == ERROR_NO_MORE_ITEMS);
            if (code != ERROR_SUCCESS) return names;
            names += Text(name, size) + TEXT(" ");
        }
    }

    const test::FreshHostRoot root_;
    HKEY key_ = nullptr;
};

TEST_F(Registry, KeysCompareWithoutCaseKeepTheirSpellingAndLieInOrder) {
    DWORD disposition = 0;
    RegCloseKey(Create(key_, TEXT("m\\B"), &disposition));
    EXPECT_EQ(disposition, DWORD{REG_CREATED_NEW_KEY});
    RegCloseKey(Create(key_, TEXT("M\\b\\"), &disposition));
    EXPECT_EQ(disposition, DWORD{REG_OPENED_EXISTING_KEY});
    for (const WCHAR* name : {TEXT("\u00C4rger-\u0416"), TEXT("zz"), TEXT("Aa")}) {
        RegCloseKey(Create(key_, name));
    }
    EXPECT_EQ(Open(key_, TEXT("\u00E4RGER-\u0436")), ERROR_SUCCESS);
    // Dotless i is not I, and long s is not S. Micro sign and final sigma are no other letters.
    for (const WCHAR* name : {TEXT("\u0131"), TEXT("\u017F"), TEXT("\u00B5"), TEXT("\u03C2")}) {
        RegCloseKey(Create(key_, name));
    }
    for (const WCHAR* name : {TEXT("I"), TEXT("S"), TEXT("\u03BC"), TEXT("\u03C3")}) {
        EXPECT_EQ(Open(key_, name), ERROR_FILE_NOT_FOUND);
    }
    for (const WCHAR* name : {TEXT("\u0131"), TEXT("\u017F"), TEXT("\u00B5"), TEXT("\u03C2")}) {
        RegDeleteTreeW(key_, name);
    }
    EXPECT_EQ(Names(true), TEXT("Aa m zz \u00C4rger-\u0416 "));
    WCHAR name[3];
    for (DWORD size : {1u, 2u}) {
        EXPECT_EQ(RegEnumKeyExW(key_, 0, name, &size, nullptr, nullptr, nullptr, nullptr),
                  ERROR_MORE_DATA);
    }
    DWORD size = 3;
    EXPECT_EQ(RegEnumKeyExW(key_, 0, name, &size, nullptr, nullptr, nullptr, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(size, 2u);
}

TEST_F(Registry, EachChangeOfAKeyIsItsLastWrite) {
    const HKEY below = Create(key_, TEXT("below"));
    ULONGLONG last = 0;
    const auto is_later = [&] {
        FILETIME written{};
        WCHAR name[30];
        DWORD size = 30;
        RegEnumKeyExW(key_, 0, name, &size, nullptr, nullptr, nullptr, &written);
        Sleep(20);
        const ULONGLONG time = ULONGLONG{written.dwHighDateTime} << 32U | written.dwLowDateTime;
        return std::exchange(last, time) < time;
    };
    EXPECT_TRUE(is_later());
    EXPECT_FALSE(is_later());
    Set(below, TEXT("v"), {1});
    EXPECT_TRUE(is_later());
    RegDeleteValueW(below, TEXT("v"));
    EXPECT_TRUE(is_later());
    RegCloseKey(Create(below, TEXT("child")));
    EXPECT_TRUE(is_later());
    RegCloseKey(below);
}

TEST_F(Registry, MissingKeysAndBadArgumentsHaveTheirCodes) {
    HKEY key = nullptr;
    EXPECT_EQ(Open(key_, TEXT("None")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Open(key_, TEXT("\\Lead")), ERROR_BAD_PATHNAME);
    EXPECT_EQ(RegOpenKeyExW(key_, TEXT("None"), 0, KEY_READ, nullptr), ERROR_INVALID_PARAMETER);
    test::ExpectExceptOnWine(RegCreateKeyExW(key_, Text(256, 'k').c_str(), 0, nullptr, 0, KEY_READ,
                                             nullptr, &key, nullptr) == ERROR_INVALID_PARAMETER,
                             "a key's name has at most 255 characters");
    RegCloseKey(key);
    RegCloseKey(Create(key_, Text(255, 'k').c_str()));
    EXPECT_EQ(RegDeleteValueW(key_, TEXT("None")), ERROR_FILE_NOT_FOUND);
    for (const WCHAR* none : {TEXT("None"), TEXT("None\\Below")}) {
        EXPECT_EQ(RegDeleteTreeW(key_, none), ERROR_FILE_NOT_FOUND);
    }
}

TEST_F(Registry, ClosedAndForeignHandlesAreRefused) {
    const HKEY closed = Create(key_, TEXT("A"));
    EXPECT_EQ(RegCloseKey(closed), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(closed), ERROR_INVALID_HANDLE);
    DWORD size = 0;
    for (const HKEY bad : {closed, HKEY{}, reinterpret_cast<HKEY>(&size)}) {
        EXPECT_EQ(Query(bad, TEXT("x")), ERROR_INVALID_HANDLE);
        EXPECT_EQ(Set(bad, TEXT("x"), {1}), ERROR_INVALID_HANDLE);
    }
    EXPECT_EQ(RegCloseKey(HKEY_CURRENT_USER), ERROR_SUCCESS);
}

TEST_F(Registry, AHandleAllowsWhatItWasOpenedFor) {
    HKEY reader = nullptr, writer = nullptr;
    ASSERT_EQ(RegOpenKeyExW(key_, TEXT(""), 0, KEY_READ | KEY_WOW64_64KEY, &reader), ERROR_SUCCESS);
    ASSERT_EQ(RegOpenKeyExW(key_, nullptr, 0, KEY_SET_VALUE, &writer), ERROR_SUCCESS);
    EXPECT_EQ(Set(reader, TEXT("v"), {1}), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Set(writer, TEXT("v"), {1}), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValueW(reader, TEXT("v")), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Query(writer, TEXT("v")), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Query(reader, TEXT("V")), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValueW(writer, TEXT("V")), ERROR_SUCCESS);
    EXPECT_EQ(Query(reader, TEXT("v")), ERROR_FILE_NOT_FOUND);
    RegCloseKey(reader);
    RegCloseKey(writer);
}

TEST_F(Registry, ValuesComeBackByteForByteInTheirOrder) {
    const struct {
        const WCHAR* name;
        DWORD type;
        Bytes data;
    } rows[] = {
        {TEXT("z"), REG_SZ, {'a', 0, 0, 0}},
        {TEXT("a"), REG_SZ, {}},
        {TEXT("c"), REG_SZ, {'a', 0, 0, 0, 'b', 0}},
        {TEXT("d"), REG_SZ, {'\n', 0, 0x3D, 0xD8, 0, 0}},
        {TEXT("e"), REG_DWORD, {1, 2, 3, 4}},
        {TEXT("f"), REG_DWORD, {1}},
        {TEXT("g"), REG_BINARY, {0, 255}},
        {TEXT("h"), REG_MULTI_SZ, {'a', 0, 0, 0, 0, 0}},
        {TEXT("i"), REG_EXPAND_SZ, {'%', 0, 0, 0}},
        {TEXT("j"), 0x12345678, {7, 7, 7}},
        {TEXT("k"), REG_NONE, {}},
        {TEXT("A"), REG_QWORD, {1, 2, 3, 4, 5, 6, 7, 8}},
    };
    for (const auto& row : rows) {
        ASSERT_EQ(Set(key_, row.name, row.data, row.type), ERROR_SUCCESS);
        DWORD type = 99, size = 200;
        Bytes data(size);
        EXPECT_EQ(RegQueryValueExW(key_, row.name, nullptr, &type, data.data(), &size), 0);
        data.resize(size);
        EXPECT_EQ(data, row.data);
        EXPECT_EQ(type, row.type);
    }
    const bool sorted = test::UnderWine();
    EXPECT_EQ(Names(false),
              sorted ? TEXT("a c d e f g h i j k z ") : TEXT("z a c d e f g h i j k "));
    WCHAR name[4];
    BYTE data[8];
    DWORD units = 4, type = 0, size = 8;
    EXPECT_EQ(RegEnumValueW(key_, 0, name, &units, nullptr, &type, data, &size), ERROR_SUCCESS);
    EXPECT_EQ(Text(name, units), sorted ? TEXT("a") : TEXT("z"));
}

TEST_F(Registry, SizesAreAskedForFirst) {
    ASSERT_EQ(Set(key_, nullptr, {'a', 0, 'b', 0, 0, 0}, REG_SZ), ERROR_SUCCESS);
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

TEST_F(Registry, ADeletedKeyStaysDeletedForItsHandles) {
    const HKEY parent = Create(key_, TEXT("P")), child = Create(parent, TEXT("C"));
    const HKEY beside = Create(key_, TEXT("PC"));
    EXPECT_EQ(RegDeleteTreeW(key_, TEXT("p")), ERROR_SUCCESS);
    EXPECT_EQ(Open(key_, TEXT("P")), ERROR_FILE_NOT_FOUND);
    RegCloseKey(Create(key_, TEXT("P\\C")));
    for (const HKEY gone : {parent, child}) {
        EXPECT_EQ(Set(gone, TEXT("v"), {}), ERROR_KEY_DELETED);
        EXPECT_EQ(Open(gone, TEXT("C")), ERROR_KEY_DELETED);
        EXPECT_EQ(RegCloseKey(gone), ERROR_SUCCESS);
    }
    EXPECT_EQ(Set(beside, TEXT("v"), {}), ERROR_SUCCESS);
    RegCloseKey(beside);
    // Without a name the content of the key is removed, and the key stays.
    EXPECT_EQ(Set(key_, TEXT("v"), {1}), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteTreeW(key_, nullptr), ERROR_SUCCESS);
    EXPECT_EQ(Query(key_, TEXT("v")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Names(true), TEXT(""));
    EXPECT_EQ(Set(key_, TEXT("v"), {1}), ERROR_SUCCESS);
}

TEST_F(Registry, AnIndexNamesItsKeyAndItsValueAlsoWhenOthersComeAndGo) {
    for (const WCHAR* name : {TEXT("b"), TEXT("d"), TEXT("f"), TEXT("h")}) {
        RegCloseKey(Create(key_, name));
        Set(key_, name, {1});
    }
    const struct {
        const WCHAR* removed;
        DWORD index;
        const WCHAR* expected;
    } steps[] = {{nullptr, 0, TEXT("b")},   {nullptr, 1, TEXT("d")}, {nullptr, 1, TEXT("d")},
                 {nullptr, 3, TEXT("h")},   {nullptr, 2, TEXT("f")}, {TEXT("b"), 2, TEXT("h")},
                 {TEXT("f"), 1, TEXT("h")}, {nullptr, 2, nullptr},   {nullptr, 0, TEXT("d")}};
    for (const auto& step : steps) {
        if (step.removed != nullptr) RegDeleteTreeW(key_, step.removed);
        if (step.removed != nullptr) RegDeleteValueW(key_, step.removed);
        for (const bool keys : {false, true}) {
            WCHAR name[3] = {};
            DWORD size = 3;
            const LSTATUS code = NameAt(keys, step.index, name, size);
            EXPECT_EQ(code, step.expected != nullptr ? ERROR_SUCCESS : ERROR_NO_MORE_ITEMS);
            EXPECT_EQ(Text(name), step.expected != nullptr ? step.expected : TEXT(""));
        }
    }
}

TEST_F(Registry, ThreadsDoNotLoseEachOthersValues) {
    const auto work = [this](WCHAR mark) {
        for (WCHAR i = 'a'; i < 'k'; ++i) {
            const WCHAR name[] = {mark, i, 0};
            EXPECT_EQ(Set(key_, name, {static_cast<BYTE>(i)}), ERROR_SUCCESS);
            EXPECT_EQ(Query(key_, name), ERROR_SUCCESS);
        }
    };
    std::thread first(work, WCHAR{'1'}), second(work, WCHAR{'2'});
    first.join();
    second.join();
    EXPECT_EQ(Names(false).size(), 60u);
}

}  // namespace
