#include "reg_tree.h"

#include <algorithm>

#include "host_path.h"

namespace host {

std::vector<std::unique_ptr<RegKey>>::const_iterator RegKey::Place(std::u16string_view name) const {
    return std::lower_bound(keys_.begin(), keys_.end(), name,
                            [](const std::unique_ptr<RegKey>& key, std::u16string_view wanted) {
                                return CompareFolded(key->name_, wanted) < 0;
                            });
}

RegKey* RegKey::FindKey(std::u16string_view name) const {
    const auto at = Place(name);
    return at != keys_.end() && EqualFolded((*at)->name_, name) ? at->get() : nullptr;
}

RegKey* RegKey::FindPath(std::span<const std::u16string> path) {
    RegKey* key = this;
    for (const std::u16string& name : path) {
        key = key->FindKey(name);
        if (key == nullptr) return nullptr;
    }
    return key;
}

RegKey& RegKey::MakePath(std::span<const std::u16string> path) {
    RegKey* key = this;
    for (const std::u16string& name : path) {
        RegKey* next = key->FindKey(name);
        if (next == nullptr) {
            next = key->keys_.insert(key->Place(name), std::make_unique<RegKey>(name))->get();
        }
        key = next;
    }
    return *key;
}

bool RegKey::RemoveKey(std::u16string_view name) {
    const auto at = Place(name);
    if (at == keys_.end() || !EqualFolded((*at)->name_, name)) return false;
    keys_.erase(at);
    return true;
}

const RegValue* RegKey::FindValue(std::u16string_view name) const {
    const auto at = values_by_name_.find(name);
    return at == values_by_name_.end() ? nullptr : at->second;
}

bool RegKey::SetValue(std::u16string_view name, DWORD type, std::span<const BYTE> data) {
    const auto at = values_by_name_.find(name);
    if (at == values_by_name_.end()) {
        values_.push_back(std::make_unique<RegValue>(
            RegValue{std::u16string(name), type, {data.begin(), data.end()}}));
        values_by_name_.emplace(values_.back()->name, values_.back().get());
        return true;
    }
    RegValue& value = *at->second;
    if (value.type == type && std::ranges::equal(value.data, data)) return false;
    value.type = type;
    value.data.assign(data.begin(), data.end());
    return true;
}

bool RegKey::RemoveValue(std::u16string_view name) {
    const auto at = values_by_name_.find(name);
    if (at == values_by_name_.end()) return false;
    const RegValue* value = at->second;
    values_by_name_.erase(at);
    std::erase_if(values_, [value](const auto& one) { return one.get() == value; });
    return true;
}

void RegKey::Clear() {
    keys_.clear();
    values_by_name_.clear();
    values_.clear();
}

LSTATUS SplitKeyPath(std::u16string_view text, RegPath& path) {
    if (text.starts_with(u'\\')) return ERROR_BAD_PATHNAME;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(u'\\'), text.size());
        if (end > 0) path.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return ERROR_SUCCESS;
}

LSTATUS CheckKeyName(std::u16string_view name) {
    if (name.size() > kMaxKeyName) return ERROR_INVALID_PARAMETER;
    if (name.find_first_of(u"\r\n") != name.npos) return ERROR_INVALID_NAME;
    std::string utf8;
    return NameToUtf8(name, utf8) ? ERROR_SUCCESS : ERROR_NO_UNICODE_TRANSLATION;
}

LSTATUS CheckValueName(std::u16string_view name) {
    if (name.size() > kMaxValueName) return ERROR_INVALID_PARAMETER;
    std::string utf8;
    return NameToUtf8(name, utf8) ? ERROR_SUCCESS : ERROR_NO_UNICODE_TRANSLATION;
}

}  // namespace host
