// Whether a block is one of the product at all, and whether its strings can be reached.
#pragma once

#include "settings/settings_block.h"

namespace qv {

// Why the bytes are no whole block of any driver: shorter than they say, or than what says how long
// they are. Empty when they are one.
std::vector<std::string> SizeDamage(const SettingsBlock& block);

// Why the block is not one of the product, and which of its strings lie outside its pool.
std::vector<std::string> ProductDamage(const SettingsBlock& block);

}  // namespace qv
