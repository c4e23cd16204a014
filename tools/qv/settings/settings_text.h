// Settings as text: what `qv export` writes and `qv apply` reads. UTF-8, a head of comments, then a
// line NAME=VALUE per field in the order of AllFields().
#pragma once

#include <vector>

#include "settings/settings_block.h"

namespace qv {

// A field and the text that it is to have, which ValueFault has passed.
struct Assignment {
    const Field* field;
    UnicodeString text;
    int line = 0;  // in the file; 0 when it was not read from one
};

// A line that is not an assignment, and why.
struct LineFault {
    int line;
    std::string field;  // empty when the line has no name
    std::string text;
};

struct SettingsText {
    UnicodeString printer;  // of the head; empty when it names none
    std::vector<Assignment> assignments;
    std::vector<LineFault> faults;
    bool is_damaged = false;  // some bytes are not UTF-8, or some line is no line of this form
};

// Reads to the end whatever the lines hold. Line ends are LF or CR LF; blank lines and comments
// count as lines.
SettingsText ParseSettings(const std::string& bytes);

struct SettingsHead {
    UnicodeString printer, driver, user;
};

std::string FormatSettings(const SettingsHead& head, const SettingsBlock& block);

// Whether `bytes` are this text rather than a block, which has zero bytes.
bool IsSettingsText(const std::string& bytes);

// "line 7: " in front of a message, or nothing for line 0.
std::string LinePrefix(int line);

}  // namespace qv
