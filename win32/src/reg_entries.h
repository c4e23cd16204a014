// Between .reg statements and keys in memory.
#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "reg_text.h"
#include "reg_tree.h"

namespace host {

// The root that a name in a .reg file stands for; null when there is none.
using RegRootFinder = std::function<RegKey*(std::u16string_view name)>;

// Carries the statements out in order. Throws RegTextError, with what came before it done, for a
// root that is not found and for names that no key or value can have.
void ApplyRegEntries(const std::vector<RegEntry>& entries, const RegRootFinder& find_root);

// Writes a key and all below it. `path` is its own path, root's name included. A key without values
// whose subkeys name it anyway gets no line of its own.
void WriteRegKey(const RegKey& key, const std::u16string& path, RegTextWriter& writer);

}  // namespace host
