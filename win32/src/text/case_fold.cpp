#include "text/case_fold.h"

#include <locale.h>
#include <wctype.h>

#include <algorithm>

namespace host {

char16_t FoldFileNameUnit(char16_t unit) {
    if (unit < 0x80) {
        return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 0x20) : unit;
    }
    static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (unicode == nullptr) return unit;
    // Only letters that are each other's form: dotless i and long s are no I and no S here.
    const wint_t upper = towupper_l(unit, unicode);
    return upper <= 0xFFFF && towlower_l(upper, unicode) == unit ? static_cast<char16_t>(upper)
                                                                 : unit;
}

bool SameFileName(std::u16string_view a, std::u16string_view b) {
    return a.size() == b.size() && CompareFolded(a, b) == 0;
}

int CompareFolded(std::u16string_view a, std::u16string_view b) {
    const std::size_t shared = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < shared; ++i) {
        if (a[i] == b[i]) continue;
        const int difference = FoldFileNameUnit(a[i]) - FoldFileNameUnit(b[i]);
        if (difference != 0) return difference;
    }
    return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
}

}  // namespace host
