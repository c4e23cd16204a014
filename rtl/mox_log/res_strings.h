// Message texts that are looked up at run time by domain and number, so that they can be translated
// without rebuilding.
//
// A text that is found this way may ask for other arguments than the code gives: check it with
// ExtractFormatStrings and System::FormatFits before it is used as a format.
#pragma once

#include <windows.h>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace Mox {

// Names one text. Every conversion looks the text up afresh; "" when there is none.
class QV_API TMoxStringID {
  public:
    // The default text documents the message at its id; it is not kept.
    TMoxStringID(UnicodeString domain, unsigned short id, UnicodeString defaultText);

    operator UnicodeString() const { return AsString(); }
    UnicodeString AsString() const;
    bool IsEmpty() const;
    // Never null; stays valid until the next w_str() of this object, which one thread at a time may
    // call.
    const WCHAR* w_str() const;

  private:
    UnicodeString domain_;
    DWORD id_;
    mutable UnicodeString text_;
};

// The conversion specifications of a format text in order, without "%%": "a %s of %-5d" gives
// "%s%-5d". A '%' with no conversion behind it ends the walk.
QV_API UnicodeString ExtractFormatStrings(const UnicodeString& format);

}  // namespace Mox
