// log_load_check FILE WRITERS RECORDS: whether a log file to which WRITERS writers have appended
// RECORDS numbered records each, and nobody else anything, counts them all and holds the last of
// them whole and in order.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>

#include "log_file/log_format.h"
#include "log_file/log_reader.h"
#include "log_file/log_record.h"
#include "numbered_records.h"

namespace {

using namespace stress;

[[noreturn]] void Fail(const std::string& text) {
    std::fprintf(stderr, "%s\n", text.c_str());
    std::exit(1);
}

Mox::TLogFileHeader ReadHeader(const char* file) {
    Mox::TLogFileHeader header{};
    std::ifstream(file, std::ios::binary).read(reinterpret_cast<char*>(&header), sizeof(header));
    return header;
}

struct TFound {
    std::map<std::uint32_t, std::uint32_t> last;  // by writer
    std::uint32_t records = 0;
    std::uint64_t bytes = 0;
};

TFound ReadRecords(const char* file, std::uint32_t writers) {
    Mox::TLogReader reader;
    if (!reader.Open(file)) Fail("the file cannot be read");
    TFound found;
    TNumber n;
    while (const Mox::TLogMsg* message = reader.Next()) {
        if (!ReadNumber(*message, n) || n.writer >= writers) Fail("a record is not whole");
        const auto [last, first] = found.last.try_emplace(n.writer, n.number - 1);
        if (n.number != last->second + 1) {
            Fail("record " + std::to_string(n.number) + " of writer " + std::to_string(n.writer) +
                 " follows " + std::to_string(last->second));
        }
        last->second = n.number;
        Mox::TLogMsg copy = *message;
        found.bytes += Mox::kLinkSize + static_cast<std::uint64_t>(WriteLogMsg(nullptr, &copy));
        ++found.records;
    }
    if (reader.SkipCount() != 0) Fail("the reader left something out");
    return found;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: log_load_check FILE WRITERS RECORDS\n", stderr);
        return 2;
    }
    const auto writers = static_cast<std::uint32_t>(std::atoi(argv[2]));
    const auto records = static_cast<std::uint32_t>(std::atoi(argv[3]));
    const Mox::TLogFileHeader header = ReadHeader(argv[1]);
    const TFound found = ReadRecords(argv[1], writers);
    const std::uint64_t counter = header.counter;
    if (counter != std::uint64_t{writers} * records) {
        Fail("the change counter is " + std::to_string(counter));
    }
    if (found.records != header.count) Fail("the header's count is wrong");
    for (const auto& [writer, last] : found.last) {
        if (last != records)
            Fail("writer " + std::to_string(writer) + " has lost its last records");
    }
    const bool all = counter == found.records;
    if (!all && found.bytes + 3 * kLargestSlot < header.limit) Fail("old records are missing");
    std::printf("records appended: %u by %u writers; change counter: %s\n", writers * records,
                writers, std::to_string(counter).c_str());
    std::printf(
        "in the ring: %u records of %zu writers, %u bytes; lost, damaged, doubled or out of "
        "order: 0\n",
        found.records, found.last.size(), static_cast<unsigned>(found.bytes));
    return 0;
}
