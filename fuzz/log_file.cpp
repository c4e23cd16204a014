// The shared log file: the checked reader, then the next writer on the same file, then the reader.
#include "log_file/log_format.h"
#include "support/input.h"
#include "support/log_records.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::WriteFile("fuzz.log", {data, size});
    const UnicodeString name = fuzz::FileName("fuzz.log");
    Mox::TLogReader memory, file;
    int in_memory = 0, in_file = 0;
    const bool good = memory.Assign(data, size);
    fuzz::Require(file.Open(name) == good, "memory and file are judged alike");
    if (!good) {
        const bool found = memory.StartWithoutHeader();
        fuzz::Require(file.StartWithoutHeader() == found, "both find records without a header");
    }
    const bool same = fuzz::Same(fuzz::Newest(memory, in_memory), fuzz::Newest(file, in_file));
    fuzz::Require(same && in_memory == in_file, "memory and file are read alike");

    constexpr DWORD kLimit = 4096, kRoomForRecords = 1024, kLargestFile = 1 << 20;
    const auto header = fuzz::Input(data, size).Number<Mox::TLogFileHeader>();
    if (header.write_position > kLargestFile) return 0;
    Mox::TLogRecorder recorder;
    fuzz::Require(recorder.Open(name, kLimit), "a damaged log can be opened");
    for (const WCHAR* text : {TEXT("first"), TEXT("second")}) {
        fuzz::Append(recorder, text);
        const bool newest = file.Open(name) && fuzz::Newest(file, in_file) == UnicodeString(text);
        fuzz::Require(newest || header.limit < kRoomForRecords, "the newest can be read");
    }
    return 0;
}
