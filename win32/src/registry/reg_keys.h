// Keys and values of the store. Names compare without case and keep the spelling they were made
// with. All of it is used with the store's mutex held, in a snapshot or, what changes, in a change;
// failures throw RegError.
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "registry/reg_memory.h"
#include "registry/reg_names.h"

namespace host {

class RegKey {
  public:
    explicit RegKey(std::int64_t id, std::u16string_view name = {})
        : entry_{id, std::u16string(name)} {}
    explicit RegKey(RegKeyEntry entry) : entry_(std::move(entry)) {}
    explicit operator const RegKeyEntry&() const { return entry_; }
    // One that holds nothing.
    static RegKey None() { return RegKey(-1); }

    std::int64_t Id() const { return entry_.id; }
    const std::u16string& Name() const { return entry_.name; }

    bool Exists() const;
    bool IsEmpty() const { return Keys().empty() && Values()->empty(); }
    // Subkeys in the order of their folded names.
    std::vector<RegKey> Keys() const;
    std::optional<RegKey> FindKey(std::u16string_view name) const;
    std::optional<RegKey> FindPath(std::span<const std::u16string> path) const;
    RegKey MakePath(std::span<const std::u16string> path) const;
    // With all below it; false when there is none.
    bool RemoveKey(std::u16string_view name) const;
    // Takes all keys and values away.
    void Clear() const;

    // Values in the order they were made in. Never null.
    std::shared_ptr<const RegValues> Values() const;
    std::optional<RegValue> FindValue(std::u16string_view name) const;
    void SetValue(std::u16string_view name, DWORD type, std::span<const BYTE> data) const;
    // False when there is none.
    bool RemoveValue(std::u16string_view name) const;

    // The subkey or value at a place of the orders above.
    std::optional<RegKey> KeyAt(DWORD index, FILETIME& written) const;
    std::optional<RegValue> ValueAt(DWORD index) const;

  private:
    RegKey MakeKey(std::u16string_view name) const;
    void Touch() const;

    RegKeyEntry entry_;
};

}  // namespace host
