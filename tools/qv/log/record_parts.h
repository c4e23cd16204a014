// What the forms of a record have in common.
#pragma once

#include <string>

#include "mox_log/log_message.h"

namespace qv {

// The level's character, or its number in hexadecimal when it is none that can be shown.
std::string LevelName(int level);

// Of the record's data; 0 without any.
std::size_t BlockSize(const Mox::TLogMsg& record);
// The data in hexadecimal.
std::string BlockHex(const Mox::TLogMsg& record);

}  // namespace qv
