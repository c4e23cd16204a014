#include "spooler/print_keys.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "base/os_error.h"
#include "registry/reg_calls.h"
#include "text/case_fold.h"

namespace host {

namespace {

constexpr std::size_t kHeaderBytes = offsetof(DEVMODEW, dmFields) + sizeof(DEVMODEW::dmFields);

std::u16string Units(const std::vector<BYTE>& data) {
    std::u16string text(data.size() / sizeof(WCHAR), u'\0');
    std::memcpy(text.data(), data.data(), text.size() * sizeof(WCHAR));
    return text;
}

std::u16string TextOf(const RegValue& value) {
    if (value.type != REG_SZ && value.type != REG_EXPAND_SZ) return {};
    std::u16string text = Units(value.data);
    text.resize(std::min(text.find(u'\0'), text.size()));
    return text;
}

// Names of keys have no backslashes: as on Windows, commas stand in their place.
std::optional<RegKey> FindPrinter(const RegKey& printers, std::u16string_view name) {
    std::u16string key_name(name);
    std::ranges::replace(key_name, u'\\', u',');
    if (auto key = printers.FindKey(key_name)) {
        if (key_name == name || SameFileName(PrinterName(*key), name)) return key;
    }
    for (const RegKey& key : printers.Keys()) {
        if (SameFileName(PrinterName(key), name)) return key;
    }
    return std::nullopt;
}

}  // namespace

// These are never destroyed: the spooler may be asked while the process exits.
const RegPath& PrintersPath() {
    static const RegPath& path =
        *new RegPath{u"SYSTEM", u"CurrentControlSet", u"Control", u"Print", u"Printers"};
    return path;
}

const RegPath& DriversPath() {
    static const RegPath& path =
        *new RegPath{u"SYSTEM",       u"CurrentControlSet", u"Control", u"Print",
                     u"Environments", kEnvironment,         u"Drivers", u"Version-3"};
    return path;
}

const RegPath& MonitorsPath() {
    static const RegPath& path =
        *new RegPath{u"SYSTEM", u"CurrentControlSet", u"Control", u"Print", u"Monitors"};
    return path;
}

const RegPath& UserBlocksPath() {
    static const RegPath& path = *new RegPath{u"Printers", u"DevModePerUser"};
    return path;
}

const RegValue* PrintValues::Find(std::u16string_view name, DWORD type) const {
    const auto found = std::ranges::find_if(
        *values_, [name](const RegValue& value) { return SameFileName(value.name, name); });
    return found != values_->end() && found->type == type ? &*found : nullptr;
}

LSTATUS ReadPrintKey(HKEY root, const RegPath& path, const CallRef<void(const RegKey&)>& read) {
    return ReadKey(root, 0, [&](const KeyContext& on) -> LSTATUS {
        read(on.key.FindPath(path).value_or(RegKey::None()));
        return ERROR_SUCCESS;
    });
}

LSTATUS ReadPrinterKey(std::u16string_view printer, const CallRef<void(const RegKey&)>& read) {
    bool found = false;
    const LSTATUS code =
        ReadPrintKey(HKEY_LOCAL_MACHINE, PrintersPath(), [&](const RegKey& printers) {
            const std::optional<RegKey> key = FindPrinter(printers, printer);
            found = key.has_value();
            if (found) read(*key);
        });
    return code == ERROR_SUCCESS && !found ? ERROR_INVALID_PRINTER_NAME : code;
}

std::u16string TextValue(const PrintValues& key, std::u16string_view name) {
    const RegValue* value = key.Find(name, REG_SZ);
    if (value == nullptr) value = key.Find(name, REG_EXPAND_SZ);
    return value == nullptr ? std::u16string() : TextOf(*value);
}

std::u16string PrinterName(const RegKey& key) {
    const std::optional<RegValue> value = key.FindValue(u"Name");
    const std::u16string name = value ? TextOf(*value) : std::u16string();
    return name.empty() ? key.Name() : name;
}

std::vector<std::u16string> TextsValue(const PrintValues& key, std::u16string_view name) {
    std::vector<std::u16string> texts;
    const RegValue* const value = key.Find(name, REG_MULTI_SZ);
    const std::u16string all = value == nullptr ? std::u16string() : Units(value->data);
    for (std::size_t at = 0; at < all.size();) {
        const std::size_t end = std::min(all.find(u'\0', at), all.size());
        if (end == at) break;
        texts.push_back(all.substr(at, end - at));
        at = end + 1;
    }
    return texts;
}

DWORD NumberValue(const PrintValues& key, std::u16string_view name, DWORD fallback) {
    const RegValue* const value = key.Find(name, REG_DWORD);
    if (value == nullptr || value->data.size() != sizeof(DWORD)) return fallback;
    DWORD number;
    std::memcpy(&number, value->data.data(), sizeof number);
    return number;
}

std::vector<BYTE> BlockValue(const PrintValues& key, std::u16string_view name) {
    return BlockOf(key.Find(name, REG_BINARY));
}

std::vector<BYTE> BlockOf(const RegValue* value) {
    if (value == nullptr || value->type != REG_BINARY || value->data.size() < kHeaderBytes)
        return {};
    DEVMODEW header = {};
    std::memcpy(&header, value->data.data(), kHeaderBytes);
    const std::size_t size = BlockSize(&header);
    if (size == 0 || size > value->data.size()) return {};
    return {value->data.begin(), value->data.begin() + static_cast<std::ptrdiff_t>(size)};
}

std::vector<BYTE> UserBlock(std::u16string_view printer) {
    const auto blocks = RegKey(FindRoot(HKEY_CURRENT_USER)).FindPath(UserBlocksPath());
    const std::optional<RegValue> value = blocks ? blocks->FindValue(printer) : std::nullopt;
    return BlockOf(value ? &*value : nullptr);
}

std::size_t BlockSize(const DEVMODEW* block) {
    WORD sizes[2];
    std::memcpy(sizes, reinterpret_cast<const BYTE*>(block) + offsetof(DEVMODEW, dmSize),
                sizeof sizes);
    return sizes[0] < kHeaderBytes ? 0 : std::size_t{sizes[0]} + sizes[1];
}

BOOL Succeeded(LSTATUS code) {
    return code == ERROR_SUCCESS ? TRUE : Fail(static_cast<DWORD>(code));
}

}  // namespace host
