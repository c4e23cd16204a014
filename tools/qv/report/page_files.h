// The files of the report's page as the build put them into the program: page/ beside this file.
#pragma once

#include <string_view>

namespace qv {

struct EmbeddedText {
    std::string_view text;
    std::string_view hash;  // SHA-256 in Base64, as a Content-Security-Policy names what may run
};

extern const EmbeddedText kPageTemplate, kPageStyle, kPageScript;

}  // namespace qv
