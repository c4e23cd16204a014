#include "registry/reg_keys.h"

namespace host {

namespace {

RegQuery Query(RegSql which) {
    return RegQuery(RegStore::Get().Database(), which);
}

RegValue ValueOf(const RegQuery& row) {
    const std::span<const BYTE> data = row.Bytes(2);
    return {
        std::u16string(row.Text(0)), static_cast<DWORD>(row.Number(1)), {data.begin(), data.end()}};
}

std::int64_t Now() {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    return static_cast<std::int64_t>(now.dwHighDateTime) << 32 | now.dwLowDateTime;
}

// All that a key holds, and the keys but the one that is spared.
void RemoveBelow(std::int64_t key, std::int64_t spared) {
    Query(RegSql::kRemoveValuesBelow).Give(key).Next();
    Query(RegSql::kRemoveKeysBelow).Give(key).Give(spared).Next();
}

bool Changed() {
    return RegStore::Get().Database()->Changes() > 0;
}

}  // namespace

std::vector<RegKey> RegKey::Keys() const {
    std::vector<RegKey> keys;
    RegQuery list = Query(RegSql::kListKeys);
    for (list.Give(id_); list.Next();) keys.emplace_back(list.Number(0), list.Text(1));
    return keys;
}

std::optional<RegKey> RegKey::FindKey(std::u16string_view name) const {
    const std::string folded = FoldedName(name);
    RegQuery find = Query(RegSql::kFindKey);
    if (!find.Give(id_).Give(folded).Next()) return std::nullopt;
    return RegKey(find.Number(0), find.Text(1));
}

std::optional<RegKey> RegKey::FindPath(std::span<const std::u16string> path) const {
    std::optional<RegKey> key = *this;
    for (const std::u16string& name : path) {
        if (key) key = key->FindKey(name);
    }
    return key;
}

RegKey RegKey::MakePath(std::span<const std::u16string> path) const {
    RegKey key = *this;
    for (const std::u16string& name : path) {
        const std::optional<RegKey> next = key.FindKey(name);
        key = next ? *next : key.MakeKey(name);
    }
    return key;
}

RegKey RegKey::MakeKey(std::u16string_view name) const {
    const std::string folded = FoldedName(name);
    Query(RegSql::kAddKey).Give(id_).Give(folded).Give(name).Give(Now()).Next();
    const RegKey made(RegStore::Get().Database()->LastId(), name);
    Touch();
    return made;
}

bool RegKey::RemoveKey(std::u16string_view name) const {
    const std::optional<RegKey> key = FindKey(name);
    if (!key) return false;
    RemoveBelow(key->Id(), 0);
    Touch();
    return true;
}

void RegKey::Clear() const {
    RemoveBelow(id_, id_);
    Touch();
}

void RegKey::Touch() const {
    Query(RegSql::kTouchKey).Give(id_).Give(Now()).Next();
}

std::vector<RegValue> RegKey::Values() const {
    std::vector<RegValue> values;
    RegQuery list = Query(RegSql::kListValues);
    for (list.Give(id_); list.Next();) values.push_back(ValueOf(list));
    return values;
}

std::optional<RegValue> RegKey::FindValue(std::u16string_view name) const {
    const std::string folded = FoldedName(name);
    RegQuery find = Query(RegSql::kFindValue);
    if (!find.Give(id_).Give(folded).Next()) return std::nullopt;
    return ValueOf(find);
}

void RegKey::SetValue(std::u16string_view name, DWORD type, std::span<const BYTE> data) const {
    const std::string folded = FoldedName(name);
    Query(RegSql::kSetValue).Give(id_).Give(folded).Give(name).Give(type).Give(data).Next();
    if (Changed()) Touch();
}

bool RegKey::RemoveValue(std::u16string_view name) const {
    const std::string folded = FoldedName(name);
    Query(RegSql::kRemoveValue).Give(id_).Give(folded).Next();
    if (!Changed()) return false;
    Touch();
    return true;
}

std::optional<RegKey> RegKey::KeyAt(DWORD index, FILETIME& written) const {
    RegQuery at = Query(RegSql::kKeyAt);
    if (!at.Give(id_).Give(index).Next()) return std::nullopt;
    const std::int64_t ticks = at.Number(1);
    written = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    return RegKey(0, at.Text(0));
}

std::optional<RegValue> RegKey::ValueAt(DWORD index) const {
    RegQuery at = Query(RegSql::kValueAt);
    if (!at.Give(id_).Give(index).Next()) return std::nullopt;
    return ValueOf(at);
}

}  // namespace host
