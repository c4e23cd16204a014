#include "text/case_fold.h"

#include <algorithm>

#include "root/host_path.h"

namespace host {

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
