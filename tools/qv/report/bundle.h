// qv bundle: what support needs to know of this machine, in one archive.
#pragma once

#include "base/files.h"

namespace qv {

struct BundleOptions {
    Output output;
    bool redact = false;
};

void WriteBundle(const BundleOptions& options);

}  // namespace qv
