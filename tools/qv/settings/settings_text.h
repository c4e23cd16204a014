// The text form of settings, which `qv export` writes and `qv apply` reads. It is UTF-8: a head of
// comments, then a line NAME=VALUE for each field in the order of AllFields().
#pragma once

#include <vector>

#include "settings/settings_block.h"

namespace qv {

// A field and its new text. ValueFault accepts the text.
struct Assignment {
    const Field* field;
    UnicodeString text;
    int line = 0;  // line number in the file; 0 without a file
};

// A line that is not an assignment, and the reason.
struct LineFault {
    int line;
    std::string field;  // empty when the line has no name
    std::string text;
};

struct SettingsText {
    UnicodeString printer;  // named in the head, or empty
    std::vector<Assignment> assignments;
    std::vector<LineFault> faults;
    bool is_damaged = false;  // the bytes are not UTF-8, or a line does not have this form
};

// Reads to the end, also behind bad lines. Lines end with LF or CR LF. Blank lines and comments are
// counted in line numbers.
SettingsText ParseSettings(const std::string& bytes);

struct SettingsHead {
    UnicodeString printer, driver, user;
};

std::string FormatSettings(const SettingsHead& head, const SettingsBlock& block);

// True for this text form. A block has zero bytes, a text has none.
bool IsSettingsText(const std::string& bytes);

// "line 7: " for the beginning of a message; empty for line 0.
std::string LinePrefix(int line);

}  // namespace qv
