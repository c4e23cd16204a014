#include "registry/reg_keys.h"

#include <algorithm>

#include "registry/reg_store.h"
#include "text/case_fold.h"

namespace host {

namespace {

constexpr std::size_t kManyValues = 64;  // are not searched one after the other

// May make an end of what is remembered: the memory is looked for again behind it.
RegQuery Query(const char* sql) {
    return RegQuery(RegStore::Get().ForQuery(), sql);
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

// From where an enumeration goes on to the item `index`: the item that it got last, if that is not
// behind it.
template <class Place>
RegCursor<Place> CursorTo(DWORD index, const RegCursor<Place> RegMemory::OfKey::*cursor,
                          std::int64_t key) {
    RegMemory* const memory = Memory();
    const RegMemory::OfKey* const known = memory == nullptr ? nullptr : memory->Find(key);
    return known == nullptr || (known->*cursor).index > index ? RegCursor<Place>() : known->*cursor;
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

// A key with all below it, in front of a statement.
#define QV_WITH_BELOW                                  \
    "WITH RECURSIVE below(id) AS (SELECT ?1 UNION ALL" \
    " SELECT reg_keys.id FROM reg_keys JOIN below ON reg_keys.parent = below.id) "

// All that a key holds, and the keys but the one that is spared.
void RemoveBelow(std::int64_t key, std::int64_t spared) {
    Query(QV_WITH_BELOW "DELETE FROM reg_values WHERE key IN below").Give(key).Next();
    Query(QV_WITH_BELOW "DELETE FROM reg_keys WHERE id <> ?2 AND id IN below")
        .Give(key)
        .Give(spared)
        .Next();
}
#undef QV_WITH_BELOW

bool Changed() {
    return RegStore::Get().Database()->Changes() > 0;
}

// The key of a folded name or path below another one, as `read` finds it when it is not known.
template <class Read>
std::optional<RegKey> KeyBelow(std::int64_t parent, const std::string& folded, const Read& read) {
    if (const RegMemory* const memory = Memory()) {
        if (auto known = memory->FindKey(parent, folded)) return std::optional<RegKey>(*known);
    }
    const std::optional<RegKey> key = read();
    if (RegMemory* const memory = Memory())
        memory->AddKey(parent, folded, std::optional<RegKeyEntry>(key));
    return key;
}

}  // namespace

bool RegKey::Exists() const {
    return Id() <= std::int64_t{kRegRoots} || Query(kHoldRegKey).Give(Id()).Next();
}

std::vector<RegKey> RegKey::Keys() const {
    std::vector<RegKey> keys;
    RegQuery list = Query("SELECT id, name FROM reg_keys WHERE parent = ?1 ORDER BY folded");
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
    return KeyBelow(Id(), folded, [&]() -> std::optional<RegKey> {
        RegQuery find = Query("SELECT id, name FROM reg_keys WHERE parent = ?1 AND folded = ?2");
        if (!find.Give(Id()).Give(folded).Next()) return std::nullopt;
        return RegKey(find.Number(0), find.Text(1));
    });
}

std::optional<RegKey> RegKey::FindPath(std::span<const std::u16string> path) const {
    return KeyBelow(Id(), FoldedPath(path), [&] {
        std::optional<RegKey> key = *this;
        for (const std::u16string& name : path) {
            if (key) key = key->FindKey(name);
        }
        return key;
    });
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
    Query("INSERT INTO reg_keys(parent, folded, name, written) VALUES(?1, ?2, ?3, ?4)")
        .Give(Id())
        .Give(folded)
        .Give(name)
        .Give(Now())
        .Next();
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
    Query("UPDATE reg_keys SET written = ?2 WHERE id = ?1").Give(Id()).Give(Now()).Next();
}

std::shared_ptr<const RegValues> RegKey::Values() const {
    if (RegMemory* const memory = Memory()) {
        const auto* const known = memory->Find(Id());
        if (known != nullptr && known->values != nullptr) return known->values;
    }
    const auto values = std::make_shared<RegValues>();
    RegQuery list = Query("SELECT name, type, data FROM reg_values WHERE key = ?1 ORDER BY id");
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
    RegQuery find = Query("SELECT name, type, data FROM reg_values WHERE key = ?1 AND folded = ?2");
    if (find.Give(Id()).Give(folded).Next()) value = ValueOf(find);
    if (RegMemory* const memory = Memory()) memory->AddValue(Id(), folded, value);
    return value;
}

void RegKey::SetValue(std::u16string_view name, DWORD type, std::span<const BYTE> data) const {
    const std::string folded = FoldedName(name);
    RegQuery set = Query(
        "INSERT INTO reg_values(key, folded, name, type, data) VALUES(?1, ?2, ?3, ?4, ?5)"
        " ON CONFLICT(key, folded) DO UPDATE SET type = excluded.type, data = excluded.data"
        " WHERE type <> excluded.type OR data <> excluded.data");
    set.Give(Id()).Give(folded).Give(name).Give(type).Give(data).Next();
    if (Changed()) Touch();
}

bool RegKey::RemoveValue(std::u16string_view name) const {
    const std::string folded = FoldedName(name);
    Query("DELETE FROM reg_values WHERE key = ?1 AND folded = ?2").Give(Id()).Give(folded).Next();
    if (!Changed()) return false;
    Touch();
    return true;
}

std::optional<RegKey> RegKey::KeyAt(DWORD index, FILETIME& written) const {
    const auto from = CursorTo(index, &RegMemory::OfKey::key_at, Id());
    RegQuery at = Query(
        "SELECT name, written FROM reg_keys WHERE parent = ?1 AND folded >= ?2 ORDER BY folded"
        " LIMIT 1 OFFSET ?3");
    if (!at.Give(Id()).Give(from.place).Give(index - from.index).Next()) return std::nullopt;
    if (RegMemory* const memory = Memory())
        memory->Add(Id()).key_at = {index, FoldedName(at.Text(0))};
    const std::int64_t ticks = at.Number(1);
    written = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    return RegKey(0, at.Text(0));
}

std::optional<RegValue> RegKey::ValueAt(DWORD index) const {
    const auto from = CursorTo(index, &RegMemory::OfKey::value_at, Id());
    RegQuery at = Query(
        "SELECT name, type, data, id FROM reg_values WHERE key = ?1 AND id >= ?2 ORDER BY id"
        " LIMIT 1 OFFSET ?3");
    if (!at.Give(Id()).Give(from.place).Give(index - from.index).Next()) return std::nullopt;
    if (RegMemory* const memory = Memory()) memory->Add(Id()).value_at = {index, at.Number(3)};
    return ValueOf(at);
}

}  // namespace host
