// texts: prints the text of every record of a log file, one a line; fails when the reader skipped
// anything.
#include <cstdio>

#include "log_file/log_reader.h"
#include "verbs.h"

namespace stress {

namespace {

void PrintLine(const UnicodeString& text) {
    for (int i = 1; i <= text.Length(); ++i) std::putchar(text[i] < 0x80 ? int(text[i]) : '?');
    std::putchar('\n');
}

}  // namespace

int Texts(const TArguments& arguments) {
    Mox::TLogReader reader;
    if (!reader.Open(arguments[0].c_str())) {
        PrintLine(reader.Error());
        return 1;
    }
    while (const Mox::TLogMsg* message = reader.Next()) PrintLine(message->text);
    for (int i = 0; i < reader.SkipCount(); ++i) PrintLine(reader.Skip(i).reason);
    return reader.SkipCount() == 0 ? 0 : 1;
}

}  // namespace stress
