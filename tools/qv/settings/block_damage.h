// Checks whether a block is one of the product, and whether its strings can be read.
#pragma once

#include "settings/settings_block.h"

namespace qv {

// Says why the bytes are not a complete block of any driver: they end before the size fields, or
// before the size that these fields state. Empty when the block is complete.
std::vector<std::string> SizeDamage(const SettingsBlock& block);

// Says why the block is not one of the product, and which of its strings lie outside its pool.
std::vector<std::string> ProductDamage(const SettingsBlock& block);

}  // namespace qv
