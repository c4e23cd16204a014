// Reports of this folder's own troubles: registered texts, shown by ODSLog and never logged.
#pragma once

#include <windows.h>

#include "mox_classes/text/sys_error.h"
#include "mox_classes/text/sysutils_numbers.h"
#include "mox_classes/text/unicode_string.h"

namespace log_file {

inline constexpr const WCHAR* kModule = TEXT("log_file");

// A text that can be translated under its id in the domain "log_file".
struct TReport {
    unsigned short id;
    const WCHAR* text;
};
inline constexpr TReport kInvalidCodePage{0, TEXT("%s: Invalid codepage %d was detected")};
inline constexpr TReport kInvalidTag{1, TEXT("%s: Invalid tag 0x%02x was detected")};
inline constexpr TReport kOpenFailed{10, TEXT("File open failed: Filename=\"%s\" - %s")};
inline constexpr TReport kSeekFailed{20, TEXT("%s(handle=0x%x, offset=0x%x) failed: \" %s \"")};
inline constexpr TReport kTransferFailed{21, TEXT("%s(handle=0x%x, size=0x%x) failed: \" %s \"")};
inline constexpr TReport kLockFailed{
    22, TEXT("%s(handle=0x%x, offset=0x%x, size=0x%x) failed: \" %s \"")};

// Whether a report may look for a translation. The look-up can itself log a trouble, so a report
// about a message that was logged in this way takes the text of the source.
enum class TReportTexts { Translated, Own };

// The translation when it asks for the same conversions as the text of the source, else that text.
UnicodeString ReportFormat(const TReport& report, TReportTexts texts);
void ShowReport(const UnicodeString& text, int line);

template <class... Args>
void Report(int line, TReportTexts texts, const TReport& report, const Args&... args) {
    UnicodeString format = ReportFormat(report, texts);
    if (!System::FormatFits(format.t_str(), args...)) format = report.text;
    ShowReport(Sysutils::UnicodePrintf(format, args...), line);
}

// Reports the failure of a call; the text ends in the system's text for `code`. Want of memory, or
// a look-up that throws, costs the report and nothing else.
template <class... Args>
void ReportError(int line, TReportTexts texts, const TReport& report, DWORD code,
                 const Args&... args) noexcept {
    try {
        Report(line, texts, report, args..., Mox::GetSysError(code, true));
    } catch (...) {
        return;
    }
}

}  // namespace log_file
