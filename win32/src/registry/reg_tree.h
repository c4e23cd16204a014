// Keys and values of one registry root in memory. Names compare without case and keep the spelling
// they were made with. Nothing here locks: the registry's lock guards it.
#pragma once

#include <windows.h>

#include <list>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "text/case_fold.h"

namespace host {

inline constexpr std::size_t kMaxKeyName = 255;      // UTF-16 units
inline constexpr std::size_t kMaxValueName = 16383;  // UTF-16 units
inline constexpr std::size_t kMaxKeyDepth = 512;     // levels below a root

using RegPath = std::vector<std::u16string>;

struct RegValue {
    std::u16string name;
    DWORD type;
    std::vector<BYTE> data;
};

// Neither making nor destroying a tree recurses, and keys may be made in any order: each costs the
// logarithm of its siblings' number.
class RegKey {
  public:
    explicit RegKey(std::u16string_view name) : name_(name) {}
    RegKey(const RegKey&) = delete;
    RegKey& operator=(const RegKey&) = delete;
    ~RegKey() { Clear(); }

    const std::u16string& Name() const { return name_; }

    // Subkeys in the order of their folded names, values in the order they were made in.
    const std::vector<RegKey*>& Keys() const;
    bool HasKeys() const { return !keys_.empty(); }
    const std::vector<std::unique_ptr<RegValue>>& Values() const { return values_; }

    RegKey* FindKey(std::u16string_view name) const;
    // The key at a path below this one, or null.
    RegKey* FindPath(std::span<const std::u16string> path);
    RegKey& MakePath(std::span<const std::u16string> path);
    bool RemoveKey(std::u16string_view name);

    const RegValue* FindValue(std::u16string_view name) const;
    // False when the value was already exactly this one.
    bool SetValue(std::u16string_view name, DWORD type, std::span<const BYTE> data);
    bool RemoveValue(std::u16string_view name);

    // Takes all keys and values away.
    void Clear() noexcept;

  private:
    using KeyPlaces = std::map<std::u16string_view, std::list<RegKey>::iterator, FoldedLess>;

    RegKey& MakeKey(std::u16string_view name);

    const std::u16string name_;
    std::list<RegKey> keys_;
    KeyPlaces keys_by_name_;               // views into keys_
    mutable std::vector<RegKey*> sorted_;  // what Keys() gave; empty when keys have changed since
    std::vector<std::unique_ptr<RegValue>> values_;
    std::map<std::u16string_view, RegValue*, FoldedLess> values_by_name_;  // views into values_
};

// Cuts "a\b" into its names; runs of separators count as one. ERROR_BAD_PATHNAME for a path that
// begins with a separator.
LSTATUS SplitKeyPath(std::u16string_view text, RegPath& path);

// Whether a key of this name, or a value of this name, can be made and kept in the text file:
// ERROR_INVALID_PARAMETER when it is too long, ERROR_INVALID_NAME for a line break in a key's name,
// ERROR_NO_UNICODE_TRANSLATION for an unpaired surrogate.
LSTATUS CheckKeyName(std::u16string_view name);
LSTATUS CheckValueName(std::u16string_view name);

}  // namespace host
