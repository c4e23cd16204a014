#include "process/command_line.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <cstring>

namespace host {

namespace {

bool IsBlank(WCHAR unit) {
    return unit == u' ' || unit == u'\t';
}

class Splitter {
  public:
    Splitter(WideView text, QuoteRule rule) : rest_(text), rule_(rule) {}

    bool Next(WideString& argument) {
        const auto start = std::find_if_not(rest_.begin(), rest_.end(), IsBlank);
        rest_.remove_prefix(static_cast<std::size_t>(start - rest_.begin()));
        if (rest_.empty()) return false;
        argument.clear();
        quoted_ = false;
        while (!rest_.empty() && (quoted_ || !IsBlank(rest_[0]))) Step(argument);
        return true;
    }

  private:
    std::size_t TakeRun(WCHAR unit) {
        const std::size_t length = std::min(rest_.find_first_not_of(unit), rest_.size());
        rest_.remove_prefix(length);
        return length;
    }
    void Step(WideString& argument) {
        const std::size_t slashes = TakeRun(u'\\');
        if (rest_.empty() || rest_[0] != u'"') {
            argument.append(slashes, u'\\');
            if (slashes == 0) {
                argument += rest_[0];
                rest_.remove_prefix(1);
            }
            return;
        }
        argument.append(slashes / 2, u'\\');
        if (slashes % 2 == 0) return TakeQuotes(argument);
        argument += u'"';
        rest_.remove_prefix(1);
    }
    void TakeQuotes(WideString& argument) {
        if (rule_ == QuoteRule::kShell) {
            const std::size_t quotes = (quoted_ ? 1 : 0) + TakeRun(u'"');
            argument.append(quotes / 3, u'"');
            quoted_ = quotes % 3 == 1;
            return;
        }
        if (quoted_ && rest_.starts_with(u"\"\"")) {
            argument += u'"';
            rest_.remove_prefix(2);
        } else {
            quoted_ = !quoted_;
            rest_.remove_prefix(1);
        }
    }

    WideView rest_;
    const QuoteRule rule_;
    bool quoted_ = false;
};

// Takes the program's name off the front of `text`. Backslashes have no special meaning there.
WideString TakeProgram(WideView& text) {
    const bool quoted = text.starts_with(u'"');
    if (quoted) text.remove_prefix(1);
    const auto end = std::find_if(text.begin(), text.end(), [quoted](WCHAR unit) {
        return quoted ? unit == u'"' : unit <= u' ';
    });
    const WideString program(text.begin(), end);
    text.remove_prefix(std::min<std::size_t>(
        static_cast<std::size_t>(end - text.begin()) + (quoted ? 1 : 0), text.size()));
    return program;
}

WideString OwnProgram() {
    WideString name(0x8000, 0);
    name.resize(GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size())));
    return name;
}

// Makes one block: the pointers first, then the texts that they point at.
LPWSTR* OneBlock(const std::vector<WideString>& arguments) {
    std::size_t bytes = (arguments.size() + 1) * sizeof(LPWSTR);
    for (const WideString& argument : arguments) bytes += (argument.size() + 1) * sizeof(WCHAR);
    auto* const pointers = static_cast<LPWSTR*>(GlobalAlloc(GPTR, bytes));
    if (pointers == nullptr) return nullptr;
    auto* text = reinterpret_cast<LPWSTR>(pointers + arguments.size() + 1);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        pointers[i] = text;
        std::memcpy(text, arguments[i].c_str(), (arguments[i].size() + 1) * sizeof(WCHAR));
        text += arguments[i].size() + 1;
    }
    return pointers;
}

}  // namespace

std::vector<WideString> SplitArguments(WideView text, QuoteRule rule) {
    std::vector<WideString> arguments;
    Splitter splitter(text, rule);
    for (WideString argument; splitter.Next(argument);) arguments.push_back(std::move(argument));
    return arguments;
}

}  // namespace host

using namespace host;

LPWSTR* CommandLineToArgvW(LPCWSTR command_line, int* count) {
    if (count == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    WideView text = ViewOf(command_line);
    std::vector<WideString> arguments{text.empty() ? OwnProgram() : TakeProgram(text)};
    for (WideString& argument : SplitArguments(text, QuoteRule::kShell)) {
        arguments.push_back(std::move(argument));
    }
    LPWSTR* const block = OneBlock(arguments);
    if (block != nullptr) *count = static_cast<int>(arguments.size());
    return block;
}
