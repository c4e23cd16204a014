#include "registry/reg_tree.h"

#include <algorithm>

#include "root/host_path.h"

namespace host {

const std::vector<RegKey*>& RegKey::Keys() const {
    if (sorted_.empty()) {
        sorted_.reserve(keys_by_name_.size());
        for (const auto& [name, place] : keys_by_name_) sorted_.push_back(&*place);
    }
    return sorted_;
}

RegKey* RegKey::FindKey(std::u16string_view name) const {
    const auto at = keys_by_name_.find(name);
    return at == keys_by_name_.end() ? nullptr : &*at->second;
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
        RegKey* const next = key->FindKey(name);
        key = next != nullptr ? next : &key->MakeKey(name);
    }
    return *key;
}

RegKey& RegKey::MakeKey(std::u16string_view name) {
    std::list<RegKey> made;
    made.emplace_back(name);
    keys_by_name_.emplace(made.back().name_, made.begin());
    keys_.splice(keys_.end(), made);
    sorted_.clear();
    return keys_.back();
}

bool RegKey::RemoveKey(std::u16string_view name) {
    const auto at = keys_by_name_.find(name);
    if (at == keys_by_name_.end()) return false;
    const auto place = at->second;
    keys_by_name_.erase(at);
    keys_.erase(place);
    sorted_.clear();
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

// The keys below come down one by one from a list, whatever their depth: without recursion and
// without memory.
void RegKey::Clear() noexcept {
    values_by_name_.clear();
    values_.clear();
    sorted_.clear();
    keys_by_name_.clear();
    std::list<RegKey> doomed = std::move(keys_);
    keys_.clear();
    while (!doomed.empty()) {
        RegKey& key = doomed.front();
        key.keys_by_name_.clear();
        doomed.splice(doomed.end(), key.keys_);
        doomed.pop_front();
    }
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
