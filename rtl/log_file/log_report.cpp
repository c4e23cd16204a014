#include "log_file/log_report.h"

#include "mox_log/logger.h"
#include "mox_log/res_strings.h"

namespace log_file {

UnicodeString ReportFormat(const TReport& report, TReportTexts texts) {
    const UnicodeString own = report.text;
    if (texts == TReportTexts::Own) return own;
    const UnicodeString found = Mox::TMoxStringID(kModule, report.id, own).AsString();
    return Mox::ExtractFormatStrings(found) == Mox::ExtractFormatStrings(own) ? found : own;
}

void ShowReport(const UnicodeString& text, int line) {
    Mox::ODSLog('>', kModule, line, text, UnicodeString(), nullptr, 0);
}

}  // namespace log_file
