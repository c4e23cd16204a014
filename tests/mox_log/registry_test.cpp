// Registry functions of the toolkit and the product's settings lookup.
#include "mox_log/registry.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>

#include "driver_global/installation.h"
#include "mox_log/res_strings.h"
#include "mox_log/wow64.h"
#include "support/clean_logger.h"
#include "support/fresh_host_root.h"
#include "support/string_print.h"

using test::CleanLogger;

namespace {

const UnicodeString kKey = TEXT("Software\\QvTestToolkit");

class Toolkit : public testing::Test {
  protected:
    Toolkit() { Remove(); }
    ~Toolkit() override { Remove(); }

    // A value of these bytes, as another program might have stored it.
    static void Store(HKEY root, const UnicodeString& key, const WCHAR* name, DWORD type,
                      const std::string& bytes) {
        const HKEY open = Mox::RegOpenToWrite(root, key);
        // Windows also stores a terminator that stands right behind the bytes. So put others there.
        const std::string padded = bytes + "xxx";
        EXPECT_EQ(RegSetValueExW(open, name, 0, type, reinterpret_cast<const BYTE*>(padded.data()),
                                 static_cast<DWORD>(bytes.size())),
                  ERROR_SUCCESS);
        Mox::RegClose(open);
    }
    // The last error of the logger since the test began.
    static UnicodeString Error() { return CleanLogger::Logger().GetLastError(); }

    const test::FreshHostRoot root_;
    const CleanLogger logger_;

  private:
    static void Remove() {
        for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
            RegDeleteTreeW(root, kKey.t_str());
            RegDeleteTreeW(root, kProductKey);
        }
        RegDeleteTreeW(HKEY_CURRENT_USER, TEXT("Software\\MOX\\log_file"));
    }
};

std::string Utf16(const std::string& text) {
    std::string bytes;
    for (const char c : text) bytes += {c, '\0'};
    return bytes;
}

TEST_F(Toolkit, TextsAreReadAsTheyAreStored) {
    const std::tuple<const char*, DWORD, std::string, const WCHAR*> rows[] = {
        {"with terminator", REG_SZ, Utf16("abc") + std::string(2, '\0'), TEXT("abc")},
        {"without terminator", REG_SZ, Utf16("abc"), TEXT("ab")},
        {"odd byte count", REG_SZ, Utf16("abc") + std::string(3, '\0'), TEXT("abc")},
        {"odd, without terminator", REG_SZ, Utf16("abc") + "x", TEXT("ab")},
        {"three bytes", REG_SZ, std::string("A\0\0", 3), TEXT("")},
        {"terminator alone", REG_SZ, std::string(2, '\0'), TEXT("")},
        {"nothing", REG_SZ, "", TEXT("")},
        {"one byte", REG_SZ, "x", TEXT("")},
        {"another type", REG_EXPAND_SZ, Utf16("abc") + std::string(2, '\0'), TEXT("def")}};
    for (const auto& [what, type, bytes, text] : rows) {
        Store(HKEY_CURRENT_USER, kKey, TEXT("v"), type, bytes);
        const HKEY key = Mox::RegOpenToRead(HKEY_CURRENT_USER, kKey);
        EXPECT_EQ(Mox::RegReadString(key, TEXT("v"), TEXT("def")), text) << what;
        Mox::RegClose(key);
    }
}

TEST_F(Toolkit, ValuesOfAnotherTypeAreLogged) {
    const HKEY key = Mox::RegOpenToWrite(HKEY_CURRENT_USER, kKey);
    EXPECT_TRUE(Mox::RegWriteInteger(key, TEXT("number"), 5));
    EXPECT_TRUE(Mox::RegWriteString(key, TEXT("text"), TEXT("a longer text")));
    EXPECT_EQ(Mox::RegReadString(key, TEXT("number"), TEXT("def")), TEXT("def"));
    EXPECT_EQ(Error(), UnicodeString(TEXT("RegQueryValueEx(): Invalid data type(4)\r\n "
                                          "Key=\"number\"")));
    EXPECT_EQ(Mox::RegReadInteger(key, TEXT("text"), 9), 9u);
    EXPECT_EQ(Error(), UnicodeString(TEXT("RegQueryValueEx(): Invalid data type(1)\r\n "
                                          "Key=\"text\"")));
    EXPECT_TRUE(Mox::ReadRegistry(HKEY_CURRENT_USER, kKey, TEXT("number")).IsEmpty());
    EXPECT_EQ(Error(), UnicodeString(TEXT("RegQueryValueEx(): Invalid data type(4)\r\n "
                                          "Key=\"Software\\QvTestToolkit|number\"")));
    EXPECT_EQ(Mox::RegReadInteger(key, TEXT("number"), 9), 5u);
    Mox::RegClose(key);
}

TEST_F(Toolkit, WhatIsMissingIsNoError) {
    SetLastError(NO_ERROR);
    EXPECT_EQ(Mox::RegOpenToRead(HKEY_CURRENT_USER, kKey), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(Mox::RegOpenToRead(HKEY_CURRENT_USER, UnicodeString()), nullptr);
    EXPECT_EQ(Mox::RegOpenToWrite(HKEY_CURRENT_USER, UnicodeString()), nullptr);
    EXPECT_TRUE(Mox::ReadRegistry(HKEY_CURRENT_USER, kKey, TEXT("v")).IsEmpty());
    const HKEY key = Mox::RegOpenToWrite(HKEY_CURRENT_USER, kKey);
    EXPECT_EQ(Mox::RegReadString(key, TEXT("v"), TEXT("def")), TEXT("def"));
    EXPECT_EQ(Mox::RegReadInteger(key, TEXT("v"), 9), 9u);
    Mox::RegClose(key);
    Mox::RegClose(nullptr);
    Mox::RegClose(reinterpret_cast<HKEY>(INVALID_HANDLE_VALUE));
    EXPECT_TRUE(Error().IsEmpty());
}

TEST_F(Toolkit, WrittenTextsComeBack) {
    EXPECT_TRUE(Mox::WriteRegistry(HKEY_CURRENT_USER, kKey, TEXT("v"), TEXT("text")));
    EXPECT_EQ(Mox::ReadRegistry(HKEY_CURRENT_USER, kKey, TEXT("v")), TEXT("text"));
    for (const WCHAR* text : {TEXT("x"), TEXT("")}) {
        EXPECT_TRUE(Mox::WriteRegistry(HKEY_CURRENT_USER, TEXT(""), TEXT("QvTestRoot"), text));
        EXPECT_EQ(Mox::ReadRegistry(HKEY_CURRENT_USER, TEXT(""), TEXT("QvTestRoot")), text);
    }
    RegDeleteValueW(HKEY_CURRENT_USER, TEXT("QvTestRoot"));
}

TEST_F(Toolkit, AFailedWriteIsLogged) {
    EXPECT_FALSE(Mox::WriteRegistry(nullptr, kKey, TEXT("v"), TEXT("text")));
    EXPECT_EQ(Error().Pos(TEXT("RegCreateKey() [6]")), 1);
    EXPECT_FALSE(Mox::WriteRegistry(nullptr, UnicodeString(), TEXT("v"), TEXT("text")));
    EXPECT_EQ(Error().Pos(TEXT("RegSetValueEx() [6]")), 1);
    EXPECT_GT(Error().Pos(TEXT(" Key=\"|v\"; Value=\"text\"")), 1);
}

TEST_F(Toolkit, AUsersValueOverridesTheMachines) {
    HKEY user = nullptr, machine = nullptr;
    const auto both = [&] {
        MoxRegOpenKey(user, machine, kKey);
        const int value = MoxRegReadInteger(user, machine, TEXT("n"), -1);
        const UnicodeString text = MoxRegReadString(user, machine, TEXT("s"), TEXT("def"));
        MoxRegCloseKey(user, machine);
        return std::pair(value, text);
    };
    EXPECT_EQ(both(), std::pair(-1, UnicodeString(TEXT("def"))));
    HKEY key = Mox::RegOpenToWrite(HKEY_LOCAL_MACHINE, kKey);
    Mox::RegWriteInteger(key, TEXT("n"), 5);
    Mox::RegWriteString(key, TEXT("s"), TEXT("machine"));
    Mox::RegClose(key);
    EXPECT_EQ(both(), std::pair(5, UnicodeString(TEXT("machine"))));
    key = Mox::RegOpenToWrite(HKEY_CURRENT_USER, kKey);
    Mox::RegWriteInteger(key, TEXT("n"), 7);
    Mox::RegClose(key);
    EXPECT_EQ(both(), std::pair(7, UnicodeString(TEXT("machine"))));
}

TEST_F(Toolkit, SettingsAreSearchedInFourPlaces) {
    const UnicodeString printer = UnicodeString(kPrintersKey) + TEXT("\\One");
    const auto find = [](const WCHAR* section) { return GetRegistrySetting(section, TEXT("v")); };
    const std::string end(1, '\0');
    Store(HKEY_LOCAL_MACHINE, kProductKey, TEXT("v"), REG_SZ, Utf16("machine" + end));
    EXPECT_EQ(find(TEXT("One")), TEXT("machine"));
    Store(HKEY_LOCAL_MACHINE, printer, TEXT("v"), REG_SZ, Utf16("machine's printer" + end));
    EXPECT_EQ(find(TEXT("One")), TEXT("machine's printer"));
    EXPECT_EQ(find(TEXT("")), TEXT("machine"));
    Store(HKEY_CURRENT_USER, kProductKey, TEXT("v"), REG_SZ, Utf16("user" + end));
    EXPECT_EQ(find(TEXT("One")), TEXT("user"));
    Store(HKEY_CURRENT_USER, printer, TEXT("v"), REG_EXPAND_SZ, Utf16("skipped" + end));
    EXPECT_EQ(find(TEXT("One")), TEXT("user"));
    Store(HKEY_CURRENT_USER, printer, TEXT("v"), REG_SZ, "");
    EXPECT_EQ(find(TEXT("One")), UnicodeString());
    EXPECT_EQ(GetRegistrySetting(TEXT("One"), TEXT("absent")), UnicodeString());
}

TEST_F(Toolkit, ThisProcessHasOneRegistryView) {
    EXPECT_FALSE(IsWow64());
    EXPECT_EQ(SAM64(KEY_READ), DWORD{KEY_READ});
    void* old = nullptr;
    EXPECT_TRUE(DisableWow64FsRedirection(&old));
    EXPECT_TRUE(RevertWow64FsRedirection(old));
    EXPECT_TRUE(EnableWow64FsRedirection(nullptr));
}

TEST_F(Toolkit, RegisteredTextsAreLookedUpAfresh) {
    const Mox::TMoxStringID id(TEXT("log_file"), 20, TEXT("default"));
    EXPECT_TRUE(id.IsEmpty());
    EXPECT_EQ(UnicodeString(id), UnicodeString());
    EXPECT_EQ(CleanLogger::Logger().RegResString(TEXT("log_file"), 20, TEXT("text")), 20u);
    EXPECT_TRUE(Error().IsEmpty());
    EXPECT_EQ(Mox::ReadRegistry(HKEY_CURRENT_USER, TEXT("Software\\MOX\\log_file"), TEXT("0014")),
              TEXT("text"));
    EXPECT_EQ(id.AsString(), TEXT("text"));
    const WCHAR* text = id.w_str();
    CleanLogger::Logger().RegResString(TEXT("log_file"), 20, TEXT("other"));
    EXPECT_EQ(UnicodeString(text), TEXT("text"));
    CleanLogger::Logger().resStringProc = [](void*, UnicodeString domain, DWORD number,
                                             UnicodeString* result) {
        if (number == 20) *result = domain + TEXT("!");
    };
    EXPECT_EQ(id.AsString(), TEXT("log_file!"));
}

}  // namespace
