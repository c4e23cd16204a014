#include "mox_classes/format/format_scan.h"

#include "mox_classes/text/sysutils_text.h"

bool FindField(const WCHAR* text, TFieldSpan& field) {
    // A '{' inside the name of the last field cannot begin a field that ends later, so the old
    // result is used again.
    field.begin = Sysutils::StrScan(text, '{');
    if (field.begin == nullptr) return false;
    if (field.begin < field.spec) return true;
    field.spec = field.begin + 1;
    while (*field.spec != '%' && *field.spec != '#' && *field.spec != '}') {
        if (*field.spec++ == 0) return false;
    }
    const WCHAR* closing = Sysutils::StrScan(field.spec, '}');
    if (closing == nullptr) return false;
    field.end = closing + 1;
    return true;
}
