// Printers: open, read, list, change.
#include <memory>

#include "registry/reg_calls.h"
#include "spooler/print_keys.h"
#include "spooler/printer_handle.h"
#include "spooler/record_buffer.h"
#include "text/case_fold.h"
#include "text/host_text.h"

using namespace host;

namespace {

using Printers = RecordBuffer<PRINTER_INFO_2W>;

struct TextRow {
    LPWSTR PRINTER_INFO_2W::*member;
    const WCHAR* name;
};

// The name is not among these values, because it is the name of the key.
constexpr TextRow kTexts[] = {
    {&PRINTER_INFO_2W::pShareName, u"Share Name"},
    {&PRINTER_INFO_2W::pPortName, u"Port"},
    {&PRINTER_INFO_2W::pDriverName, u"Printer Driver"},
    {&PRINTER_INFO_2W::pComment, u"Description"},
    {&PRINTER_INFO_2W::pLocation, u"Location"},
    {&PRINTER_INFO_2W::pSepFile, u"Separator File"},
    {&PRINTER_INFO_2W::pPrintProcessor, u"Print Processor"},
    {&PRINTER_INFO_2W::pDatatype, u"Datatype"},
    {&PRINTER_INFO_2W::pParameters, u"Parameters"},
};

struct NumberRow {
    DWORD PRINTER_INFO_2W::*member;
    const WCHAR* name;
    bool is_set_by_caller;
};

constexpr NumberRow kNumbers[] = {
    {&PRINTER_INFO_2W::Attributes, u"Attributes", true},
    {&PRINTER_INFO_2W::Priority, u"Priority", true},
    {&PRINTER_INFO_2W::DefaultPriority, u"Default Priority", true},
    {&PRINTER_INFO_2W::StartTime, u"StartTime", true},
    {&PRINTER_INFO_2W::UntilTime, u"UntilTime", true},
    {&PRINTER_INFO_2W::Status, u"Status", false},
};

constexpr WCHAR kDefaultBlock[] = u"Default DevMode";
constexpr DWORD kGrantedRights =
    PRINTER_ALL_ACCESS | GENERIC_READ | GENERIC_WRITE | GENERIC_EXECUTE | GENERIC_ALL | 0x02020000;
constexpr DWORD kAdministerRights = PRINTER_ACCESS_ADMINISTER | GENERIC_WRITE | GENERIC_ALL;

void AddPrinter(const RegKey& key, Printers& printers) {
    const PrintValues values(key);
    PRINTER_INFO_2W& record = printers.Add();
    for (const NumberRow& row : kNumbers) record.*row.member = NumberValue(values, row.name);
    record.cJobs = CountJobs(key);
    const std::u16string name = TextValue(values, u"Name");
    printers.Text(&PRINTER_INFO_2W::pPrinterName, name.empty() ? key.Name() : name);
    for (const TextRow& row : kTexts) printers.Text(row.member, TextValue(values, row.name));
    printers.Block(&PRINTER_INFO_2W::pDevMode, BlockValue(values, kDefaultBlock));
}

// A user without a block of this printer gets none, even when the printer has a default.
BOOL GetUserBlock(const OpenPrinter& printer, LPBYTE buffer, DWORD size, LPDWORD needed) {
    std::vector<BYTE> block;
    const LSTATUS code =
        ReadPrinterKey(printer.Key(), [&](const RegKey&) { block = UserBlock(printer.Name()); });
    if (code != ERROR_SUCCESS) return Succeeded(code);
    RecordBuffer<PRINTER_INFO_9W> records;
    records.Add();
    records.Block(&PRINTER_INFO_9W::pDevMode, std::move(block));
    return records.Deliver(buffer, size, needed, nullptr);
}

// Stores the user's block; null removes it.
LSTATUS SetUserBlock(const OpenPrinter& printer, const DEVMODEW* block) {
    const std::size_t size = block == nullptr ? 0 : BlockSize(block);
    if (block != nullptr && size == 0) return ERROR_INVALID_PARAMETER;
    const LSTATUS found = ReadPrinterKey(printer.Key(), [](const RegKey&) {});
    if (found != ERROR_SUCCESS) return found;
    return ChangeKey(HKEY_CURRENT_USER, 0, [&](const KeyContext& on) -> LSTATUS {
        const RegPath& path = UserBlocksPath();
        if (block == nullptr) {
            const std::optional<RegKey> blocks = on.key.FindPath(path);
            if (blocks) blocks->RemoveValue(printer.Name());
        } else {
            const auto* bytes = reinterpret_cast<const BYTE*>(block);
            on.key.MakePath(path).SetValue(printer.Name(), REG_BINARY, std::span(bytes, size));
        }
        return ERROR_SUCCESS;
    });
}

void SetText(const RegKey& key, const WCHAR* name, std::u16string_view text) {
    const std::u16string ended(text);
    const auto* bytes = reinterpret_cast<const BYTE*>(ended.c_str());
    key.SetValue(name, REG_SZ, std::span(bytes, (ended.size() + 1) * sizeof(WCHAR)));
}

void SetNumber(const RegKey& key, const WCHAR* name, DWORD number) {
    const auto* bytes = reinterpret_cast<const BYTE*>(&number);
    key.SetValue(name, REG_DWORD, std::span(bytes, sizeof number));
}

LSTATUS CheckPrinter(const OpenPrinter& printer, const PRINTER_INFO_2W& record,
                     const RegKey& machine) {
    if (!printer.MayAdminister()) return ERROR_ACCESS_DENIED;
    if (record.pPrinterName != nullptr && !SameFileName(record.pPrinterName, printer.Name()) &&
        !SameFileName(record.pPrinterName, printer.Key())) {
        return ERROR_NOT_SUPPORTED;
    }
    if (record.pDevMode != nullptr && BlockSize(record.pDevMode) == 0) {
        return ERROR_INVALID_PARAMETER;
    }
    if (record.pDriverName == nullptr) return ERROR_SUCCESS;
    const std::optional<RegKey> installed = machine.FindPath(DriversPath());
    return installed && installed->FindKey(record.pDriverName) ? ERROR_SUCCESS
                                                               : ERROR_UNKNOWN_PRINTER_DRIVER;
}

// A null text or block leaves the stored value as it is.
LSTATUS SetPrinter(const OpenPrinter& printer, const PRINTER_INFO_2W& record) {
    return ChangeKey(HKEY_LOCAL_MACHINE, 0, [&](const KeyContext& on) -> LSTATUS {
        const std::optional<RegKey> printers = on.key.FindPath(PrintersPath());
        const auto key = printers ? printers->FindKey(printer.Key()) : std::nullopt;
        if (!key) return ERROR_INVALID_PRINTER_NAME;
        const LSTATUS code = CheckPrinter(printer, record, on.key);
        if (code != ERROR_SUCCESS) return code;
        for (const TextRow& row : kTexts) {
            const LPCWSTR text = record.*row.member;
            if (text != nullptr) SetText(*key, row.name, text);
        }
        for (const NumberRow& row : kNumbers) {
            if (row.is_set_by_caller) SetNumber(*key, row.name, record.*row.member);
        }
        if (record.pDevMode == nullptr) return ERROR_SUCCESS;
        const auto* bytes = reinterpret_cast<const BYTE*>(record.pDevMode);
        key->SetValue(kDefaultBlock, REG_BINARY, std::span(bytes, BlockSize(record.pDevMode)));
        return ERROR_SUCCESS;
    });
}

}  // namespace

BOOL OpenPrinterW(LPWSTR name, LPHANDLE printer, LPPRINTER_DEFAULTSW defaults) {
    if (printer == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    *printer = nullptr;
    const DWORD access = defaults == nullptr ? DWORD{PRINTER_ACCESS_USE} : defaults->DesiredAccess;
    if ((access & ~kGrantedRights) != 0) return Fail(ERROR_ACCESS_DENIED);
    std::unique_ptr<OpenPrinter> open;
    const LSTATUS code = ReadPrinterKey(ViewOf(name), [&](const RegKey& key) {
        open = std::make_unique<OpenPrinter>(key.Name(), PrinterName(key),
                                             (access & kAdministerRights) != 0);
    });
    if (code != ERROR_SUCCESS) return Succeeded(code);
    *printer = OpenHandle(std::move(open));
    return *printer != nullptr ? TRUE : FALSE;
}

BOOL ClosePrinter(HANDLE printer) {
    const HandlePin<OpenPrinter> open(printer);
    return open && CloseOpenHandle(printer) ? TRUE : FALSE;
}

BOOL GetPrinterW(HANDLE printer, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed) {
    const HandlePin<OpenPrinter> open(printer);
    if (!open) return FALSE;
    if (!BufferIsGiven(buffer, size, needed)) return Fail(ERROR_INVALID_PARAMETER);
    if (level == 9) return GetUserBlock(*open, buffer, size, needed);
    if (level != 2) return Fail(ERROR_INVALID_LEVEL);
    Printers printers;
    const LSTATUS code =
        ReadPrinterKey(open->Key(), [&](const RegKey& key) { AddPrinter(key, printers); });
    return Succeeded(code) ? printers.Deliver(buffer, size, needed, nullptr) : FALSE;
}

BOOL SetPrinterW(HANDLE printer, DWORD level, LPBYTE record, DWORD command) {
    const HandlePin<OpenPrinter> open(printer);
    if (!open) return FALSE;
    if (level != 2 && level != 9) return Fail(ERROR_INVALID_LEVEL);
    if (record == nullptr || command != 0) return Fail(ERROR_INVALID_PARAMETER);
    if (level == 2) {
        return Succeeded(SetPrinter(*open, *reinterpret_cast<const PRINTER_INFO_2W*>(record)));
    }
    return Succeeded(
        SetUserBlock(*open, reinterpret_cast<const PRINTER_INFO_9W*>(record)->pDevMode));
}

BOOL EnumPrintersW(DWORD flags, LPWSTR, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed,
                   LPDWORD count) {
    if (!BufferIsGiven(buffer, size, needed) || count == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if (level != 2) return Fail(ERROR_INVALID_LEVEL);
    if ((flags & ~(PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS)) != 0) {
        return Fail(ERROR_INVALID_FLAGS);
    }
    Printers printers;
    if ((flags & PRINTER_ENUM_LOCAL) != 0) {
        const LSTATUS code =
            ReadPrintKey(HKEY_LOCAL_MACHINE, PrintersPath(), [&](const RegKey& all) {
                for (const RegKey& key : all.Keys()) AddPrinter(key, printers);
            });
        if (code != ERROR_SUCCESS) return Succeeded(code);
    }
    return printers.Deliver(buffer, size, needed, count);
}
