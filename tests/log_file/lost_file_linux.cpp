// A log file that cannot grow, and one that is taken away.
#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>

#include "log_file/log_fixture.h"

using namespace test;

namespace {

class LostFile : public LogFileTest {};

// A full disk, and a limit of file sizes, which would end the process by a signal.
TEST_F(LostFile, WhatHasNoRoomIsLostAndCounted) {
    Record(0x10000);
    Log("kept");
    const auto size = Image().size();
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{size, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    // A look-up that throws costs the report alone.
    CleanLogger::Logger().resStringProc = [](void*, UnicodeString, DWORD, UnicodeString*) {
        throw std::bad_alloc();
    };
    EXPECT_EQ(Mox::LogSurely('i', TEXT("tests"), 1, Widen(std::string(100, 'x'))),
              DWORD{ERROR_DISK_FULL});
    setrlimit(RLIMIT_FSIZE, &before);
    Mox::TLogReader reader;
    ASSERT_TRUE(reader.Open(Name().c_str()));
    EXPECT_EQ(reader.Missing(), 4u + 30 + 7 + 2 + 100);
    EXPECT_EQ(Drain(reader, true).texts, Texts{"kept"});
    Log("after");
    EXPECT_EQ(Read().texts, (Texts{"kept", "after"}));
}

TEST_F(LostFile, AFileThatIsTakenAwayIsLeftWithinASecond) {
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
