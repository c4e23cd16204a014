// Records of a log file, read and written.
#pragma once

#include "log_file/log_reader.h"
#include "log_file/log_recorder.h"

namespace fuzz {

// The text of the newest record, and how many there are.
inline UnicodeString Newest(Mox::TLogReader& reader, int& count) {
    UnicodeString newest;
    for (count = 0; const Mox::TLogMsg* message = reader.Next(); ++count) newest = message->text;
    return newest;
}

// Logs one line with that recorder.
inline void Append(Mox::TLogRecorder& recorder, const UnicodeString& text) {
    Mox::SetLogRecorder(&recorder);
    Mox::GetLogger()->Log('i', TEXT("fuzz"), 1, text, UnicodeString(), nullptr, 0);
    Mox::ClearLogRecorder(&recorder);
}

}  // namespace fuzz
