// What only the Linux host has of files: where its drives lie, its permissions and its processes.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "win32/file_fixture.h"

using namespace test;

namespace {

class HostFiles : public FileTest {
  protected:
    // The host's own name of a file in the folder.
    std::string HostPath(const std::string& name) {
        const std::string folder(Folder().begin() + 3, Folder().end());
        return std::string(std::getenv("QV_HOST_ROOT")) + "/drive_c/" + folder + '/' + name;
    }
    static bool There(const WCHAR* name) {
        return GetFileAttributesW(name) != INVALID_FILE_ATTRIBUTES;
    }
};

// Runs `body` in a child process; its exit code.
template <class Body>
int InChild(Body body) {
    const pid_t child = fork();
    if (child == 0) _exit(body());
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(HostFiles, ReadOnlyFilesAreNotWrittenNorDeleted) {
    const Wide name = Path(TEXT("fixed"));
    CloseHandle(CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                            FILE_ATTRIBUTE_READONLY, nullptr));
    EXPECT_EQ(GetFileAttributesW(name.c_str()) & FILE_ATTRIBUTE_READONLY, 1u);
    EXPECT_EQ(OpenError(name, GENERIC_WRITE, 0, OPEN_EXISTING), 5u);
    EXPECT_EQ(OpenError(name, GENERIC_READ, 0, OPEN_EXISTING), 0u);
    EXPECT_FALSE(DeleteFileW(name.c_str()));
    EXPECT_EQ(GetLastError(), 5u);
    unlink(HostPath("fixed").c_str());
}

TEST_F(HostFiles, DrivesLieWhereTheyShould) {
    MakeFile(Path(TEXT("x\u00E4\U0001F600")), "x");
    EXPECT_TRUE(std::filesystem::exists(HostPath("x\xC3\xA4\xF0\x9F\x98\x80")));
    EXPECT_TRUE(There((Folder() + TEXT("\\X\u00C4\U0001F600")).c_str())) << "case beyond ASCII";
    EXPECT_TRUE(There(TEXT("Z:\\proc\\self")));
    EXPECT_TRUE(There(TEXT("/proc/self/../self/")));
    EXPECT_TRUE(There(TEXT("\\\\?\\Z:\\proc")));
    EXPECT_FALSE(There(TEXT("\\\\server\\share\\x")));
    EXPECT_EQ(GetLastError(), 3u);
    EXPECT_FALSE(There(TEXT("C:\\..\\..\\..\\proc\\self")));
}

TEST_F(HostFiles, NamesThatAreNoNamesAreRefused) {
    const WCHAR unpaired[] = {'C', ':', '\\', 0xD800, 'x', 0};
    const WCHAR native[] = {'/', 0xDC00, 0};
    for (const WCHAR* const name :
         {TEXT("C:\\file:stream"), TEXT("C:\\a\tb"), TEXT("a\"b"), +unpaired, +native}) {
        SetLastError(kUntouched);
        EXPECT_FALSE(There(name));
        EXPECT_EQ(GetLastError(), 123u);
    }
}

TEST_F(HostFiles, TheExactSpellingWinsOverAnother) {
    std::ofstream(HostPath("Name")) << "upper";
    std::ofstream(HostPath("name")) << "lower";
    for (const WCHAR* const name : {TEXT("name"), TEXT("Name")}) {
        const HANDLE file = Open(Path(name), GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
        EXPECT_EQ(Read(file, 9), name[0] == 'n' ? "lower" : "upper");
    }
}

TEST_F(HostFiles, ShareModesAndLocksHoldBetweenProcesses) {
    const Wide name = Path(TEXT("both"));
    const HANDLE file = OpenShared(name);
    ASSERT_TRUE(LockFile(file, 0, 0, 96, 0));
    const int seen = InChild([&] {
        const HANDLE other = OpenShared(name);
        const bool excluded = !LockFile(other, 0, 0, 1, 0) && GetLastError() == 33;
        const bool refused = OpenError(name, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING) == 32;
        return (excluded ? 1 : 0) + (refused ? 2 : 0);
    });
    EXPECT_EQ(seen, 3);
}

// A process that ends without closing leaves nothing locked.
TEST_F(HostFiles, ADeadProcessHoldsNothing) {
    const Wide name = Path(TEXT("dead"));
    MakeFile(name, "");
    EXPECT_EQ(InChild([&] {
                  const HANDLE file = Open(name, GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING);
                  return LockFile(file, 0, 0, 96, 0);
              }),
              1);
    const HANDLE file = Open(name, GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING);
    EXPECT_TRUE(LockFile(file, 0, 0, 96, 0));
}

// Other programs of this host lock with the classic calls.
TEST_F(HostFiles, ClassicLocksExcludeAndAreExcluded) {
    const HANDLE file = OpenShared(Path(TEXT("wine")));
    ASSERT_TRUE(LockFile(file, 0, 0, 96, 0));
    const int raw = open(HostPath("wine").c_str(), O_RDWR | O_CLOEXEC);
    struct flock range = {};
    range.l_type = F_WRLCK;
    range.l_len = 96;
    EXPECT_EQ(fcntl(raw, F_SETLK, &range), -1);
    ASSERT_TRUE(UnlockFile(file, 0, 0, 96, 0));
    ASSERT_EQ(fcntl(raw, F_SETLK, &range), 0);
    EXPECT_FALSE(LockFile(file, 0, 0, 96, 0));
    EXPECT_EQ(GetLastError(), 33u);
    close(raw);
}

TEST_F(HostFiles, AFullDiskSaysSo) {
    const HANDLE full = Open(TEXT("/dev/full"), GENERIC_WRITE, 0, OPEN_EXISTING);
    DWORD done = 9;
    EXPECT_FALSE(WriteFile(full, "x", 1, &done, nullptr));
    EXPECT_EQ(GetLastError(), 112u);
    EXPECT_EQ(done, 0u);
}

TEST_F(HostFiles, DescriptorsAreClosedAndNotInherited) {
    const auto count = [] {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return std::distance(begin(all), end(all));
    };
    const auto before = count();
    for (int i = 0; i < 200; ++i) {
        const HANDLE file = OpenShared(Path(TEXT("fd")));
        OpenError(Folder() + TEXT("\\fd"), GENERIC_READ, 0, OPEN_EXISTING);
        Close(file);
        GetFileAttributesW((Folder() + TEXT("\\none")).c_str());
    }
    EXPECT_EQ(count(), before);
}

TEST_F(HostFiles, StandardStreamsAreFiles) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const int seen = InChild([&] {
        dup2(ends[1], 1);
        DWORD done = 0;
        const HANDLE out = GetStdHandle(STD_OUTPUT_HANDLE);
        return WriteFile(out, "stream", 6, &done, nullptr) && GetStdHandle(STD_OUTPUT_HANDLE) == out
                   ? 7
                   : 1;
    });
    EXPECT_EQ(seen, 7);
    char text[7] = {};
    EXPECT_EQ(read(ends[0], text, 6), 6);
    EXPECT_STREQ(text, "stream");
    EXPECT_EQ(GetStdHandle(0), INVALID_HANDLE_VALUE);
    close(ends[0]);
    close(ends[1]);
}

// A killed process leaves the name behind, not the block.
TEST_F(HostFiles, ASharedBlockEndsWithItsProcesses) {
    const auto create = [] {
        return CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 16,
                                  TEXT("end"));
    };
    const auto mark = [&] {
        void* const view = MapViewOfFile(create(), FILE_MAP_ALL_ACCESS, 0, 0, 16);
        const bool marked = *static_cast<char*>(view) == 'x';
        *static_cast<char*>(view) = 'x';
        return marked ? 1 : 0;
    };
    EXPECT_EQ(InChild(mark), 0);
    EXPECT_EQ(InChild(mark), 0) << "a dead process kept the block";
    const HANDLE mapping = create();
    EXPECT_EQ(InChild(mark), 0);
    EXPECT_EQ(InChild(mark), 1) << "processes do not share the block";
    EXPECT_TRUE(CloseHandle(mapping));
    EXPECT_TRUE(CloseHandle(create()));
    EXPECT_EQ(GetLastError(), 0u);
}

}  // namespace
