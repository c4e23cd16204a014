// Where the next item of a delimited text ends.
#pragma once

#include "mox_classes/units/unit_vector.h"

namespace System {

// Finds units that are a delimiter, or no greater than a last blank; eight at a time.
class TUnitEnds {
  public:
    TUnitEnds(WCHAR delimiter, WCHAR last_blank)
        : delimiter_(delimiter),
          last_blank_(last_blank),
          delimiters_(delimiter),
          last_blanks_(last_blank) {}

    // The first such unit at or behind `at`. The terminator at `end` is one at the latest.
    const WCHAR* Next(const WCHAR* at, const WCHAR* end) const {
        for (; end - at >= kUnitStep; at += kUnitStep) {
            const TUnits8 units(at);
            const unsigned stop = units.Equal(delimiters_) | units.NotAbove(last_blanks_);
            if (stop != 0) return at + FirstUnit(stop);
        }
        while (*at > last_blank_ && *at != delimiter_) ++at;
        return at;
    }

  private:
    WCHAR delimiter_;
    WCHAR last_blank_;
    TUnits8 delimiters_;
    TUnits8 last_blanks_;
};

}  // namespace System
