// The commands that only look. The library asks for this while it is loaded
// (driver_global/startup.h): before main, and before any global object of this program exists. Code
// here must not use such objects.
#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "base/host.h"

namespace {

constexpr std::string_view kLookingVerbs[] = {"bundle", "completion", "doctor", "help",
                                              "log",    "man",        "report"};
constexpr std::string_view kLookingOptions[] = {"--help", "--help-all", "--version", "-h"};

template <std::size_t N>
bool Holds(const std::string_view (&words)[N], std::string_view word) {
    return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

}  // namespace

// These commands may show the log in force. They must not write into it or repair it, so that it
// still shows what happened before.
extern "C" QV_PROGRAM_EXPORT int QVLooksOnly() {
    qv::EarlyArguments arguments;
    const auto words = arguments.Words();
    const auto is_verb = [](std::string_view word) { return !word.starts_with('-'); };
    const auto verb = std::find_if(words.begin(), words.end(), is_verb);
    if (verb == words.end() || Holds(kLookingVerbs, *verb)) return 1;
    const auto asks = [](std::string_view word) { return Holds(kLookingOptions, word); };
    return std::any_of(words.begin(), words.end(), asks) ? 1 : 0;
}
