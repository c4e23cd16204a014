// One log file and several processes; a file that cannot grow, or is taken away.
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <map>

#include "log_file/log_fixture.h"

extern char** environ;

using namespace test;

namespace {

class SharedLog : public LogFileTest {
  protected:
    pid_t StartWriter(const char* count, const char* tag) {
        const std::string program =
            std::filesystem::read_symlink("/proc/self/exe").replace_filename("log_writer");
        const std::string file(Name().begin(), Name().end());
        const char* const arguments[] = {program.c_str(), file.c_str(), count, tag, nullptr};
        pid_t child = 0;
        EXPECT_EQ(posix_spawn(&child, program.c_str(), nullptr, nullptr,
                              const_cast<char* const*>(arguments), environ),
                  0);
        return child;
    }
};

TEST_F(SharedLog, ProcessesInterleaveWholeRecordsInTheirOrder) {
    Record(0x500000);
    const pid_t writers[] = {StartWriter("150", "a"), StartWriter("150", "b")};
    for (int i = 0; i < 150; ++i) Log("c:" + std::to_string(i));
    for (const pid_t writer : writers) {
        int status = -1;
        EXPECT_EQ(waitpid(writer, &status, 0), writer);
        EXPECT_EQ(status, 0);
    }
    const ReadBack read = Read();
    EXPECT_TRUE(read.skips.empty());
    ASSERT_EQ(read.texts.size(), 450u);
    std::map<char, int> next;
    for (const std::string& text : read.texts) {
        EXPECT_EQ(text.substr(2), std::to_string(next[text[0]]++)) << text;
    }
}

TEST_F(SharedLog, TheReaderSeesOnlyWholeRecordsWhileAnotherProcessWrites) {
    const pid_t writer = StartWriter("400", "a");
    int status = -1;
    std::size_t seen = 0;
    while (waitpid(writer, &status, WNOHANG) == 0) {
        Mox::TLogReader reader;
        if (!reader.Open(Name().c_str())) continue;
        const ReadBack read = Drain(reader, true);
        EXPECT_TRUE(read.skips.empty()) << read.skips.front();
        EXPECT_GE(read.texts.size(), seen);
        seen = read.texts.size();
    }
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Read().texts.size(), 400u);
}

// A full disk, and a limit of file sizes, which would end the process by a signal.
TEST_F(SharedLog, WhatHasNoRoomIsLostAndCounted) {
    Record(0x10000);
    Log("kept");
    const auto size = Image().size();
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{size, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    Log(std::string(100, 'x'));
    setrlimit(RLIMIT_FSIZE, &before);
    Mox::TLogReader reader;
    ASSERT_TRUE(reader.Open(Name().c_str()));
    EXPECT_EQ(reader.Missing(), Header().write_position - size);
    EXPECT_EQ(Drain(reader, true).texts, Texts{"kept"});
    Log("after");
    EXPECT_EQ(Read().texts, (Texts{"kept", "after"}));
}

TEST_F(SharedLog, AFileThatIsTakenAwayIsLeftWithinASecond) {
    const std::string folder(Folder().begin() + 3, Folder().end());
    const std::filesystem::path file =
        std::string(std::getenv("QV_HOST_ROOT")) + "/drive_c/" + folder + "/test.log";
    Record(0x10000);
    Log("old");
    const std::filesystem::path aside = file.string() + ".aside";
    std::filesystem::rename(file, aside);
    Sleep(1010);
    Log("new file");
    EXPECT_EQ(Read().texts, Texts{"new file"});
    std::filesystem::rename(aside, file);
    Sleep(1010);
    Log("old file");
    EXPECT_EQ(Read().texts, (Texts{"old", "old file"}));
}

}  // namespace
