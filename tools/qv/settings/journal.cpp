#include "settings/journal.h"

#include <windows.h>

#include <cstdio>
#include <filesystem>

#include "base/files.h"
#include "base/host.h"
#include "base/json_output.h"
#include "settings/field_value.h"
#include "settings/value_text.h"

namespace qv {

namespace {

constexpr int kLockTries = 500;
constexpr DWORD kLockPauseMilliseconds = 20;

std::filesystem::path PathOf(const std::string& utf8) {
    return std::u8string(utf8.begin(), utf8.end());
}

std::string FileName() {
    return ToUtf8(UnicodeString(FromUtf8(UserDataFolder()) + TEXT("/settings_journal.json")));
}

[[noreturn]] void CannotUse(const std::string& reason) {
    throw Failure("the journal in '" + UserDataFolder() + "' cannot be used: " + reason,
                  ExitCode::kCannotOpen);
}

std::string Now() {
    FILETIME now;
    SYSTEMTIME t = {};
    GetSystemTimeAsFileTime(&now);
    FileTimeToSystemTime(&now, &t);
    char text[64];
    std::snprintf(text, sizeof(text), "%04u-%02u-%02uT%02u:%02u:%02uZ", unsigned{t.wYear},
                  unsigned{t.wMonth}, unsigned{t.wDay}, unsigned{t.wHour}, unsigned{t.wMinute},
                  unsigned{t.wSecond});
    return text;
}

// Nobody else opens the file meanwhile. A program that holds it is done within seconds, or gone.
System::TFileHandle Lock() {
    std::error_code error;
    std::filesystem::create_directories(PathOf(UserDataFolder()), error);
    if (error) CannotUse(error.message());
    const UnicodeString name = FromUtf8(FileName() + ".lock");
    for (int i = 0; i < kLockTries; ++i) {
        System::TFileHandle lock(CreateFileW(name.t_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                             OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (lock) return lock;
        if (GetLastError() != ERROR_SHARING_VIOLATION) CannotUse(SystemText(GetLastError()));
        Sleep(kLockPauseMilliseconds);
    }
    CannotUse("another program holds it");
}

Json FieldsJson(const std::vector<FieldChange>& fields) {
    Json array = Json::array();
    for (const FieldChange& f : fields) {
        array.push_back({{"name", NameOf(*f.field)},
                         {"before", ToValueText(f.before)},
                         {"after", ToValueText(f.after)}});
    }
    return array;
}

Json EntryJson(const JournalEntry& entry) {
    Json printers = Json::array();
    for (const JournalPrinter& p : entry.printers)
        printers.push_back({{"printer", ToValueText(p.name)}, {"fields", FieldsJson(p.fields)}});
    return {{"time", entry.time}, {"command", entry.command}, {"printers", printers}};
}

// What stands in the file is not believed: every throw below means that it is damaged.
UnicodeString ReadValue(const Json& object, const char* key) {
    return FromValueText(object.at(key).get<std::string>()).value();
}

FieldChange ReadField(const Json& object) {
    FieldChange change = {FindField(FromUtf8(object.at("name").get<std::string>())),
                          ReadValue(object, "before"), ReadValue(object, "after")};
    if (change.field == nullptr || !ValueFault(*change.field, change.before).empty())
        throw Failure("a field that cannot be set");
    return change;
}

JournalEntry ReadEntry(const Json& object) {
    JournalEntry entry = {
        object.at("time").get<std::string>(), object.at("command").get<std::string>(), {}};
    for (const Json& printer : object.at("printers")) {
        entry.printers.push_back({ReadValue(printer, "printer"), {}});
        for (const Json& field : printer.at("fields"))
            entry.printers.back().fields.push_back(ReadField(field));
    }
    return entry;
}

std::vector<JournalEntry> ReadEntries() {
    std::error_code error;
    if (!std::filesystem::exists(PathOf(FileName()), error)) return {};
    const std::string bytes = ReadAll(FileName());
    try {
        std::vector<JournalEntry> entries;
        const Json document = Json::parse(bytes);
        for (const Json& object : document.at("entries")) entries.push_back(ReadEntry(object));
        return entries;
    } catch (const std::exception&) {
        throw Failure(
            "'" + FileName() + "' is no journal, or damaged; move it away to go on without it",
            ExitCode::kDamaged);
    }
}

}  // namespace

JournalEntry EntryOf(const std::string& command, const std::vector<PrinterChange>& changes) {
    JournalEntry entry = {Now(), command, {}};
    for (const PrinterChange& change : changes) {
        JournalPrinter printer = {change.printer, {}};
        for (const FieldChange& field : change.fields)
            if (field.IsChange() && !IsLayout(*field.field)) printer.fields.push_back(field);
        if (change.failure.empty() && !printer.fields.empty())
            entry.printers.push_back(std::move(printer));
    }
    return entry;
}

Journal::Journal() : lock_(Lock()) {
    entries = ReadEntries();
}

void Journal::Save() const {
    Json list = Json::array();
    const std::size_t first = entries.size() > kMostEntries ? entries.size() - kMostEntries : 0;
    for (std::size_t i = first; i < entries.size(); ++i) list.push_back(EntryJson(entries[i]));
    const Json document = {{"schema", kJsonSchema}, {"entries", list}};
    WriteWhole(FileName(), document.dump(1, ' ', false, Json::error_handler_t::replace) + "\n");
}

}  // namespace qv
