#include "root/name_table.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <charconv>
#include <string>

#include "base/os_error.h"
#include "root/runtime_directory.h"
#include "text/case_fold.h"

namespace host {

namespace {

constexpr std::size_t kMostBytes = std::size_t{32} << 20;

void AppendHex(std::string& text, unsigned int value, std::size_t digits) {
    char buffer[8];
    const char* const end = std::to_chars(buffer, buffer + sizeof buffer, value, 16).ptr;
    const auto length = static_cast<std::size_t>(end - buffer);
    text.append(digits > length ? digits - length : 0, '0').append(buffer, length);
}

// Reads the whole of `text` as one hexadecimal number.
bool ParseHex(std::string_view text, DWORD& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    return error == std::errc() && end == text.data() + text.size();
}

// Reads a line: number, count, and four digits for each unit of the name. A damaged line is
// skipped.
void ReadLine(std::string_view line, NameTable& table) {
    const std::size_t count_at = line.find(' ');
    const std::size_t name_at = count_at == line.npos ? line.npos : line.find(' ', count_at + 1);
    if (name_at == line.npos) return;
    DWORD number = 0;
    NamedNumber entry;
    if (!ParseHex(line.substr(0, count_at), number) || number < kFirstNamed || number > 0xFFFF ||
        !ParseHex(line.substr(count_at + 1, name_at - count_at - 1), entry.count)) {
        return;
    }
    const std::string_view units = line.substr(name_at + 1);
    if (units.size() % 4 != 0 || units.size() > kLongestAtomName * 4) return;
    for (std::size_t i = 0; i < units.size(); i += 4) {
        DWORD unit = 0;
        if (!ParseHex(units.substr(i, 4), unit)) return;
        entry.name += static_cast<WCHAR>(unit);
    }
    table.try_emplace(static_cast<ATOM>(number), std::move(entry));
}

std::string ReadAll(int folder, const char* name) {
    const UniqueFd fd(openat(folder, name, O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat info;
    if (!fd || fstat(fd.get(), &info) != 0 || !S_ISREG(info.st_mode)) return std::string();
    std::string bytes(std::min(static_cast<std::size_t>(info.st_size), kMostBytes), '\0');
    const ssize_t count = pread(fd.get(), bytes.data(), bytes.size(), 0);
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
}

NameTable Load(int folder, const char* kind) {
    NameTable table;
    const std::string bytes = ReadAll(folder, kind);
    std::string_view rest = bytes;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        ReadLine(rest.substr(0, end), table);
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return table;
}

// Replaces the file in one step. When the process is killed meanwhile, the old file stays.
DWORD Store(int folder, const char* kind, const NameTable& table) {
    std::string text;
    for (const auto& [number, entry] : table) {
        AppendHex(text, number, 4);
        text += ' ';
        AppendHex(text, entry.count, 1);
        text += ' ';
        for (const WCHAR unit : entry.name) AppendHex(text, unit, 4);
        text += '\n';
    }
    const std::string draft = std::string(kind) + ".new";
    const UniqueFd fd(
        openat(folder, draft.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
    const bool stored =
        fd && write(fd.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
        renameat(folder, draft.c_str(), folder, kind) == 0;
    return stored ? NO_ERROR : ErrorFromErrno(errno);
}

}  // namespace

DWORD WithNameTable(const char* kind, const std::function<bool(NameTable&)>& change) {
    const UniqueFd folder = OpenRuntimeDirectory("names");
    const UniqueFd lock = folder ? LockRuntimeDirectory(folder.get()) : UniqueFd();
    if (!lock) return ErrorFromErrno(errno);
    NameTable table = Load(folder.get(), kind);
    return change(table) ? Store(folder.get(), kind, table) : NO_ERROR;
}

ATOM FindName(const NameTable& table, WideView name) {
    for (const auto& [number, entry] : table) {
        if (SameFileName(entry.name, name)) return number;
    }
    return 0;
}

ATOM AddName(NameTable& table, WideView name) {
    ATOM number = FindName(table, name);
    if (number == 0) {
        for (number = kFirstNamed; number != 0 && table.contains(number); ++number) {
        }
        if (number == 0) return 0;
        table[number].name = name;
    }
    ++table[number].count;
    return number;
}

}  // namespace host
