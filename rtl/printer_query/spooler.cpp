#include "printer_query/spooler.h"

#include <vector>

#include "printer_query/printer_handle.h"
#include "printer_query/record_result.h"

using Mox::GetSysError;
using Mox::LogHere;
using printer_query::CodeOf;
using printer_query::HandleNumber;
using printer_query::QueryRecords;
using printer_query::QueryTwice;
using printer_query::TAnswer;
using printer_query::TQuery;
using printer_query::TQueryTexts;
using printer_query::Writable;
using Sysutils::UnicodePrintf;

namespace {

// The buffer of a query whose answer is a text. It has `needed` bytes; the last whole unit is the
// terminator.
class TTextBuffer {
  public:
    LPBYTE Reserve(DWORD needed) {
        bytes_ = needed;
        units_.assign(needed / sizeof(WCHAR) + 1, 0);
        return reinterpret_cast<LPBYTE>(units_.data());
    }
    UnicodeString Text() const {
        return bytes_ < 2 * sizeof(WCHAR)
                   ? UnicodeString()
                   : UnicodeString(units_.data(), bytes_ / sizeof(WCHAR) - 1);
    }

  private:
    DWORD bytes_ = 0;
    std::vector<WCHAR> units_;
};

}  // namespace

UnicodeString GetPrinterDriverDir() {
    TTextBuffer buffer;
    const TQuery query = QueryTwice(
        ERROR_INSUFFICIENT_BUFFER,
        [](LPBYTE bytes, DWORD size, DWORD* needed) {
            return CodeOf(GetPrinterDriverDirectoryW(nullptr, nullptr, 1, bytes, size, needed));
        },
        [&](DWORD needed) {
            LogHere('i', UnicodePrintf(TEXT("[GetPrinterDriverDirectory] needed=%lu"), needed));
            return buffer.Reserve(needed);
        });
    if (query.answer == TAnswer::SizeFailed) {
        LogHere('X', UnicodePrintf(
                         TEXT("[GetPrinterDriverDirectory] GetPrinterDriverDirectory() failed: %s"),
                         GetSysError(query.code, true)));
    }
    return query.answer == TAnswer::Filled ? buffer.Text() : UnicodeString();
}

TW32StructData<PRINTER_INFO_2W> GetPrinterInfo2(HANDLE printer) {
    constexpr TQueryTexts kTexts = {
        TEXT("[GetPrinterInfo2(x%X)] GetPrinter() raised unexpected error: %s"),
        TEXT("[GetPrinterInfo2(x%X)] GetPrinter() failed: %s")};
    const auto call = [printer](LPBYTE buffer, DWORD size, DWORD* needed, DWORD* /*count*/) {
        return GetPrinterW(printer, 2, buffer, size, needed);
    };
    return QueryRecords<PRINTER_INFO_2W>(1, kTexts, call, HandleNumber(printer));
}

TW32StructData<PRINTER_INFO_2W> GetPrinterInfo2(UnicodeString name) {
    const System::TPrinterHandle printer = printer_query::OpenNamedPrinter(name, nullptr);
    if (printer) return GetPrinterInfo2(printer.Get());
    TW32StructData<PRINTER_INFO_2W> result;
    const DWORD code = CodeOf(FALSE);
    result.SetErrorCode(code);
    LogHere('X', UnicodePrintf(TEXT("[GetPrinterInfo2(\"%s\")] OpenPrinter() failed: %s"), name,
                               GetSysError(code, true)));
    return result;
}

TW32StructData<PRINTER_INFO_2W> GetInstalledPrintersInfo2() {
    constexpr TQueryTexts kTexts = {
        TEXT("[GetInstalledPrintersInfo2()] EnumPrintersW(NULL) failed: %s"),
        TEXT("[GetInstalledPrintersInfo2()] EnumPrintersW() failed: %s")};
    const auto call = [](LPBYTE buffer, DWORD size, DWORD* needed, DWORD* count) {
        constexpr DWORD kWhich = PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS;
        return EnumPrintersW(kWhich, nullptr, 2, buffer, size, needed, count);
    };
    return QueryRecords<PRINTER_INFO_2W>(0, kTexts, call);
}

TW32StructData<DRIVER_INFO_3W> GetInstalledPrinterDrivers() {
    constexpr TQueryTexts kTexts = {
        TEXT("[GetInstalledPrinterDrivers()] EnumPrinterDrivers(NULL) failed: %s"),
        TEXT("[GetInstalledPrinterDrivers()] EnumPrinterDrivers() failed: %s")};
    const auto call = [](LPBYTE buffer, DWORD size, DWORD* needed, DWORD* count) {
        return EnumPrinterDriversW(nullptr, nullptr, 3, buffer, size, needed, count);
    };
    return QueryRecords<DRIVER_INFO_3W>(0, kTexts, call);
}

TW32StructData<JOB_INFO_2W> GetJobInfo2(HANDLE printer, DWORD jobId) {
    constexpr TQueryTexts kTexts = {TEXT("[GetJobInfo(x%X,%d)] Unexpected GetJob(NULL) result: %s"),
                                    TEXT("[GetJobInfo(x%X,%d)] GetJob() failed: %s")};
    const auto call = [=](LPBYTE buffer, DWORD size, DWORD* needed, DWORD* /*count*/) {
        return GetJobW(printer, jobId, 2, buffer, size, needed);
    };
    return QueryRecords<JOB_INFO_2W>(1, kTexts, call, HandleNumber(printer), jobId);
}

TW32StructData<JOB_INFO_1W> GetPrintersJobs(HANDLE printer, DWORD count) {
    constexpr TQueryTexts kTexts = {TEXT("[GetPrintersJobs] EnumJobsW(NULL) failed: %s"),
                                    TEXT("[GetPrintersJobs] EnumJobsW() failed: %s")};
    const auto call = [=](LPBYTE buffer, DWORD size, DWORD* needed, DWORD* returned) {
        return EnumJobsW(printer, 0, count, 1, buffer, size, needed, returned);
    };
    return QueryRecords<JOB_INFO_1W>(0, kTexts, call);
}

namespace {

// Copies one monitor into a holder of its own, with its three strings behind the record.
TW32StructData<MONITOR_INFO_2W> SelfContained(const MONITOR_INFO_2W& monitor) {
    const UnicodeString texts[] = {monitor.pName, monitor.pEnvironment, monitor.pDLLName};
    std::size_t units = 0;
    for (const UnicodeString& text : texts) units += static_cast<std::size_t>(text.Length()) + 1;

    printer_query::TRecordResult<MONITOR_INFO_2W> result;
    const std::size_t size = sizeof(MONITOR_INFO_2W) + units * sizeof(WCHAR);
    result.Reserve(static_cast<DWORD>(size), 1);
    MONITOR_INFO_2W& copy = result[0];
    auto* place = reinterpret_cast<WCHAR*>(result.Bytes() + sizeof(MONITOR_INFO_2W));
    LPWSTR* const targets[] = {&copy.pName, &copy.pEnvironment, &copy.pDLLName};
    for (std::size_t i = 0; i < std::size(texts); ++i) {
        *targets[i] = place;
        const std::size_t length = static_cast<std::size_t>(texts[i].Length());
        std::memcpy(place, texts[i].t_str(), length * sizeof(WCHAR));
        place += length + 1;
    }
    return result;
}

}  // namespace

TW32StructData<MONITOR_INFO_2W> GetMonitors(const UnicodeString& name) {
    constexpr TQueryTexts kTexts = {TEXT("[GetMonitors()] EnumMonitorsW(NULL) failed: %s"),
                                    TEXT("[GetMonitors()] EnumMonitorsW() failed: %s")};
    const auto call = [](LPBYTE buffer, DWORD size, DWORD* needed, DWORD* count) {
        return EnumMonitorsW(nullptr, 2, buffer, size, needed, count);
    };
    const TW32StructData<MONITOR_INFO_2W> all = QueryRecords<MONITOR_INFO_2W>(0, kTexts, call);
    if (name.Length() == 0) return all;
    for (int i = 0; i < all.Count(); ++i) {
        if (UnicodeString(all[i].pName) == name) return SelfContained(all[i]);
    }
    return all;
}

UnicodeString ReadPrinterData(HANDLE printer, UnicodeString valueName) {
    TTextBuffer buffer;
    const TQuery query = QueryTwice(
        ERROR_MORE_DATA,
        [&](LPBYTE bytes, DWORD size, DWORD* needed) {
            DWORD type = 0;
            return GetPrinterDataW(printer, Writable(valueName), &type, bytes, size, needed);
        },
        [&](DWORD needed) { return buffer.Reserve(needed); });
    if (query.answer == TAnswer::Filled) return buffer.Text();
    // The error code is the call's result. The last error may be another one.
    LogHere('X', UnicodePrintf(TEXT("GetPrinterDataW(Key=%s): %s"), valueName,
                               GetSysError(query.code, true)));
    return UnicodeString();
}
