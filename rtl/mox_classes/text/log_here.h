// How the library's own code logs: one short call with level and text.
//
// The module that a log line names is the folder of the calling file below rtl/; file and line come
// by themselves. LogHere is declared at the bottom, because lists log too, and defined by the
// logger (mox_log/logger.cpp): nothing down here includes the logger.
#pragma once

#include <string_view>

#include "mox_classes/text/unicode_string.h"

namespace Mox {

// "driver_global" of ".../rtl/driver_global/startup.cpp"; empty for a file that lies elsewhere.
constexpr std::string_view ModuleOf(std::string_view file) {
    constexpr std::string_view kLibrary = "rtl/";
    const std::size_t library = file.rfind(kLibrary);
    if (library == std::string_view::npos) return {};
    file.remove_prefix(library + kLibrary.size());
    return file.substr(0, file.find('/'));
}
static_assert(ModuleOf("../../rtl/mox_classes/text/strhlpr.cpp") == "mox_classes");
static_assert(ModuleOf("./rtl/os_xp/user_name.cpp") == "os_xp");

UnicodeString ModuleName(const char* file);

// Logs through GetLogger() and returns the logged text. Any thread.
UnicodeString LogHere(int level, const UnicodeString& text, int line = __builtin_LINE(),
                      const char* file = __builtin_FILE());

// A status line of the logging machinery and of what it rests on: it goes to the debugger output
// and never to the logger.
UnicodeString ShowStatus(const UnicodeString& text, int line = __builtin_LINE(),
                         const char* file = __builtin_FILE());

}  // namespace Mox
