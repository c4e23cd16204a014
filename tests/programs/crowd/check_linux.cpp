// check: WRITERS writers have appended RECORDS numbered records each to a log file, and nobody else
// anything. Checks that the file counts all of them, and holds the last ones whole and in order.
#include <cstdio>

#include "ring_check.h"
#include "verbs.h"

namespace stress {

int Check(const TArguments& arguments) {
    const auto writers = static_cast<std::uint32_t>(std::stoul(arguments[1]));
    const auto records = static_cast<std::uint32_t>(std::stoul(arguments[2]));
    auto* const states = NewShared<TWriterState>(writers);
    for (std::uint32_t w = 0; w < writers; ++w) states[w].HasLogged(records);

    TRingCheck ring(TCrowd{states, writers, 0, writers});
    const std::string fault = ring.Check(CopyUnderLock(arguments[0]));
    if (!fault.empty()) Fail(fault);
    const Mox::TLogFileHeader& header = ring.Header();
    const std::uint64_t counter = header.counter;
    if (counter != std::uint64_t{writers} * records)
        Fail("the change counter is " + std::to_string(counter));
    const bool all = counter == ring.Records();
    if (!all && ring.Used() + 3 * kLargestSlot < header.limit) Fail("old records are missing");
    std::printf("records appended: %u by %u writers; change counter: %s\n", writers * records,
                writers, std::to_string(counter).c_str());
    std::printf(
        "in the ring: %u records of %zu writers, %u bytes; lost, damaged, doubled or out of "
        "order: 0\n",
        ring.Records(), ring.Writers(), static_cast<unsigned>(ring.Used()));
    return 0;
}

}  // namespace stress
