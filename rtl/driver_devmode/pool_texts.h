// Sentences about texts that the string pool of a settings block has no room for, or that are
// damaged in it. The pool holds three texts: exOut.Directory, exOut.FileName, exRun.Target.
#pragma once

#include <vector>

#include "driver_devmode/qvdm.h"
#include "mox_classes/text/unicode_string.h"

namespace driver_devmode {

// After an Encode: one sentence for each text that the block does not hold for want of room. It
// names the field, its length and the room, in code units.
std::vector<UnicodeString> TextsWithoutRoom(const TQVDM& settings);

// Before an Encode: the texts whose stored offsets are damaged, and those behind them. The
// wrapper's members hold something else in their place.
class TDamagedTexts {
  public:
    explicit TDamagedTexts(TQVDM& settings);
    // One sentence for each such text that is the same as at the start: the next Encode stores it.
    std::vector<UnicodeString> Replaced(const TQVDM& settings) const;

  private:
    std::vector<UnicodeString> in_their_place_;
};

}  // namespace driver_devmode
