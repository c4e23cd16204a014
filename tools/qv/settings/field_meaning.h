// Finds values that make no sense, and values that another setting overrides.
#pragma once

#include "settings/settings_block.h"

namespace qv {

// Says why the value of the field makes no sense or has no effect; empty when it is fine. The block
// must have the field.
std::string MeaningFault(const SettingsBlock& block, const Field& field);

}  // namespace qv
