#include "full_log.h"

#include <fstream>

#include "log_file/log_format.h"
#include "log_file/log_image.h"
#include "log_file/log_record.h"
#include "support.h"

namespace bench {

namespace {

constexpr std::size_t kFull = 0x500000;  // what start-up passes

// A record as the product's own modules write them; one of twenty tells a failure. The lines of a
// command come together, the commands seconds apart.
void Fill(Mox::TLogMsg& message, int number) {
    constexpr std::uint64_t kSecond = 10'000'000;
    const bool fails = number % 20 == 0;
    const std::string printer = "'Printer " + std::to_string(number) + "'";
    const std::uint64_t time =
        134'000'000'000'000'000 + number / 5 * 3 * kSecond + number % 5 * 9000;
    message.time = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    message.level = fails ? 'X' : 'i';
    message.processId = message.threadId = static_cast<DWORD>(4000 + number / 50);
    message.sessionId = 1;
    message.source = TEXT("printer_query");
    message.line = fails ? 57 : 118;
    message.text = Wide(fails ? "[GetGlobalDevMode(" + printer +
                                    ")] OpenPrinter failed: [1801]The printer name is invalid."
                              : "SetPrinter(" + printer + ") called successfully, level 9");
}

}  // namespace

void WriteFullLog(const std::string& file) {
    Mox::TLogImage image;
    Mox::TLogMsg message;
    std::size_t size = 0;
    for (int i = 0; size < kFull; ++i) {
        Fill(message, i);
        size += Mox::WriteLogMsg(nullptr, &message) + Mox::kLinkSize;
        image.Append(message);
    }
    const std::vector<std::uint8_t>& bytes = image.Finish(kFull);
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

}  // namespace bench
