// A scenario is something that a caller does. Each is repeated with one call after the other made
// to fail, until it runs through without meeting the fault.
#pragma once

#include <functional>
#include <memory>

#include "faults/fault_seam.h"

namespace faults {

/// The result of a step of the loop. The scenario keeps its own results.
struct Step {
    Plan plan;
    bool hit = false;  // a call failed on demand
};

/// When an exception may come out of Run. C calls let none out, whatever fails.
enum class Throws { Never, WithoutMemory, AnyFault };

/// Prepare and Check run without faults. Nothing that they or Run allocate may outlive Check.
class Scenario {
  public:
    explicit Scenario(Throws throws) : throws_(throws) {}
    virtual ~Scenario() = default;
    virtual void Prepare() {}
    virtual void Run() = 0;
    virtual void Check(const Step& step) = 0;

    bool MayThrow(Kind failing) const {
        return throws_ == Throws::AnyFault ||
               (throws_ == Throws::WithoutMemory && failing == Kind::Memory);
    }

  private:
    Throws throws_;
};

/// Three tests of a scenario: its host calls, its system calls, its allocations. Any of them fails,
/// and each function by name with each of its codes; one call alone, or with all later ones. A test
/// fails when a step leaks a block or a file descriptor, or takes longer than thirty seconds.
class Tests {
  public:
    using Make = std::function<std::unique_ptr<Scenario>()>;
    Tests(const char* name, const Make& make);
};

template <class S>
std::unique_ptr<Scenario> New() {
    return std::make_unique<S>();
}

}  // namespace faults
