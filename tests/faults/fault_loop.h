// A scenario, repeated with one call after the other made to fail until it runs through without
// meeting the fault; what must hold after every step.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "faults/fault_seam.h"

namespace faults {

/// What a step of the loop did, beside what the scenario itself keeps.
struct Step {
    Plan plan;
    bool hit = false;        // a call failed on demand
    bool threw = false;      // an exception came out of Run
    bool exhausted = false;  // it was that memory is short
    std::string thrown;      // what it said, as far as it is ASCII
};

/// One thing that a caller does. Prepare and Check are free of faults; nothing that they or Run
/// allocate may outlive Check.
class Scenario {
  public:
    virtual ~Scenario() = default;
    virtual void Prepare() {}
    virtual void Run() = 0;
    virtual void Check(const Step& step) = 0;
};

/// Runs the loops of a kind: any function, each function by name, each with each of its codes; one
/// call alone, and with all later ones. Fails the test when a step leaks a block or a file
/// descriptor, or takes longer than thirty seconds.
void RunLoops(Scenario& scenario, Kind kind, const std::string& name);

}  // namespace faults
