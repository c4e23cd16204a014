// A sound log, damaged by a list of patches, against a model of what was not touched: the reader
// shows that, the next writer keeps it, and so does one that comes after a repair that was killed.
#include "log_file/damage_model.h"
#include "support/input.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kLongest = 500;
    test::DamageModel model(fuzz::FileName("fuzz.log"));
    const std::string fault = model.Try({data, std::min(size, kLongest)});
    fuzz::Require(fault.empty(), fault.c_str());
    return 0;
}
