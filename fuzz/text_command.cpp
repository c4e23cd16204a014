// The text command call, wide and narrow, on a machine with printers: answers keep their bounds.
#include "qv_rtl_main/command_entry.h"

#include <vector>

#include "support/input.h"
#include "support/machine.h"

namespace {

constexpr int kRoom = 40;

// Whatever the room is, the answer is a beginning of the whole one and ends in a zero.
template <class Unit, class Call>
void Check(const Unit* line, Call call) {
    fuzz::ResetMachine();
    const int status = call(line, nullptr, 0);
    fuzz::Require(status >= 0 || (status >= -70 && status % 10 == 0), "a known status");
    fuzz::ResetMachine();
    std::vector<Unit> whole(static_cast<std::size_t>(status < 0 ? 4096 : status) + 1, Unit{'?'});
    const int again = call(line, whole.data(), static_cast<int>(whole.size()) - 1);
    fuzz::Require(again == status, "the same machine gives the same status");
    if (status >= 0) fuzz::Require(whole.back() == 0, "a status is the answer's length");
    fuzz::ResetMachine();
    std::vector<Unit> cut(kRoom + 1, Unit{'?'});
    call(line, cut.data(), kRoom);
    const std::basic_string<Unit> start(cut.data());
    fuzz::Require(
        start.size() <= kRoom && start == std::basic_string<Unit>(whole.data()).substr(0, kRoom),
        "a short answer is a beginning of the whole one");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Check(fuzz::Text({data, size}).t_str(), DoCommandW);
    Check(fuzz::Narrow({data, size}).c_str(), DoCommandA);
    return 0;
}
