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
    EXPECT_EQ(ErrorUnless(DeleteFileW(name.c_str())), 5u);
    unlink(HostPath("fixed").c_str());
}

TEST_F(HostFiles, DrivesLieWhereTheyShould) {
    MakeFile(Path(TEXT("x\u00E4\U0001F600")), "x");
    EXPECT_TRUE(std::filesystem::exists(HostPath("x\xC3\xA4\xF0\x9F\x98\x80")));
    EXPECT_TRUE(There((Folder() + TEXT("\\X\u00C4\U0001F600")).c_str()));
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(std::filesystem::path(HostPath("")));
    MakeFile(Path(TEXT("here")), "x");
    EXPECT_TRUE(There(TEXT("here")) && There(TEXT("C:here")) && There(TEXT("./HERE")));
    std::filesystem::current_path("/");
    EXPECT_FALSE(There(TEXT("here")) || There(TEXT("C:here")));
    std::filesystem::current_path(before);
}

TEST_F(HostFiles, TheExactSpellingWinsOverAnother) {
    std::filesystem::create_directory(HostPath("In"));
    std::ofstream(HostPath("In/Name")) << "upper";
    std::ofstream(HostPath("In/name")) << "lower";
    for (const WCHAR* const name : {TEXT("In\\name"), TEXT("IN\\name"), TEXT("IN\\Name")}) {
        const HANDLE file = Open(Path(name), GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
        EXPECT_EQ(Read(file, 9), name[3] == 'n' ? "lower" : "upper");
    }
    EXPECT_TRUE(There(Path(TEXT("IN\\NAME")).c_str()));
    std::filesystem::remove_all(HostPath("In"));
}

TEST_F(HostFiles, ShareModesAndLocksHoldBetweenProcessesThatLive) {
    const Wide name = Path(TEXT("both"));
    const HANDLE file = OpenShared(name);
    ASSERT_TRUE(LockFile(file, 0, 0, 96, 0));
    EXPECT_EQ(InChild([&] {
                  const bool locked = ErrorUnless(LockFile(OpenShared(name), 0, 0, 1, 0)) == 33;
                  return locked &&
                         OpenError(name, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING) == 32;
              }),
              1);
    Close(file);
    EXPECT_EQ(InChild([&] {
                  const HANDLE own = Open(name, GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING);
                  return LockFile(own, 0, 0, 96, 0);
              }),
              1);
    const HANDLE again = Open(name, GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING);
    EXPECT_TRUE(LockFile(again, 0, 0, 96, 0)) << "a dead process holds on";
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
    EXPECT_EQ(ErrorUnless(LockFile(file, 0, 0, 96, 0)), 33u);
    close(raw);
}

TEST_F(HostFiles, DescriptorsAreClosed) {
    const auto count = [] {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return std::distance(begin(all), end(all));
    };
    const auto before = count();
    for (int i = 0; i < 20; ++i) {
        const HANDLE file = OpenShared(Path(TEXT("fd")));
        OpenError(Folder() + TEXT("\\fd"), GENERIC_READ, 0, OPEN_EXISTING);
        Close(file);
        There((Folder() + TEXT("\\none")).c_str());
    }
    EXPECT_EQ(count(), before);
}

TEST_F(HostFiles, StandardStreamsAreFilesThatSayWhenNobodyReads) {
    const HANDLE full = Open(TEXT("/dev/full"), GENERIC_WRITE, 0, OPEN_EXISTING);
    DWORD done = 9;
    EXPECT_EQ(ErrorUnless(WriteFile(full, "x", 1, &done, nullptr)), 112u);
    EXPECT_EQ(done, 0u);
    const int seen = InChild([&] {
        int ends[2];
        if (pipe(ends) != 0 || dup2(ends[1], 1) != 1) return 5;
        const HANDLE out = GetStdHandle(STD_OUTPUT_HANDLE);
        if (!WriteFile(out, "stream", 6, &done, nullptr)) return 1;
        if (GetStdHandle(STD_OUTPUT_HANDLE) != out) return 2;
        char text[7] = {};
        if (read(ends[0], text, 6) != 6 || std::string(text) != "stream") return 3;
        close(ends[0]);
        return ErrorUnless(WriteFile(out, "1234", 4, &done, nullptr)) == 29 && done == 0 ? 7 : 4;
    });
    EXPECT_EQ(seen, 7);
    EXPECT_EQ(GetStdHandle(0), INVALID_HANDLE_VALUE);
}

// A killed process leaves the name behind, not the block.
TEST_F(HostFiles, ASharedBlockEndsWithItsProcesses) {
    const auto create = [] {
        return CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 16,
                                  TEXT("end"));
    };
    const auto mark = [&] {
        auto* const view =
            static_cast<char*>(MapViewOfFile(create(), FILE_MAP_ALL_ACCESS, 0, 0, 16));
        return std::exchange(*view, 'x') == 'x' ? 1 : 0;
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
