// Between .reg statements and keys in memory.
#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "registry/reg_text.h"
#include "registry/reg_tree.h"

namespace host {

// The root that a name in a .reg file stands for; null when there is none.
using RegRootFinder = std::function<RegKey*(std::u16string_view name)>;

// Carries statements out, one after the other.
class RegEntryRunner {
  public:
    explicit RegEntryRunner(RegRootFinder find_root) : find_root_(std::move(find_root)) {}
    // Throws RegTextError, with what came before it done, for a root that is not found and for
    // names that no key or value can have.
    void Run(const RegEntry& entry);

  private:
    const RegRootFinder find_root_;
    RegKey* key_ = nullptr;  // what values belong to
};

// Writes a key and all below it. `path` is its own path, root's name included. A key without values
// whose subkeys name it anyway gets no line of its own.
void WriteRegKey(const RegKey& key, const std::u16string& path, RegTextWriter& writer);

}  // namespace host
