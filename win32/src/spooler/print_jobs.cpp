// Print jobs. Each is a key Jobs\ID below its printer's key, with the ID in decimal. Its values
// have the names of the record's members without the "p": Document, UserName, Status (a number),
// and so on. The text of pStatus is StatusText. Submitted holds the 16 bytes of a SYSTEMTIME.
#include <algorithm>
#include <charconv>
#include <cstring>

#include "spooler/print_keys.h"
#include "spooler/printer_handle.h"
#include "spooler/record_buffer.h"

using namespace host;

namespace {

struct Job {
    DWORD id;
    DWORD position;  // in the queue, from 1 on
    PrintValues values;
};

// The number in the name of a job's key; 0 for any other name.
DWORD JobId(const std::u16string& name) {
    std::string digits;
    for (const WCHAR unit : name) digits += unit < 0x80 ? static_cast<char>(unit) : '?';
    DWORD id = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), id);
    return error == std::errc() && end == digits.data() + digits.size() ? id : 0;
}

// The jobs of a printer, in the order of the queue.
std::vector<Job> JobsOf(const RegKey& printer) {
    std::vector<Job> jobs;
    const std::optional<RegKey> keys = printer.FindKey(u"Jobs");
    if (!keys) return jobs;
    for (const RegKey& key : keys->Keys()) {
        const DWORD id = JobId(key.Name());
        if (id == 0) continue;
        PrintValues values(key);
        const DWORD position = NumberValue(values, u"Position", ~DWORD{0});
        jobs.push_back({id, position, std::move(values)});
    }
    std::ranges::sort(jobs, [](const Job& a, const Job& b) {
        return a.position != b.position ? a.position < b.position : a.id < b.id;
    });
    for (std::size_t i = 0; i < jobs.size(); ++i) jobs[i].position = static_cast<DWORD>(i + 1);
    return jobs;
}

// What a job's record tells of its printer.
struct JobPrinter {
    explicit JobPrinter(const RegKey& key)
        : name(PrinterName(key)), driver(TextValue(PrintValues(key), u"Printer Driver")) {}
    std::u16string name, driver;
};

// Fills the members that both levels of record have.
template <class Record>
void AddCommon(const JobPrinter& printer, const Job& job, RecordBuffer<Record>& records) {
    Record& record = records.Add();
    record.JobId = job.id;
    record.Status = NumberValue(job.values, u"Status");
    record.Priority = NumberValue(job.values, u"Priority", 1);
    record.Position = job.position;
    record.TotalPages = NumberValue(job.values, u"TotalPages");
    record.PagesPrinted = NumberValue(job.values, u"PagesPrinted");
    const RegValue* const submitted = job.values.Find(u"Submitted", REG_BINARY);
    if (submitted != nullptr && submitted->data.size() == sizeof(SYSTEMTIME)) {
        std::memcpy(&record.Submitted, submitted->data.data(), sizeof(SYSTEMTIME));
    }
    records.Text(&Record::pPrinterName, printer.name);
    records.Text(&Record::pMachineName, TextValue(job.values, u"MachineName"));
    records.Text(&Record::pUserName, TextValue(job.values, u"UserName"));
    records.Text(&Record::pDocument, TextValue(job.values, u"Document"));
    records.Text(&Record::pDatatype, TextValue(job.values, u"Datatype"));
    records.Text(&Record::pStatus, TextValue(job.values, u"StatusText"));
}

void AddJob(const JobPrinter& printer, const Job& job, RecordBuffer<JOB_INFO_1W>& records) {
    AddCommon(printer, job, records);
}

void AddJob(const JobPrinter& printer, const Job& job, RecordBuffer<JOB_INFO_2W>& records) {
    AddCommon(printer, job, records);
    JOB_INFO_2W& record = records.Last();
    record.StartTime = NumberValue(job.values, u"StartTime");
    record.UntilTime = NumberValue(job.values, u"UntilTime");
    record.Size = NumberValue(job.values, u"Size");
    record.Time = NumberValue(job.values, u"Time");
    records.Text(&JOB_INFO_2W::pNotifyName, TextValue(job.values, u"NotifyName"));
    records.Text(&JOB_INFO_2W::pPrintProcessor, TextValue(job.values, u"PrintProcessor"));
    records.Text(&JOB_INFO_2W::pParameters, TextValue(job.values, u"Parameters"));
    const std::u16string driver = TextValue(job.values, u"DriverName");
    records.Text(&JOB_INFO_2W::pDriverName, driver.empty() ? printer.driver : driver);
    records.Block(&JOB_INFO_2W::pDevMode, BlockValue(job.values, u"DevMode"));
}

template <class Record>
BOOL GetOne(const OpenPrinter& printer, DWORD id, LPBYTE buffer, DWORD size, LPDWORD needed) {
    RecordBuffer<Record> records;
    bool found = false;
    const LSTATUS code = ReadPrinterKey(printer.Key(), [&](const RegKey& key) {
        for (const Job& job : JobsOf(key)) {
            if (found || job.id != id) continue;
            AddJob(JobPrinter(key), job, records);
            found = true;
        }
    });
    if (code != ERROR_SUCCESS) return Succeeded(code);
    return found ? records.Deliver(buffer, size, needed, nullptr) : Fail(ERROR_INVALID_PARAMETER);
}

template <class Record>
BOOL GetSome(const OpenPrinter& printer, DWORD first, DWORD limit, LPBYTE buffer, DWORD size,
             LPDWORD needed, LPDWORD count) {
    RecordBuffer<Record> records;
    const LSTATUS code = ReadPrinterKey(printer.Key(), [&](const RegKey& key) {
        const std::vector<Job> jobs = JobsOf(key);
        const JobPrinter printer_facts(key);
        for (std::size_t i = first; i < jobs.size() && i - first < limit; ++i) {
            AddJob(printer_facts, jobs[i], records);
        }
    });
    return Succeeded(code) ? records.Deliver(buffer, size, needed, count) : FALSE;
}

}  // namespace

DWORD host::CountJobs(const RegKey& printer) {
    const std::optional<RegKey> keys = printer.FindKey(u"Jobs");
    if (!keys) return 0;
    const std::vector<RegKey> jobs = keys->Keys();
    return static_cast<DWORD>(
        std::ranges::count_if(jobs, [](const RegKey& job) { return JobId(job.Name()) != 0; }));
}

BOOL EnumJobsW(HANDLE printer, DWORD first, DWORD limit, DWORD level, LPBYTE buffer, DWORD size,
               LPDWORD needed, LPDWORD count) {
    const HandlePin<OpenPrinter> open(printer);
    if (!open) return FALSE;
    if (!BufferIsGiven(buffer, size, needed) || count == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if (level == 1) return GetSome<JOB_INFO_1W>(*open, first, limit, buffer, size, needed, count);
    if (level == 2) return GetSome<JOB_INFO_2W>(*open, first, limit, buffer, size, needed, count);
    return Fail(ERROR_INVALID_LEVEL);
}

BOOL GetJobW(HANDLE printer, DWORD job, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed) {
    const HandlePin<OpenPrinter> open(printer);
    if (!open) return FALSE;
    if (!BufferIsGiven(buffer, size, needed)) return Fail(ERROR_INVALID_PARAMETER);
    if (level == 1) return GetOne<JOB_INFO_1W>(*open, job, buffer, size, needed);
    if (level == 2) return GetOne<JOB_INFO_2W>(*open, job, buffer, size, needed);
    return Fail(ERROR_INVALID_LEVEL);
}
