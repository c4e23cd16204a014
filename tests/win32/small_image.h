// A small PE image whose only content is a version resource, from the seeds of the fuzz target:
// version 1.2.3.4, English (US) in Unicode, "CompanyName" = "Qv".
#pragma once

#include <fstream>
#include <sstream>
#include <string>

#include "support/source_folder.h"

namespace test {

inline std::string SmallImage(bool wide) {
    const std::string seeds = SourceFolder() + "/fuzz/seeds/version_resource/";
    std::ostringstream bytes;
    bytes << std::ifstream(seeds + (wide ? "image64" : "image32"), std::ios::binary).rdbuf();
    return bytes.str();
}

}  // namespace test
