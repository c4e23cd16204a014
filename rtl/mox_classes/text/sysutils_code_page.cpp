#include "mox_classes/text/sysutils_code_page.h"

#include <cstring>

namespace Sysutils {

namespace {

struct TMark {
    System::TCodePage code_page;
    int length;
    unsigned char bytes[4];
};

// UTF-32 is tested first, because the mark of UTF-32LE begins with the mark of UTF-16LE.
constexpr TMark kMarks[] = {
    {System::kCodePageUtf32, 4, {0xFF, 0xFE, 0, 0}},
    {System::kCodePageUtf32BigEndian, 4, {0, 0, 0xFE, 0xFF}},
    {System::kCodePageUtf8, 3, {0xEF, 0xBB, 0xBF}},
    {System::kCodePageUtf16, 2, {0xFF, 0xFE}},
    {System::kCodePageUtf16BigEndian, 2, {0xFE, 0xFF}},
};

}  // namespace

int CheckBOM(System::TCodePage* code_page, const void* data, int size) {
    *code_page = System::kCodePageAscii;
    if (data == nullptr) return 0;
    for (const TMark& mark : kMarks) {
        if (size < mark.length) continue;
        if (std::memcmp(data, mark.bytes, static_cast<std::size_t>(mark.length)) == 0) {
            *code_page = mark.code_page;
            return mark.length;
        }
    }
    return 0;
}

}  // namespace Sysutils
