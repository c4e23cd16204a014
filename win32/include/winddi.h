// The graphics engine's text record, as far as log lines show it.
#pragma once

#include "minwindef.h"

using FLONG = ULONG;
struct GLYPHPOS;

struct STROBJ {
    ULONG cGlyphs;
    FLONG flAccel;
    ULONG ulCharInc;
    RECTL rclBkGround;
    GLYPHPOS* pgp;
    LPWSTR pwszOrg;
};
