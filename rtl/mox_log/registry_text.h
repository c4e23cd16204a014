// The one place that reads a text value of the registry, and the owner of an open key.
#pragma once

#include <windows.h>

#include "mox_classes/unicode_string.h"

namespace Mox {

// Closes the key it holds, unless it is null. A predefined root is not handed to it.
class TRegKeyOwner {
  public:
    explicit TRegKeyOwner(HKEY key) : key_(key) {}
    TRegKeyOwner(const TRegKeyOwner&) = delete;
    TRegKeyOwner& operator=(const TRegKeyOwner&) = delete;
    ~TRegKeyOwner() {
        if (key_ != nullptr) RegCloseKey(key_);
    }
    HKEY get() const { return key_; }

  private:
    HKEY key_;
};

enum class TRegTextState { Found, Missing, WrongType, Failed };

struct TRegText {
    TRegTextState state = TRegTextState::Missing;
    DWORD type = REG_NONE;  // of a value of another type
    LSTATUS code = 0;       // of a read that failed
    UnicodeString text;
};

// Reads the REG_SZ value `name`: one terminator at its end is dropped when it is there, and so is
// an odd last byte. A value that grows between the size query and the read is read again.
TRegText ReadRegText(HKEY key, const UnicodeString& name);

}  // namespace Mox
