// What was read from the registry and nobody has changed since, so that it need not be read again.
//
// It holds for one mark of the store, which every commit of every process changes; with an empty
// mark nothing is remembered. Guarded by the store's mutex.
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace host {

struct RegValue {
    std::u16string name;
    DWORD type;
    std::vector<BYTE> data;
};
using RegValues = std::vector<RegValue>;

struct RegKeyEntry {
    std::int64_t id;
    std::u16string name;
};

// Where an enumeration of a key stands: the place of the item that it got last.
template <class Place>
struct RegCursor {
    DWORD index = 0;
    Place place{};
};

class RegMemory {
  public:
    bool IsOf(std::span<const BYTE> mark) const;
    bool IsOn() const { return !mark_.empty(); }
    // Forgets all, and remembers from now on what is read under this mark.
    void Begin(std::span<const BYTE> mark);
    void Forget();

    // Of a key that exists.
    struct OfKey {
        std::shared_ptr<const RegValues> values;  // all of them, or null
        RegCursor<std::string> key_at;            // folded name
        RegCursor<std::int64_t> value_at;         // number in the store
    };
    // Null when it is not known whether the key exists. Valid until something is added.
    OfKey* Find(std::int64_t key);
    OfKey& Add(std::int64_t key);
    void AddValues(std::int64_t key, const std::shared_ptr<const RegValues>& values);

    // The subkey or value of a folded name, or the key of a folded path below. The outer one is
    // empty when it is not known, the inner one when there is none.
    template <class Item>
    using Known = std::optional<std::optional<Item>>;
    Known<RegKeyEntry> FindKey(std::int64_t parent, const std::string& folded) const;
    Known<RegValue> FindValue(std::int64_t key, const std::string& folded) const;
    void AddKey(std::int64_t parent, const std::string& folded,
                const std::optional<RegKeyEntry>& key);
    void AddValue(std::int64_t key, const std::string& folded,
                  const std::optional<RegValue>& value);

  private:
    template <class Item>
    using Items = std::unordered_map<std::string, std::optional<Item>>;

    bool MakeRoom(std::size_t bytes);

    std::vector<BYTE> mark_;
    std::size_t bytes_ = 0;
    std::unordered_map<std::int64_t, OfKey> of_keys_;
    Items<RegKeyEntry> keys_;
    Items<RegValue> values_;
    Items<RegValue> large_;  // the last one: a caller asks for the size of a value first
};

}  // namespace host
