// Prints the text of every record of a log file, one a line; fails when the reader skipped
// anything.
//   log_texts FILE
#include <cstdio>

#include "log_file/log_reader.h"

namespace {

void PrintLine(const UnicodeString& text) {
    for (int i = 1; i <= text.Length(); ++i) std::putchar(text[i] < 0x80 ? int(text[i]) : '?');
    std::putchar('\n');
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    Mox::TLogReader reader;
    if (!reader.Open(argv[1])) {
        PrintLine(reader.Error());
        return 1;
    }
    while (const Mox::TLogMsg* message = reader.Next()) PrintLine(message->text);
    for (int i = 0; i < reader.SkipCount(); ++i) PrintLine(reader.Skip(i).reason);
    return reader.SkipCount() == 0 ? 0 : 1;
}
