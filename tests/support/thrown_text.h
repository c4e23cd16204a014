// What an action of the library throws.
#pragma once

#include "mox_classes/text/unicode_string.h"
#include "support/string_print.h"

namespace test {

/// The text that `action` throws; a text of its own when it throws nothing.
template <class Action>
UnicodeString ThrownText(Action action) {
    try {
        action();
    } catch (const UnicodeString& text) {
        return text;
    }
    return TEXT("(nothing thrown)");
}

}  // namespace test
