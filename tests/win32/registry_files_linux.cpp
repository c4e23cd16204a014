// The registry's store, and .reg files: what the reader takes and refuses, what the writer makes,
// several processes.
#include <gtest/gtest.h>
#include <qv_host.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <windows.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "support/fresh_host_root.h"
#include "support/other_user_linux.h"

namespace {

const std::string kHead = "Windows Registry Editor Version 5.00\n\n";
const std::string kStore = "registry/registry.db";
const std::string kKey = "[HKEY_CURRENT_USER\\K]\n";

class RegFiles : public testing::Test {
  protected:
    std::string Path(const std::string& name) const { return root_.Folder() + '/' + name; }
    std::u16string WidePath(const std::string& name) const {
        const std::string path = Path(name);
        return {path.begin(), path.end()};
    }
    void Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(Path(name), std::ios::binary) << bytes;
    }
    std::string Read(const std::string& name) const {
        std::ostringstream bytes;
        bytes << std::ifstream(Path(name), std::ios::binary).rdbuf();
        return bytes.str();
    }
    // The error's text behind the file's name; empty when all went well.
    std::string Import(const std::string& bytes) const {
        Write("in.reg", bytes);
        WCHAR message[300];
        if (QvHostImport(WidePath("in.reg").c_str(), message, 300)) return "";
        const std::u16string text = message;
        const std::string narrow(text.begin(), text.end());
        return narrow.substr(std::min(narrow.find(", ") + 2, narrow.size()));
    }
    static LSTATUS Create(const std::u16string& path) {
        HKEY key = nullptr;
        const LSTATUS code = RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0,
                                             KEY_READ, nullptr, &key, nullptr);
        if (code == 0) RegCloseKey(key);
        return code;
    }
    static LSTATUS Set(HKEY key, LPCWSTR name) {
        const BYTE data = 1;
        return RegSetValueExW(key, name, 0, REG_BINARY, &data, 1);
    }
    static std::string Problem() {
        WCHAR text[300];
        const std::u16string problem(text, QvHostProblem(text, 300));
        return {problem.begin(), problem.end()};
    }
    std::string Export(const WCHAR* key) const {
        WCHAR message[300];
        if (!QvHostExport(key, WidePath("out.reg").c_str(), message, 300)) return "failed";
        return Read("out.reg").substr(kHead.size() - 1);
    }

    const test::FreshHostRoot root_;
};

std::string Utf16(const std::string& ascii) {
    std::string bytes = "\xFF\xFE";
    for (const char c : ascii) {
        if (c == '\n') bytes += std::string("\r\0", 2);
        bytes += std::string{c, '\0'};
    }
    return bytes;
}

TEST_F(RegFiles, TakesWhatTheRegistryEditorExports) {
    const std::string text = kHead +
                             "[HKEY_LOCAL_MACHINE\\Software\\T]\n"
                             "@=\"default\"\n"
                             "\"Quote\\\"\\\\\"=\"C:\\\\x \\\"y\\\"\"\n"
                             "\"Two\"=\"line\nbreak\"\n"
                             "\"D\"=dword:0000002a\n"
                             "\"Bin\"=hex:01,02,\\\n  03,\\\n  ff\n"
                             "\"Exp\"=hex(2):25,00,00,00\n"
                             "\"None\"=hex(0):\n\n"
                             "[HKEY_LOCAL_MACHINE\\Software\\T\\Empty]\n\n";
    const std::string expected =
        "\n[HKEY_LOCAL_MACHINE\\Software\\T]\n"
        "@=\"default\"\n"
        "\"Quote\\\"\\\\\"=\"C:\\\\x \\\"y\\\"\"\n"
        "\"Two\"=hex(1):6c,00,69,00,6e,00,65,00,0d,00,0a,00,62,00,72,00,"
        "65,00,61,00,6b,\\\n  00,00,00\n"
        "\"D\"=dword:0000002a\n"
        "\"Bin\"=hex:01,02,03,ff\n"
        "\"Exp\"=hex(2):25,00,00,00\n"
        "\"None\"=hex(0):\n"
        "\n[HKEY_LOCAL_MACHINE\\Software\\T\\Empty]\n";
    EXPECT_EQ(Import(Utf16(text)), "");
    const std::string exported = Export(TEXT("hklm\\software\\t"));
    EXPECT_EQ(exported, expected);
    EXPECT_EQ(Import(kHead + "[-HKEY_LOCAL_MACHINE\\Software]\n" + exported), "");
    EXPECT_EQ(Export(TEXT("HKLM\\Software\\T")), exported);
}

TEST_F(RegFiles, UnusualBytesKeepTheirHexForm) {
    const std::string text =
        "\n[HKEY_CURRENT_USER\\K\\a]b]\n"
        "\"Odd\"=hex(1):61,00,62\n"
        "\"NoEnd\"=hex(1):61,00\n"
        "\"Half\"=hex(1):3d,d8,00,00\n"
        "\"Short\"=hex(4):01,02\n"
        "\"Far\"=hex(ffffffff):00\n"
        "\"\xC3\xA4\"=\"\xF0\x9F\x96\xA8\"\n";
    EXPECT_EQ(Import("\xEF\xBB\xBF" + kHead + text), "");
    EXPECT_EQ(Export(TEXT("HKEY_CURRENT_USER\\k")), text);
}

TEST_F(RegFiles, DeletesKeysAndValues) {
    EXPECT_EQ(Import(kHead + kKey + "\"a\"=\"1\"\n\"b\"=\"2\"\n[HKEY_CURRENT_USER\\K\\Sub]\n"), "");
    EXPECT_EQ(Import(kHead + "[-HKEY_CURRENT_USER\\K\\Sub]\n" + kKey + "\"A\"=-\n\"none\"=-\n"),
              "");
    EXPECT_EQ(Export(TEXT("HKCU\\K")), "\n" + kKey + "\"b\"=\"2\"\n");
}

TEST_F(RegFiles, AMalformedFileNamesItsLineAndChangesNothing) {
    const struct {
        std::string text;
        const char* error;
    } rows[] = {
        {"", "line 1: the file does not begin"},
        {"REGEDIT4\n", "line 1: the file does not begin"},
        {kHead + "\"v\"=\"x\"\n", "line 3: a value without a key"},
        {kHead + "[-HKEY_CURRENT_USER\\K]\n@=\"x\"\n", "line 4: a value without a key"},
        {kHead + "[HKEY_CURRENT_USER\\K\n", "line 3: a key without a closing bracket"},
        {kHead + "[]\n", "line 3: a key without a name"},
        {kHead + kKey + "@=\"x\"\n[HKEY_NOWHERE\\K]\n", "line 5: a key of an unknown root"},
        {kHead + "[HKEY_USERS\\" + std::string(256, 'k') + "]", "line 3: a name that is too long"},
        {kHead + kKey + "\"v\"\n", "line 4: no '='"},
        {kHead + kKey + "\"v=1\n\n", "line 4: a quoted text without"},
        {kHead + kKey + "\"v\"=\"C:\\x\"\n", "line 4: a backslash in quotes"},
        {kHead + kKey + "\"v\"=\"x\" y\n", "line 4: unexpected text"},
        {kHead + kKey + "\"v\"=word:1\n", "line 4: no value of a known form"},
        {kHead + kKey + "\"v\"=dword:123456789\n", "line 4: a number of more than 8"},
        {kHead + kKey + "\"v\"=dword:\n", "line 4: no hexadecimal number"},
        {kHead + kKey + "\"v\"=hex(7:00\n", "line 4: no \"):\""},
        {kHead + kKey + "\"v\"=hex:00,\\\n  0g\n", "line 5: unexpected text"},
        {kHead + kKey + "\"v\"=hex:00,\n", "line 4: no byte"},
        {kHead + kKey + "\"v\"=hex:00,\\", "line 4: no byte"},
        {kHead + kKey + "hello\n", "line 4: neither a key"},
        {kHead + kKey + "\"\xC3\"=-\n", "line 4: neither UTF-8 nor UTF-16"},
        {Utf16(kHead + kKey) + "x", "line 4: half a UTF-16 character"},
        {kHead + std::string("[HKEY_CURRENT_USER\\\0]", 21), "line 3: a zero character"},
    };
    for (const auto& row : rows) {
        const std::string error = Import(row.text);
        EXPECT_EQ(error.substr(0, std::string(row.error).size()), row.error);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_BADDB});
    }
    EXPECT_EQ(Export(nullptr), "");
}

// The files of earlier versions become the store, once; then they mean nothing.
TEST_F(RegFiles, TextFilesAreTakenOverOnce) {
    const std::string text = "registry/HKEY_CURRENT_USER.reg";
    mkdir(Path("registry").c_str(), 0700);
    Write(text, kHead + "[HKEY_USERS\\K]\n");
    EXPECT_EQ(Create(u"L"), ERROR_BADDB);
    EXPECT_EQ(Problem(), Path(text) + ", line 3: a key of an unexpected root");
    Write(text, kHead + kKey + "\"v\"=hex:01\n");
    for (const char* left : {"registry/HKEY_CURRENT_USER.reg", "none"}) {
        EXPECT_EQ(Export(TEXT("HKCU")), "\n" + kKey + "\"v\"=hex:01\n");
        EXPECT_NE(access(Path(left).c_str(), F_OK), 0);
        EXPECT_EQ(Read(text + ".taken_over"), kHead + kKey + "\"v\"=hex:01\n");
    }
}

// A file that is no store, or a damaged one, is refused. The error names it, and it stays
// unchanged.
TEST_F(RegFiles, AStrangeFileInPlaceOfTheStoreIsKept) {
    ASSERT_EQ(Create(u"K"), ERROR_SUCCESS);
    EXPECT_TRUE(QvHostCheckRegistry(nullptr, 0));
    const std::string torn = Read("registry/registry.db").substr(0, 5000);
    for (const std::string& bytes : {torn, std::string(5000, 'x')}) {
        for (const char* end : {"", "-wal", "-shm"}) unlink(Path(kStore + end).c_str());
        Write(kStore, bytes);
        EXPECT_EQ(Create(u"L"), ERROR_BADDB);
        EXPECT_EQ(Problem().substr(0, Path(kStore).size() + 1), Path(kStore) + ":");
        EXPECT_FALSE(QvHostCheckRegistry(nullptr, 0));
        EXPECT_EQ(Read(kStore), bytes);
    }
    unlink(Path(kStore).c_str());
    EXPECT_EQ(Set(HKEY_CURRENT_USER, u"new"), ERROR_SUCCESS);
    EXPECT_EQ(Export(TEXT("HKCU")), "\n[HKEY_CURRENT_USER]\n\"new\"=hex:01\n");
}

TEST_F(RegFiles, AGroupIsKeptOrTakenBackWhole) {
    ASSERT_EQ(Set(HKEY_CURRENT_USER, u"a"), ERROR_SUCCESS);
    for (const BOOL keep : {FALSE, TRUE}) {
        QvHostBeginChanges();
        EXPECT_EQ(Create(u"K"), ERROR_SUCCESS);
        // A child has no part in it, and cannot end it.
        const pid_t child = fork();
        if (child == 0) _exit(QvHostEndChanges(!keep) || Set(HKEY_USERS, u"b") != ERROR_BUSY);
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
        EXPECT_EQ(RegDeleteValueW(HKEY_CURRENT_USER, u"a"), ERROR_SUCCESS);
        EXPECT_EQ(RegDeleteValueW(HKEY_CURRENT_USER, u"a"), ERROR_FILE_NOT_FOUND);
        EXPECT_NE(Import(kHead + kKey + "\"b\"=hex:01\nx"), "");
        EXPECT_EQ(Export(TEXT("HKCU")), "\n" + kKey);
        EXPECT_TRUE(QvHostEndChanges(keep));
        EXPECT_EQ(Export(TEXT("HKCU")),
                  keep ? "\n" + kKey : "\n[HKEY_CURRENT_USER]\n\"a\"=hex:01\n");
    }
}

// With a limit for files in place of a full disk.
TEST_F(RegFiles, AChangeThatDoesNotFitLeavesNothingBehind) {
    ASSERT_EQ(Set(HKEY_USERS, u"a"), ERROR_SUCCESS);
    const pid_t child = fork();
    if (child == 0) {
        const rlimit limit = {100000, 100000};
        setrlimit(RLIMIT_FSIZE, &limit);
        const std::vector<BYTE> large(200000), small(50000);
        const auto set = [](const std::vector<BYTE>& data) {
            return RegSetValueExW(HKEY_USERS, u"b", 0, REG_BINARY, data.data(),
                                  static_cast<DWORD>(data.size()));
        };
        if (set(large) != ERROR_DISK_FULL) _exit(1);
        struct stat log;
        if (stat(Path(kStore + "-wal").c_str(), &log) != 0 || log.st_size > 40000) _exit(2);
        _exit(set(small) == ERROR_SUCCESS ? 0 : 3);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

// A writer that does not go on costs others five seconds, and readers nothing.
TEST_F(RegFiles, AStoppedWriterIsWaitedForAndNamed) {
    ASSERT_EQ(Set(HKEY_USERS, u"a"), ERROR_SUCCESS);
    const pid_t writer = fork();
    if (writer == 0) {
        QvHostBeginChanges();
        Set(HKEY_USERS, u"b");
        raise(SIGSTOP);
        _exit(0);
    }
    int status = 0;
    waitpid(writer, &status, WUNTRACED);
    const auto began = std::chrono::steady_clock::now();
    EXPECT_EQ(Export(TEXT("HKU")), "\n[HKEY_USERS]\n\"a\"=hex:01\n");
    EXPECT_EQ(Set(HKEY_USERS, u"c"), ERROR_BUSY);
    EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(6));
    EXPECT_EQ(Problem(),
              Path(kStore) + ": locked by process " + std::to_string(writer) + " (qv_tests)");
    kill(writer, SIGKILL);
    waitpid(writer, &status, 0);
    EXPECT_EQ(Set(HKEY_USERS, u"c"), ERROR_SUCCESS);
    EXPECT_EQ(Export(TEXT("HKU")), "\n[HKEY_USERS]\n\"a\"=hex:01\n\"c\"=hex:01\n");
}

TEST_F(RegFiles, KeysLieInOrderAndNotTooDeep) {
    std::u16string deep;
    for (int i = 0; i < 512; ++i) deep += i == 0 ? u"k" : u"\\k";
    EXPECT_EQ(Create(deep), ERROR_SUCCESS);
    for (const char16_t* name : {u"b", u"C", u"a"}) EXPECT_EQ(Create(name), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, u"K\\k\\k"), ERROR_SUCCESS);
    EXPECT_EQ(Export(TEXT("HKCU")),
              "\n[HKEY_CURRENT_USER\\a]\n\n[HKEY_CURRENT_USER\\b]\n\n[HKEY_CURRENT_USER\\C]\n"
              "\n[HKEY_CURRENT_USER\\k\\k]\n");
    EXPECT_EQ(Create(u"a\nb"), ERROR_INVALID_NAME);
    EXPECT_EQ(Create(std::u16string(1, char16_t{0xD800})), ERROR_NO_UNICODE_TRANSLATION);
    EXPECT_EQ(Create(deep + u"\\k"), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Set(HKEY_CURRENT_USER, std::u16string(1, char16_t{0xDC00}).c_str()),
              ERROR_NO_UNICODE_TRANSLATION);
}

// The key is gone and there anew, under the same path.
TEST_F(RegFiles, WhatAnotherProcessChangedIsReadAnew) {
    const std::string key = "[HKEY_CURRENT_USER\\A\\B]\n";
    ASSERT_EQ(Import(kHead + key + "\"v\"=hex:00\n"), "");
    const pid_t writer = fork();
    for (int i = 1; writer == 0; ++i) {
        raise(SIGSTOP);
        const std::string value = "\"v\"=hex:0" + std::to_string(i) + "\n";
        Import(kHead + "[-HKEY_CURRENT_USER\\A]\n" + (i == 2 ? "" : key + value));
    }
    for (const int expected : {0, 1, 255, 3}) {
        int status = 0;
        waitpid(writer, &status, WUNTRACED);
        for (int time = 0; time < 2; ++time) {
            HKEY open = nullptr;
            BYTE byte = 255;
            DWORD size = 1;
            const LSTATUS code = RegOpenKeyExW(HKEY_CURRENT_USER, u"a\\b", 0, KEY_READ, &open);
            EXPECT_EQ(code, expected == 255 ? ERROR_FILE_NOT_FOUND : ERROR_SUCCESS);
            RegQueryValueExW(open, u"V", nullptr, nullptr, &byte, &size);
            EXPECT_EQ(byte, expected);
            RegCloseKey(open);
        }
        kill(writer, SIGCONT);
    }
    kill(writer, SIGKILL);
    waitpid(writer, nullptr, 0);
}

TEST_F(RegFiles, ProcessesDoNotLoseEachOthersValues) {
    for (int process = 0; process < 2; ++process) {
        if (fork() != 0) continue;
        for (int i = 0; i < 20; ++i) {
            const WCHAR name[] = {static_cast<WCHAR>(u'0' + process), static_cast<WCHAR>(u'a' + i),
                                  0};
            if (Set(HKEY_USERS, name) != 0) _exit(1);
        }
        _exit(0);
    }
    for (int process = 0; process < 2; ++process) {
        int status = 1;
        wait(&status);
        EXPECT_EQ(status, 0);
    }
    WCHAR name[4];
    DWORD size = 4;
    EXPECT_EQ(RegEnumValueW(HKEY_USERS, 39, name, &size, nullptr, nullptr, nullptr, nullptr),
              ERROR_SUCCESS);
}

TEST_F(RegFiles, WhoMayNotWriteIsRefusedAtTheOpen) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can become somebody else";
    ASSERT_EQ(Create(u"K"), ERROR_SUCCESS);
    const auto open = [](REGSAM access) {
        HKEY key = nullptr;
        return RegOpenKeyExW(HKEY_CURRENT_USER, u"K", 0, access, &key);
    };
    const auto answers = [&open] {
        return open(KEY_READ) == ERROR_SUCCESS && open(KEY_WRITE) == ERROR_ACCESS_DENIED &&
               open(KEY_ALL_ACCESS) == ERROR_ACCESS_DENIED && open(0x02000000) == ERROR_SUCCESS &&
               Create(u"L") == ERROR_ACCESS_DENIED;
    };
    EXPECT_TRUE(test::HoldsForUser(65534, 65534, [&] { return open(KEY_READ) == 5; }));
    for (const char* file : {"", "registry"}) chmod(Path(file).c_str(), 0755);
    for (const char* end : {"", "-wal", "-shm"}) chmod(Path(kStore + end).c_str(), 0644);
    EXPECT_TRUE(test::HoldsForUser(65534, 65534, answers));
    struct stat info;
    EXPECT_EQ(stat(Path(kStore).c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, mode_t{0644});
}

// A name without a slash in front begins where the process is.
TEST_F(RegFiles, TheRootIsTheFolderThatTheEnvironmentNames) {
    WCHAR buffer[300];
    const auto root = [&buffer] {
        const std::u16string name(buffer, QvHostRoot(buffer, 300));
        return std::string(name.begin(), name.end());
    };
    EXPECT_EQ(root(), root_.Folder());
    EXPECT_EQ(QvHostRoot(buffer, 3), root_.Folder().size() + 1);
    EXPECT_EQ(QvHostPath(u"Q:\\x", nullptr, 0), 0u);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_PATH_NOT_FOUND});
    setenv("QV_HOST_ROOT", "./sub/", 1);
    EXPECT_EQ(root(), std::filesystem::current_path().string() + "/sub");
    setenv("QV_HOST_ROOT", root_.Folder().c_str(), 1);
}

}  // namespace
