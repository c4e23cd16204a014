#include "xml/xml_name_index.h"

#include <algorithm>
#include <cstring>

#include "xml/xml_pair.h"

namespace {

constexpr std::size_t kFirstEntries = 64;

// Hashes eight bytes at a time. The seed differs for each index and each run, so that nobody can
// choose names that collide.
std::uint32_t HashOf(const UnicodeString& name, std::uint64_t seed) {
    constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15u;
    const auto* bytes = reinterpret_cast<const char*>(name.t_str());
    std::size_t left = static_cast<std::size_t>(name.Length()) * sizeof(WCHAR);
    std::uint64_t hash = (seed ^ left) * kFactor;
    while (left > 0) {
        std::uint64_t word = 0;
        const std::size_t n = left < sizeof word ? left : sizeof word;
        std::memcpy(&word, bytes, n);
        hash = (hash ^ word) * kFactor;
        hash ^= hash >> 29;
        bytes += n;
        left -= n;
    }
    return static_cast<std::uint32_t>(hash >> 32) ^ static_cast<std::uint32_t>(hash);
}

}  // namespace

bool XmlNamesEqual(const UnicodeString& a, const UnicodeString& b) {
    if (a.data() == b.data()) return true;
    if (a.Length() != b.Length()) return false;
    if (*a.t_str() != *b.t_str()) return false;
    return std::memcmp(a.t_str(), b.t_str(),
                       static_cast<std::size_t>(a.Length()) * sizeof(WCHAR)) == 0;
}

void TXmlNameIndex::Extend(TXmlPair* const* items, int count) {
    constexpr std::size_t kChecksPerItem = 1024;
    const auto wanted = static_cast<std::size_t>(count);
    if (known_.size() == wanted) return;
    if ((wanted - checked_) * kChecksPerItem >= known_.size()) {
        if (IsRenamed(items)) Clear();
        checked_ = wanted;
    }
    while (known_.size() < wanted) {
        if ((used_ + 1) * 2 > entries_.size()) Grow();
        Insert(items, static_cast<std::int32_t>(known_.size()));
    }
}

bool TXmlNameIndex::IsRenamed(TXmlPair* const* items) const {
    for (std::size_t i = 0; i < known_.size(); ++i) {
        const UnicodeString& name = items[i]->FName;
        if (name.data() != known_[i].name.data()) return true;
    }
    return false;
}

void TXmlNameIndex::Clear() {
    std::fill(entries_.begin(), entries_.end(), Entry{});
    known_.clear();
    used_ = 0;
}

int TXmlNameIndex::First(TXmlPair* const* items, const UnicodeString& name) const {
    if (entries_.empty()) return -1;
    const std::uint32_t hash = HashOf(name, seed_);
    const std::size_t mask = entries_.size() - 1;
    for (std::size_t at = hash & mask; entries_[at].first >= 0; at = (at + 1) & mask) {
        if (entries_[at].hash != hash) continue;
        const std::int32_t first = entries_[at].first;
        if (XmlNamesEqual(items[first]->FName, name)) return first;
        const int later = Next(items, name, first);
        if (later >= 0) return later;
    }
    return -1;
}

int TXmlNameIndex::Next(TXmlPair* const* items, const UnicodeString& name, int index) const {
    std::int32_t next = known_[static_cast<std::size_t>(index)].next;
    while (next >= 0 && !XmlNamesEqual(items[next]->FName, name)) {
        next = known_[static_cast<std::size_t>(next)].next;
    }
    return next;
}

void TXmlNameIndex::Insert(TXmlPair* const* items, std::int32_t index) {
    const UnicodeString& name = items[index]->FName;
    const std::uint32_t hash = HashOf(name, seed_);
    const std::size_t mask = entries_.size() - 1;
    std::size_t at = hash & mask;
    while (entries_[at].first >= 0 &&
           (entries_[at].hash != hash || !XmlNamesEqual(items[entries_[at].first]->FName, name))) {
        at = (at + 1) & mask;
    }
    Entry& entry = entries_[at];
    known_.push_back({name, -1});
    if (entry.first < 0) {
        entry = {hash, index, index};
        ++used_;
    } else {
        known_[static_cast<std::size_t>(entry.last)].next = index;
        entry.last = index;
    }
}

void TXmlNameIndex::Grow() {
    std::vector<Entry> grown(entries_.empty() ? kFirstEntries : entries_.size() * 2);
    if (entries_.empty()) seed_ = reinterpret_cast<std::uintptr_t>(grown.data());
    const std::size_t mask = grown.size() - 1;
    for (const Entry& entry : entries_) {
        if (entry.first < 0) continue;
        std::size_t at = entry.hash & mask;
        while (grown[at].first >= 0) at = (at + 1) & mask;
        grown[at] = entry;
    }
    entries_ = std::move(grown);
}
