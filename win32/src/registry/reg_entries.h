// Between .reg statements and the keys of the store.
#pragma once

#include <string_view>
#include <vector>

#include "registry/reg_keys.h"
#include "registry/reg_text.h"

namespace host {

// Carries statements out, one after the other, within a change. `only_root` is the number of the
// root that all keys must belong to; 0 allows every one.
class RegEntryRunner {
  public:
    explicit RegEntryRunner(std::int64_t only_root) : only_root_(only_root) {}
    // Throws RegTextError, with what came before it done, for a root that is not found and for
    // names that no key or value can have.
    void Run(const RegEntry& entry);

  private:
    const std::int64_t only_root_;
    RegKey key_ = RegKey::None();  // what values belong to
};

// Writes a key and all below it. `path` is its own path, root's name included. A key without values
// whose subkeys name it anyway gets no line of its own.
void WriteRegKey(const RegKey& key, const std::u16string& path, RegTextWriter& writer);

}  // namespace host
