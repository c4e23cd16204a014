// A regular expression. expression_linux.cpp and expression_windows.cpp each hold all of it.
//
// docs/for-support-engineers.md says what expressions mean on both hosts.
#pragma once

#include <memory>

#include "base/utf8_text.h"

namespace qv {

// A search takes time in proportion to the text's length, whatever expression and text are. Throws
// std::invalid_argument for a malformed expression.
class Expression {
  public:
    explicit Expression(Units pattern);
    ~Expression();
    bool IsIn(Units text) const;

  private:
    class Program;
    std::unique_ptr<Program> program_;
};

}  // namespace qv
