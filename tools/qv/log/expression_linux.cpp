// By RE2.
#include <re2/re2.h>

#include <stdexcept>

#include "log/expression.h"

namespace qv {

namespace {

re2::RE2::Options Quiet() {
    re2::RE2::Options options;
    options.set_log_errors(false);
    return options;
}

std::string Utf8(Units text) {
    std::string bytes;
    AddUtf8(bytes, text);
    return bytes;
}

}  // namespace

class Expression::Program {
  public:
    explicit Program(Units pattern) : expression_(Utf8(pattern), Quiet()) {
        if (!expression_.ok()) throw std::invalid_argument(expression_.error());
    }
    bool IsIn(Units text) {
        text_.clear();
        AddUtf8(text_, text);
        return re2::RE2::PartialMatch(text_, expression_);
    }

  private:
    re2::RE2 expression_;
    std::string text_;  // keeps its room from search to search
};

Expression::Expression(Units pattern) : program_(std::make_unique<Program>(pattern)) {}
Expression::~Expression() = default;

bool Expression::IsIn(Units text) const {
    return program_->IsIn(text);
}

}  // namespace qv
