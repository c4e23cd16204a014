// qv bundle: what support needs to know of this machine, in one archive.
#pragma once

#include <string>

namespace qv {

struct BundleOptions {
    std::string output;
    bool redact = false;
};

void WriteBundle(const BundleOptions& options);

}  // namespace qv
