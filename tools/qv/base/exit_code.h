// How the tool ends, and the failures that lead there.
#pragma once

#include <stdexcept>
#include <string>

namespace qv {

enum class ExitCode {
    kDone = 0,
    kFailed = 1,  // the operation failed, or what was compared differs
    kWrongUsage = 2,
    kDamaged = 3,     // damaged input was handled as far as it goes
    kCannotOpen = 4,  // a file or stream cannot be opened or read
};

// What the user asked for failed: the text goes to standard error, the code is the program's. An
// empty text ends the program without a message.
class Failure : public std::runtime_error {
  public:
    explicit Failure(const std::string& text, ExitCode code = ExitCode::kFailed)
        : std::runtime_error(text), code_(code) {}
    ExitCode Code() const { return code_; }

  private:
    ExitCode code_;
};

// Nobody reads standard output any more: the program ends without a message.
struct ClosedPipe {};

}  // namespace qv
