// Loading and unloading the whole library in a process that has nothing to do with it.
#include <dlfcn.h>
#include <spawn.h>
#include <sys/wait.h>

#include <filesystem>

#include "log_file/log_fixture.h"
#include "mox_log/registry.h"

extern char** environ;

using namespace test;

namespace {

std::string LibraryFile() {
    Dl_info info{};
    dladdr(reinterpret_cast<void*>(&Mox::GetLogger), &info);
    return std::filesystem::canonical(info.dli_fname);
}

class Loading : public LogFileTest {};

TEST_F(Loading, TheLibraryStartsAfreshEachTimeItIsLoaded) {
    ASSERT_TRUE(Mox::WriteRegistry(HKEY_LOCAL_MACHINE, TEXT("Software\\Halvorn\\Vantrel"),
                                   TEXT("Logfile"), Name().c_str()));
    const std::string program =
        std::filesystem::read_symlink("/proc/self/exe").replace_filename("load_library");
    const std::string library = LibraryFile();
    const char* const arguments[] = {program.c_str(), library.c_str(), "3", nullptr};
    pid_t child = 0;
    ASSERT_EQ(posix_spawn(&child, program.c_str(), nullptr, nullptr,
                          const_cast<char* const*>(arguments), environ),
              0);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
    const ReadBack read = Read();
    ASSERT_EQ(read.texts.size(), 9u);
    for (std::size_t i = 0; i < 9; i += 3) {
        EXPECT_EQ(read.texts[i].substr(0, 12), "OS Version: ");
        EXPECT_EQ(read.texts[i + 1], "'qv_rtl [AMD64]' initiated the log system. ");
        EXPECT_EQ(read.texts[i + 2].substr(0, 18), "[qv_rtl] ExeName: ");
    }
}

}  // namespace
