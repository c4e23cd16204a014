#include "xml/xml_name_cache.h"

#include <bit>
#include <cstring>

namespace {

std::uint64_t Word(const char* bytes) {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

}  // namespace

inline bool TXmlNameCache::Key::operator==(const Key& other) const {
    return first == other.first && last == other.last && bytes.size() == other.bytes.size() &&
           (bytes.size() <= 16 || bytes == other.bytes);
}

inline TXmlNameCache::Key TXmlNameCache::KeyOf(const TAsciiCharFinder& finder, int from, int to) {
    Key key;
    key.bytes = XmlSpanBytes(finder, from, to);
    const std::size_t length = key.bytes.size();
    if (length >= sizeof key.first) {
        key.first = Word(key.bytes.data());
        key.last = Word(key.bytes.data() + length - sizeof key.last);
    } else if (finder.Size() - from >= static_cast<int>(sizeof key.first)) {
        key.first = Word(key.bytes.data()) & ((std::uint64_t{1} << (8 * length)) - 1);
    } else {
        std::memcpy(&key.first, key.bytes.data(), length);
    }
    return key;
}

inline std::size_t TXmlNameCache::HomeOf(const Key& key) {
    const std::uint64_t mixed = (key.first ^ std::rotl(key.last, 23) ^ key.bytes.size()) *
                                std::uint64_t{0x9E3779B97F4A7C15u};
    return static_cast<std::size_t>(mixed >> 55);
}

UnicodeString TXmlNameCache::Get(const TAsciiCharFinder& finder, int from, int to) {
    XmlTrimSpan(finder, from, to);
    return from == to ? UnicodeString() : GetTrimmed(finder, from, to);
}

const UnicodeString& TXmlNameCache::GetTrimmed(const TAsciiCharFinder& finder, int from, int to) {
    const Key key = KeyOf(finder, from, to);
    std::size_t slot = HomeOf(key);
    for (; slots_[slot] != 0; slot = (slot + 1) % slots_.size()) {
        const Entry& entry = entries_[slots_[slot] - 1u];
        if (entry.key == key) return entry.name;
    }
    if (entries_.size() == kMost) {
        entries_.clear();
        slots_.fill(0);
        slot = HomeOf(key);
    }
    entries_.push_back({key, finder.Read(from, to)});
    slots_[slot] = static_cast<unsigned char>(entries_.size());
    return entries_.back().name;
}
