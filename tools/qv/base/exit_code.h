// The exit codes of the tool, and the exceptions that lead to them.
#pragma once

#include <stdexcept>
#include <string>

namespace qv {

enum class ExitCode {
    kDone = 0,
    kFailed = 1,  // the operation failed, or compared things differ
    kWrongUsage = 2,
    kDamaged = 3,     // the input is damaged; the sound part was used
    kCannotOpen = 4,  // a file or stream cannot be opened or read
};

// A command failed. The text goes to standard error, unless it is empty; the program ends with the
// code.
class Failure : public std::runtime_error {
  public:
    explicit Failure(const std::string& text, ExitCode code = ExitCode::kFailed)
        : std::runtime_error(text), code_(code) {}
    ExitCode Code() const { return code_; }

  private:
    ExitCode code_;
};

// The reader of standard output has closed it. The program ends without a message.
struct ClosedPipe {};

}  // namespace qv
