// log_writer FILE COUNT TAG: appends the texts "TAG:0", "TAG:1", ... to a log file, as a process of
// the product would.
#include <cstdio>
#include <cstdlib>

#include "log_file/log_recorder.h"
#include "mox_classes/text/sysutils_numbers.h"

namespace {

void Append(const UnicodeString& tag, int count) {
    for (int i = 0; i < count; ++i) {
        Mox::GetLogger()->Log('i', TEXT("log_writer"), __LINE__,
                              Sysutils::UnicodePrintf(TEXT("%s:%d"), tag, i), UnicodeString(),
                              nullptr, 0);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: log_writer FILE COUNT TAG\n", stderr);
        return 2;
    }
    Mox::TLogger& logger = *Mox::GetLogger();
    logger.Init();
    Mox::TLogRecorder recorder;
    const bool open = recorder.Open(argv[1], 0x500000);
    Mox::TLogRecorder* before = logger.recorder;
    Mox::SetLogRecorder(&recorder);
    if (open) Append(argv[3], std::atoi(argv[2]));
    Mox::ClearLogRecorder(&recorder);
    if (before != nullptr) Mox::SetLogRecorder(before);
    logger.Release();
    return open ? 0 : 1;
}
