#include "qv_rtl_main/command_entry.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <string>

#include "mox_classes/containers/string_list.h"
#include "mox_classes/text/sysutils_text.h"
#include "qv_rtl_main/devmode_commands.h"

namespace {

constexpr int kFailedWithText = -60;
constexpr int kFailed = -70;

struct TCommand {
    const WCHAR* word;
    int (*handler)(TStrings* items, UnicodeString& result);
};
constexpr TCommand kCommands[] = {
    {TEXT("getdevmode"), CmdGetDevMode},
    {TEXT("setdevmode"), CmdSetDevMode},
    {TEXT("getorloprinters"), CmdGetOrloPrinters},
};

// Takes the command word out of the items, and puts the keywords into the form that the handlers
// compare with.
UnicodeString TakeWord(TStrings& items) {
    if (items.GetCount() == 0) return UnicodeString();
    const UnicodeString word = Sysutils::Trim(Sysutils::LowerCase(items.Get(0)));
    items.Delete(0);
    for (int i = 0; i < items.GetCount(); i += 2) {
        items.Put(i, Sysutils::LowerCase(Sysutils::Trim(items.Get(i))));
    }
    return word;
}

int Dispatch(const UnicodeString& line, UnicodeString& result) {
    TStringList list;
    TStrings& items = list;
    items.SetStrictDelimiter(true);
    items.SetDelimiter(kTab);
    items.SetDelimitedText(line);
    const UnicodeString word = TakeWord(items);
    for (const TCommand& command : kCommands) {
        if (word == UnicodeString(command.word)) return command.handler(&items, result);
    }
    result = TEXT("Invalid Command");
    return 0;
}

// Appends the text of a failure. Without memory the text is left out.
void Append(UnicodeString& result, const char* text) noexcept {
    try {
        result += UnicodeString(text);
    } catch (...) {
        result = UnicodeString();
    }
}

// Runs `step`, which returns a status and may append to `result`. An exception becomes a status and
// a text.
template <class Step>
int Guarded(UnicodeString& result, Step step) noexcept {
    try {
        try {
            return step();
        } catch (const UnicodeString& text) {
            result += text;
            return kFailedWithText;
        }
    } catch (const std::exception& failure) {
        Append(result, failure.what());
    } catch (...) {
        Append(result, "Unknown failure");
    }
    return kFailed;
}

// Stores at most `length` units and a terminator behind them.
template <class Unit>
void Store(const Unit* text, int units, Unit* buffer, int length) {
    if (buffer == nullptr) return;
    const int count = std::clamp(units, 0, std::max(length, 0));
    std::copy_n(text, count, buffer);
    buffer[count] = 0;
}

std::string AnsiText(const UnicodeString& text) {
    const auto convert = [&text](char* buffer, int size) {
        return WideCharToMultiByte(CP_ACP, 0, text.t_str(), text.Length(), buffer, size, nullptr,
                                   nullptr);
    };
    if (text.Length() == 0) return std::string();
    const int size = convert(nullptr, 0);
    std::string bytes(static_cast<std::size_t>(std::max(size, 0)), '\0');
    if (size < 1 || convert(bytes.data(), size) != size) {
        throw std::runtime_error("The result cannot be converted");
    }
    return bytes;
}

}  // namespace

int DoCommandW(const WCHAR* command, WCHAR* buffer, int length) {
    UnicodeString result;
    const int status = Guarded(result, [&] { return Dispatch(UnicodeString(command), result); });
    Store(result.t_str(), result.Length(), buffer, length);
    return status < 0 ? status : result.Length();
}

int DoCommand(const WCHAR* command, WCHAR* buffer, int length) {
    return DoCommandW(command, buffer, length);
}

int DoCommandA(const char* command, char* buffer, int length) {
    UnicodeString result;
    std::string bytes;
    int status = Guarded(result, [&] { return Dispatch(UnicodeString(command), result); });
    const int converted = Guarded(result, [&] {
        bytes = AnsiText(result);
        return 0;
    });
    if (converted < 0) status = converted;
    const int size = static_cast<int>(bytes.size());
    Store(bytes.data(), size, buffer, length);
    return status < 0 ? status : size;
}
