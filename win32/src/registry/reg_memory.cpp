#include "registry/reg_memory.h"

#include <algorithm>
#include <cstring>

namespace host {

namespace {

constexpr std::size_t kMostBytes = 8 << 20;
constexpr std::size_t kLongest = 64 << 10;  // of one item
constexpr std::size_t kLarge = 1 << 10;
constexpr std::size_t kItemBytes = 128;  // what an item takes besides its texts and its data

std::string PlaceOf(std::int64_t key, const std::string& folded) {
    std::string place(sizeof key, '\0');
    std::memcpy(place.data(), &key, sizeof key);
    return place += folded;
}

std::size_t BytesOf(const RegValue& value) {
    return kItemBytes + value.name.size() * sizeof(char16_t) + value.data.size();
}

template <class Items>
auto FindIn(const Items& items, const std::string& place)
    -> std::optional<typename Items::mapped_type> {
    const auto found = items.find(place);
    if (found == items.end()) return std::nullopt;
    return found->second;
}

}  // namespace

bool RegMemory::IsOf(std::span<const BYTE> mark) const {
    return std::ranges::equal(mark, mark_);
}

void RegMemory::Begin(std::span<const BYTE> mark) {
    Forget();
    mark_.assign(mark.begin(), mark.end());
}

void RegMemory::Forget() {
    bytes_ = 0;
    of_keys_.clear();
    keys_.clear();
    values_.clear();
    large_.clear();
}

// False for what is too large. When there is no room, nothing of before is worth more than the
// rest.
bool RegMemory::MakeRoom(std::size_t bytes) {
    if (bytes > kLongest) return false;
    if (bytes_ + bytes > kMostBytes) Forget();
    bytes_ += bytes;
    return true;
}

RegMemory::OfKey* RegMemory::Find(std::int64_t key) {
    const auto found = of_keys_.find(key);
    return found == of_keys_.end() ? nullptr : &found->second;
}

RegMemory::OfKey& RegMemory::Add(std::int64_t key) {
    if (OfKey* const known = Find(key)) return *known;
    MakeRoom(kItemBytes);
    return of_keys_[key];
}

void RegMemory::AddValues(std::int64_t key, const std::shared_ptr<const RegValues>& values) {
    std::size_t bytes = kItemBytes;
    for (const RegValue& value : *values) bytes += BytesOf(value);
    if (MakeRoom(bytes)) Add(key).values = values;
}

RegMemory::Known<RegKeyEntry> RegMemory::FindKey(std::int64_t parent,
                                                 const std::string& folded) const {
    return FindIn(keys_, PlaceOf(parent, folded));
}

RegMemory::Known<RegValue> RegMemory::FindValue(std::int64_t key, const std::string& folded) const {
    const std::string place = PlaceOf(key, folded);
    if (auto known = FindIn(values_, place)) return known;
    return FindIn(large_, place);
}

void RegMemory::AddKey(std::int64_t parent, const std::string& folded,
                       const std::optional<RegKeyEntry>& key) {
    if (!MakeRoom(kItemBytes + 2 * folded.size())) return;
    keys_.insert_or_assign(PlaceOf(parent, folded), key);
}

void RegMemory::AddValue(std::int64_t key, const std::string& folded,
                         const std::optional<RegValue>& value) {
    const std::size_t bytes = folded.size() + (value ? BytesOf(*value) : kItemBytes);
    const bool is_large = bytes > kLarge;
    if (is_large) large_.clear();
    if (bytes > kLongest || (!is_large && !MakeRoom(bytes))) return;
    (is_large ? large_ : values_).insert_or_assign(PlaceOf(key, folded), value);
}

}  // namespace host
