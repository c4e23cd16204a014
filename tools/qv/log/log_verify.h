// qv log verify: whether a log is sound, also while others write it.
#pragma once

#include <string>

namespace qv {

// Throws Failure (kDamaged) for a log that is damaged.
void VerifyLog(const std::string& file, bool json);

}  // namespace qv
