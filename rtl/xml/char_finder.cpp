#include "xml/char_finder.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "mox_classes/text/sysutils.h"
#include "mox_classes/text/utf8_text.h"

using System::kCodePageAnsi;
using System::kCodePageAscii;
using System::kCodePageUtf16;
using System::kCodePageUtf16BigEndian;
using System::kCodePageUtf32;
using System::kCodePageUtf32BigEndian;
using System::kCodePageUtf8;

namespace {

bool IsAscii(const unsigned char* bytes, int count) {
    const unsigned char* const end = bytes + count;
    TByteMarks high = TByteBlock::None();
    for (; end - bytes >= TByteBlock::kSize; bytes += TByteBlock::kSize) {
        high = high | TByteBlock(bytes).NotAscii();
    }
    std::uint64_t rest = 0;
    for (; end - bytes >= 4; bytes += 4) {
        std::uint32_t word;
        std::memcpy(&word, bytes, sizeof word);
        rest |= word;
    }
    for (; bytes < end; ++bytes) rest |= *bytes;
    return high.Bits() == 0 && (rest & 0x80808080u) == 0;
}

// The last block overlaps the one before it: short texts, which most are, take no loop.
void WidenAscii(const unsigned char* bytes, int count, WCHAR* units) {
    if (count < TByteBlock::kHalf) {
        for (int i = 0; i < count; ++i) units[i] = bytes[i];
        return;
    }
    for (std::ptrdiff_t i = 0; i < count - TByteBlock::kHalf; i += TByteBlock::kHalf) {
        TByteBlock::WidenHalf(bytes + i, units + i);
    }
    const std::ptrdiff_t last = count - TByteBlock::kHalf;
    TByteBlock::WidenHalf(bytes + last, units + last);
}

}  // namespace

void TSearchSet::NoneControl(unsigned char v) {
    Fill(33, 126, v);
    Utf8NonAnsi(v);
}

void TSearchSet::Alpha(unsigned char v) {
    UpperAlpha(v);
    LowerAlpha(v);
}

TAsciiCharFinder::TAsciiCharFinder() {
    std::fill_n(FStep, 256, static_cast<unsigned char>(1));
}

TAsciiCharFinder::TAsciiCharFinder(const void* buffer, int size) : TAsciiCharFinder() {
    FBuffer = static_cast<const unsigned char*>(buffer);
    FSize = buffer == nullptr ? 0 : std::max(size, 0);
}

void TAsciiCharFinder::CheckCodePage(TCodePage wanted) {
    const int mark = Sysutils::CheckBOM(&FCodePage, FBuffer + FPos, FSize - FPos);
    Skip(mark);
    if (wanted != kCodePageAnsi && mark == 0) FCodePage = wanted;
    if (FCodePage == kCodePageAscii) FCodePage = GuessFromContent();
    if (FCodePage == kCodePageAscii) StepByAnsi();
    if (FCodePage == kCodePageUtf8) StepByUtf8();
}

TCodePage TAsciiCharFinder::GuessFromContent() const {
    const int rest = FSize - FPos;
    const unsigned char* p = FBuffer + FPos;
    if (rest >= 4 && p[0] != 0 && p[1] == 0 && p[2] != 0 && p[3] == 0) return kCodePageUtf16;
    if (rest >= 4 && p[0] == 0 && p[1] != 0 && p[2] == 0 && p[3] != 0) {
        return kCodePageUtf16BigEndian;
    }
    if (rest < 8) return kCodePageAscii;
    const auto zero = [p](int from, int to) {
        return std::all_of(p + from, p + to, [](unsigned char octet) { return octet == 0; });
    };
    if (zero(1, 4) && zero(5, 8)) return kCodePageUtf32;
    if (zero(0, 3) && zero(4, 7)) return kCodePageUtf32BigEndian;
    return kCodePageAscii;
}

void TAsciiCharFinder::StepByAnsi() {
    for (int octet = 0; octet < 256; ++octet) {
        char text[] = {static_cast<char>(octet), 'a', 0};
        FStep[octet] = static_cast<unsigned char>(CharNextA(text) - text);
    }
}

void TAsciiCharFinder::StepByUtf8() {
    const auto fill = [this](int first, int last, unsigned char step) {
        std::fill(FStep + first, FStep + last + 1, step);
    };
    fill(0x00, 0x7F, 1);
    fill(0x80, 0xBF, 0);
    fill(0xC0, 0xDF, 2);
    fill(0xE0, 0xEF, 3);
    fill(0xF0, 0xF7, 4);
    fill(0xF8, 0xFF, 0);
}

bool TAsciiCharFinder::TakesUtf8() const {
    return FCodePage == kCodePageUtf8 ||
           std::all_of(FStep + 0x80, FStep + 256, [](unsigned char step) { return step == 1; });
}

unsigned char TAsciiCharFinder::Find(const TSearchSet* set) {
    if (FCodePage == kCodePageUtf16) return static_cast<unsigned char>(FindUnit(set, 0));
    if (FCodePage == kCodePageUtf16BigEndian) return static_cast<unsigned char>(FindUnit(set, 1));
    const unsigned char* const end = FBuffer + FSize;
    const unsigned char* at = FBuffer + FPos;
    while (at < end && !set->Contains(*at)) {
        const std::ptrdiff_t step = FStep[*at];
        if (step == 0) {
            FPos = static_cast<int>(at - FBuffer);
            throw UnicodeString("Invalid char found");
        }
        at += std::min(step, end - at);
    }
    FPos = static_cast<int>(at - FBuffer);
    return at < end ? *at : static_cast<unsigned char>(255);
}

const unsigned char* TAsciiCharFinder::PassOdd(const unsigned char* at, const unsigned char* end) {
    while (at < end && (*at == 0 || *at >= 0x80)) {
        const std::ptrdiff_t step = FStep[*at];
        if (step == 0) {
            FPos = static_cast<int>(at - FBuffer);
            throw UnicodeString("Invalid char found");
        }
        at += std::min(step, end - at);
    }
    return at;
}

unsigned short TAsciiCharFinder::FindW(const TSearchSet* set) {
    if (FCodePage == kCodePageUtf16) return FindUnit(set, 0);
    if (FCodePage == kCodePageUtf16BigEndian) return FindUnit(set, 1);
    return 65535;
}

unsigned short TAsciiCharFinder::FindUnit(const TSearchSet* set, int low_byte) {
    for (; FSize - FPos >= 2; FPos += 2) {
        const unsigned char low = FBuffer[FPos + low_byte];
        if (FBuffer[FPos + 1 - low_byte] == 0 && set->Contains(low)) return low;
    }
    FPos = FSize;
    return 65535;
}

UnicodeString TAsciiCharFinder::Read(int from, int to) const {
    from = std::max(from, 0);
    to = std::min(to, FSize);
    UnicodeString text;
    if (from >= to) return text;
    const unsigned char* first = FBuffer + from;
    const int bytes = to - from;
    if (IsAscii(first, bytes)) {
        text.SetLength(bytes);
        WidenAscii(first, bytes, text.data());
        return text;
    }
    return System::StringFromUtf8(reinterpret_cast<const char*>(first), bytes);
}
