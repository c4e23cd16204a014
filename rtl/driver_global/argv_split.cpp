#include "driver_global/argv_split.h"

#include <algorithm>

namespace driver_global {

namespace {

constexpr WCHAR kQuote = '"';
constexpr WCHAR kSlash = '\\';

bool IsBlank(WCHAR unit) {
    return unit == ' ' || unit == '\t';
}

class TSplitter {
  public:
    TSplitter(TUnits text, TQuoteRule rule) : text_(text), rule_(rule) {}

    bool Next(TArgument& argument) {
        while (at_ < text_.size() && IsBlank(text_[at_])) ++at_;
        if (at_ == text_.size()) return false;
        argument.begin = at_;
        argument.value.clear();
        in_quotes_ = false;
        while (at_ < text_.size() && (in_quotes_ || !IsBlank(text_[at_]))) Step(argument.value);
        argument.end = at_;
        return true;
    }

  private:
    std::size_t TakeRun(WCHAR unit) {
        const std::size_t end = std::min(text_.find_first_not_of(unit, at_), text_.size());
        const std::size_t length = end - at_;
        at_ = end;
        return length;
    }
    void Step(TText& value) {
        const std::size_t slashes = TakeRun(kSlash);
        const bool before_quote = at_ < text_.size() && text_[at_] == kQuote;
        value.append(before_quote ? slashes / 2 : slashes, kSlash);
        if (before_quote && slashes % 2 == 0) {
            TakeQuotes(value);
        } else if (before_quote || slashes == 0) {
            value += text_[at_++];
        }
    }
    void TakeQuotes(TText& value) {
        const std::size_t held = in_quotes_ ? 1 : 0;
        if (rule_ == TQuoteRule::Shell) {
            const std::size_t quotes = held + TakeRun(kQuote);
            value.append(quotes / 3, kQuote);
            in_quotes_ = quotes % 3 == 1;
        } else if (in_quotes_ && at_ + 1 < text_.size() && text_[at_ + 1] == kQuote) {
            value += kQuote;
            at_ += 2;
        } else {
            in_quotes_ = !in_quotes_;
            ++at_;
        }
    }

    const TUnits text_;
    const TQuoteRule rule_;
    std::size_t at_ = 0;
    bool in_quotes_ = false;
};

}  // namespace

std::vector<TArgument> SplitArguments(TUnits text, TQuoteRule rule) {
    std::vector<TArgument> arguments;
    TSplitter splitter(text, rule);
    for (TArgument argument; splitter.Next(argument);) arguments.push_back(argument);
    return arguments;
}

TText QuotedArgument(TUnits value) {
    TText text(1, kQuote);
    std::size_t slashes = 0;
    for (const WCHAR unit : value) {
        if (unit == kQuote) text.append(slashes + 1, kSlash);
        slashes = unit == kSlash ? slashes + 1 : 0;
        text += unit;
    }
    text.append(slashes, kSlash);
    return text += kQuote;
}

}  // namespace driver_global
