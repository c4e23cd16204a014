// What the values of the fields mean: which are of no use, and which are not in force.
#pragma once

#include "settings/settings_block.h"

namespace qv {

// Why the field's value means nothing, or nothing will come of it; empty when all is well. The
// block has the field.
std::string MeaningFault(const SettingsBlock& block, const Field& field);

}  // namespace qv
