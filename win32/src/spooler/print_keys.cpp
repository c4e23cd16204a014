#include "spooler/print_keys.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "base/os_error.h"
#include "registry/reg_calls.h"

namespace host {

namespace {

constexpr std::size_t kHeaderBytes = offsetof(DEVMODEW, dmFields) + sizeof(DEVMODEW::dmFields);

const RegValue* ValueOf(const RegKey& key, std::u16string_view name, DWORD type) {
    const RegValue* const value = key.FindValue(name);
    return value != nullptr && value->type == type ? value : nullptr;
}

std::u16string Units(const std::vector<BYTE>& data) {
    std::u16string text(data.size() / sizeof(WCHAR), u'\0');
    std::memcpy(text.data(), data.data(), text.size() * sizeof(WCHAR));
    return text;
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

LSTATUS ReadPrintKey(HKEY root, const RegPath& path, const CallRef<void(const RegKey&)>& read) {
    return ReadKey(root, 0, [&](const KeyContext& on) -> LSTATUS {
        const RegKey* const key = on.hive.Root().FindPath(path);
        static const RegKey& none = *new RegKey(u"");
        read(key != nullptr ? *key : none);
        return ERROR_SUCCESS;
    });
}

LSTATUS ReadPrinterKey(std::u16string_view printer, const CallRef<void(const RegKey&)>& read) {
    bool found = false;
    const LSTATUS code =
        ReadPrintKey(HKEY_LOCAL_MACHINE, PrintersPath(), [&](const RegKey& printers) {
            const RegKey* const key = printers.FindKey(printer);
            found = key != nullptr;
            if (found) read(*key);
        });
    return code == ERROR_SUCCESS && !found ? ERROR_INVALID_PRINTER_NAME : code;
}

std::u16string TextValue(const RegKey& key, std::u16string_view name) {
    const RegValue* value = ValueOf(key, name, REG_SZ);
    if (value == nullptr) value = ValueOf(key, name, REG_EXPAND_SZ);
    if (value == nullptr) return {};
    std::u16string text = Units(value->data);
    text.resize(std::min(text.find(u'\0'), text.size()));
    return text;
}

std::vector<std::u16string> TextsValue(const RegKey& key, std::u16string_view name) {
    std::vector<std::u16string> texts;
    const RegValue* const value = ValueOf(key, name, REG_MULTI_SZ);
    const std::u16string all = value == nullptr ? std::u16string() : Units(value->data);
    for (std::size_t at = 0; at < all.size();) {
        const std::size_t end = std::min(all.find(u'\0', at), all.size());
        if (end == at) break;
        texts.push_back(all.substr(at, end - at));
        at = end + 1;
    }
    return texts;
}

DWORD NumberValue(const RegKey& key, std::u16string_view name, DWORD fallback) {
    const RegValue* const value = ValueOf(key, name, REG_DWORD);
    if (value == nullptr || value->data.size() != sizeof(DWORD)) return fallback;
    DWORD number;
    std::memcpy(&number, value->data.data(), sizeof number);
    return number;
}

std::vector<BYTE> BlockValue(const RegKey& key, std::u16string_view name) {
    const RegValue* const value = ValueOf(key, name, REG_BINARY);
    if (value == nullptr || value->data.size() < kHeaderBytes) return {};
    DEVMODEW header = {};
    std::memcpy(&header, value->data.data(), kHeaderBytes);
    const std::size_t size = BlockSize(&header);
    if (size == 0 || size > value->data.size()) return {};
    return {value->data.begin(), value->data.begin() + static_cast<std::ptrdiff_t>(size)};
}

LSTATUS ReadUserBlock(std::u16string_view printer, std::vector<BYTE>& block) {
    return ReadPrintKey(HKEY_CURRENT_USER, UserBlocksPath(),
                        [&](const RegKey& blocks) { block = BlockValue(blocks, printer); });
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
