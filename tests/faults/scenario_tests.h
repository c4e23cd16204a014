// The three tests that every scenario goes through. A file of scenarios ends with
//     using Scenarios = testing::Types<...>;
//     INSTANTIATE_TYPED_TEST_SUITE_P(Name, Faults, Scenarios);
#pragma once

#include "faults/fault_loop.h"

namespace faults {

template <class S>
class Faults : public testing::Test {
  protected:
    void Loop(Kind kind, const char* what) {
        S scenario;
        RunLoops(scenario, kind, std::string(S::kName) + ", " + what);
    }
};

TYPED_TEST_SUITE_P(Faults);
TYPED_TEST_P(Faults, HostCalls) {
    this->Loop(Kind::Host, "host calls");
}
TYPED_TEST_P(Faults, SystemCalls) {
    this->Loop(Kind::System, "system calls");
}
TYPED_TEST_P(Faults, Allocations) {
    this->Loop(Kind::Memory, "allocations");
}
REGISTER_TYPED_TEST_SUITE_P(Faults, HostCalls, SystemCalls, Allocations);

}  // namespace faults
