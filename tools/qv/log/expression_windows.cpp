// By the standard library: the cross compiler comes with no other.
#include <regex>
#include <stdexcept>

#include "log/expression.h"

namespace qv {

class Expression::Program {
  public:
    // The default matcher recurses once per character and may take exponential time.
    explicit Program(Units pattern)
        : expression_(pattern.begin(), pattern.end(),
                      std::regex::ECMAScript | std::regex_constants::__polynomial) {}
    bool IsIn(Units text) const { return std::regex_search(text.begin(), text.end(), expression_); }

  private:
    std::wregex expression_;
};

Expression::Expression(Units pattern) {
    try {
        program_ = std::make_unique<Program>(pattern);
    } catch (const std::regex_error& error) {
        throw std::invalid_argument(error.what());
    }
}
Expression::~Expression() = default;

bool Expression::IsIn(Units text) const {
    return program_->IsIn(text);
}

}  // namespace qv
