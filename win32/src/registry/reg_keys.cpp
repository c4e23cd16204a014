#include "registry/reg_keys.h"

#include <algorithm>

#include "registry/reg_store.h"
#include "text/case_fold.h"

namespace host {

namespace {

constexpr std::size_t kManyValues = 64;  // are not searched one after the other

// May make an end of what is remembered: the memory is looked for again behind it.
RegQuery Query(RegSql which) {
    return RegQuery(RegStore::Get().ForQuery(), which);
}

RegMemory* Memory() {
    return RegStore::Get().Memory();
}

RegValue ValueOf(const RegQuery& row) {
    const std::span<const BYTE> data = row.Bytes(2);
    return {
        std::u16string(row.Text(0)), static_cast<DWORD>(row.Number(1)), {data.begin(), data.end()}};
}

std::optional<RegValue> ValueIn(const RegValues& values, std::u16string_view name) {
    const auto found = std::ranges::find_if(
        values, [name](const RegValue& value) { return SameFileName(value.name, name); });
    return found == values.end() ? std::nullopt : std::optional(*found);
}

// From where a statement goes on to the item `index`, and how many it leaves out on its way.
template <class Place>
struct Way {
    Place from{};
    DWORD skipped = 0;
};

template <class Place>
Way<Place> WayTo(DWORD index, const RegCursor<Place> RegMemory::OfKey::*cursor, std::int64_t key) {
    RegMemory* const memory = Memory();
    const RegMemory::OfKey* const known = memory == nullptr ? nullptr : memory->Find(key);
    if (known == nullptr || (known->*cursor).index > index) return {{}, index};
    return {(known->*cursor).place, index - (known->*cursor).index};
}

template <class Place>
void Stay(DWORD index, const Place& place, RegCursor<Place> RegMemory::OfKey::*cursor,
          std::int64_t key) {
    if (RegMemory* const memory = Memory()) memory->Add(key).*cursor = {index, place};
}

std::int64_t Now() {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    return static_cast<std::int64_t>(now.dwHighDateTime) << 32 | now.dwLowDateTime;
}

// With an odd number of bytes, so that it is no name's.
std::string FoldedPath(std::span<const std::u16string> path) {
    std::u16string whole;
    for (const std::u16string& name : path) (whole += name) += u'\\';
    return FoldedName(whole) + '\\';
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

bool RegKey::Exists() const {
    return Id() <= std::int64_t{kRegRoots} || Query(RegSql::kHoldKey).Give(Id()).Next();
}

std::vector<RegKey> RegKey::Keys() const {
    std::vector<RegKey> keys;
    RegQuery list = Query(RegSql::kListKeys);
    RegMemory* const memory = Memory();
    for (list.Give(Id()); list.Next();) {
        keys.emplace_back(list.Number(0), list.Text(1));
        if (memory != nullptr)
            memory->AddKey(Id(), FoldedName(list.Text(1)), RegKeyEntry(keys.back()));
    }
    return keys;
}

std::optional<RegKey> RegKey::FindKey(std::u16string_view name) const {
    const std::string folded = FoldedName(name);
    if (const RegMemory* const memory = Memory()) {
        if (auto known = memory->FindKey(Id(), folded)) return std::optional<RegKey>(*known);
    }
    std::optional<RegKey> key;
    RegQuery find = Query(RegSql::kFindKey);
    if (find.Give(Id()).Give(folded).Next()) key.emplace(find.Number(0), find.Text(1));
    if (RegMemory* const memory = Memory())
        memory->AddKey(Id(), folded, std::optional<RegKeyEntry>(key));
    return key;
}

std::optional<RegKey> RegKey::FindPath(std::span<const std::u16string> path) const {
    const std::string folded = FoldedPath(path);
    if (const RegMemory* const memory = Memory()) {
        if (auto known = memory->FindKey(Id(), folded)) return std::optional<RegKey>(*known);
    }
    std::optional<RegKey> key = *this;
    for (const std::u16string& name : path) {
        if (key) key = key->FindKey(name);
    }
    if (RegMemory* const memory = Memory())
        memory->AddKey(Id(), folded, std::optional<RegKeyEntry>(key));
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
    Query(RegSql::kAddKey).Give(Id()).Give(folded).Give(name).Give(Now()).Next();
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
    RemoveBelow(Id(), Id());
    Touch();
}

void RegKey::Touch() const {
    Query(RegSql::kTouchKey).Give(Id()).Give(Now()).Next();
}

std::shared_ptr<const RegValues> RegKey::Values() const {
    if (RegMemory* const memory = Memory()) {
        const auto* const known = memory->Find(Id());
        if (known != nullptr && known->values != nullptr) return known->values;
    }
    const auto values = std::make_shared<RegValues>();
    RegQuery list = Query(RegSql::kListValues);
    for (list.Give(Id()); list.Next();) values->push_back(ValueOf(list));
    RegMemory* const memory = Memory();
    if (memory != nullptr && Id() >= 0) memory->AddValues(Id(), values);
    return values;
}

std::optional<RegValue> RegKey::FindValue(std::u16string_view name) const {
    const std::string folded = FoldedName(name);
    if (RegMemory* const memory = Memory()) {
        if (auto known = memory->FindValue(Id(), folded)) return *known;
        const auto* const key = memory->Find(Id());
        if (key != nullptr && key->values != nullptr && key->values->size() < kManyValues) {
            return ValueIn(*key->values, name);
        }
    }
    std::optional<RegValue> value;
    RegQuery find = Query(RegSql::kFindValue);
    if (find.Give(Id()).Give(folded).Next()) value = ValueOf(find);
    if (RegMemory* const memory = Memory()) memory->AddValue(Id(), folded, value);
    return value;
}

void RegKey::SetValue(std::u16string_view name, DWORD type, std::span<const BYTE> data) const {
    const std::string folded = FoldedName(name);
    Query(RegSql::kSetValue).Give(Id()).Give(folded).Give(name).Give(type).Give(data).Next();
    if (Changed()) Touch();
}

bool RegKey::RemoveValue(std::u16string_view name) const {
    const std::string folded = FoldedName(name);
    Query(RegSql::kRemoveValue).Give(Id()).Give(folded).Next();
    if (!Changed()) return false;
    Touch();
    return true;
}

std::optional<RegKey> RegKey::KeyAt(DWORD index, FILETIME& written) const {
    const auto way = WayTo(index, &RegMemory::OfKey::key_at, Id());
    RegQuery at = Query(RegSql::kKeyAt);
    if (!at.Give(Id()).Give(way.from).Give(way.skipped).Next()) return std::nullopt;
    Stay(index, FoldedName(at.Text(0)), &RegMemory::OfKey::key_at, Id());
    const std::int64_t ticks = at.Number(1);
    written = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    return RegKey(0, at.Text(0));
}

std::optional<RegValue> RegKey::ValueAt(DWORD index) const {
    const auto way = WayTo(index, &RegMemory::OfKey::value_at, Id());
    RegQuery at = Query(RegSql::kValueAt);
    if (!at.Give(Id()).Give(way.from).Give(way.skipped).Next()) return std::nullopt;
    Stay(index, at.Number(3), &RegMemory::OfKey::value_at, Id());
    return ValueOf(at);
}

}  // namespace host
