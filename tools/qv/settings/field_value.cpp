#include "settings/field_value.h"

#include "driver_devmode/field_check.h"

namespace qv {

using driver_devmode::TFieldCheck;

namespace {

std::string Values(int count) {
    return count == 1 ? "one value" : std::to_string(count) + " values";
}

}  // namespace

std::string ValueFault(const Field& field, const UnicodeString& text) {
    TQVDM scratch;
    // Whether the texts fit into the pool together depends on the block.
    scratch.Directory = scratch.FileName = scratch.Target = UnicodeString();
    switch (driver_devmode::CheckField(scratch, NameToSet(field), text)) {
        case TFieldCheck::Taken:
            return "";
        case TFieldCheck::TooMany:
            return "it takes " + Values(field.Count);
        case TFieldCheck::Cut:
        case TFieldCheck::NoRoom:
            return "it is too long, or holds a zero character";
        default:
            return "no value of the field";
    }
}

}  // namespace qv
