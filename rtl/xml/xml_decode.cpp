#include "xml/xml_decode.h"

#include <limits>

#include "mox_classes/text/unicode_string.h"

using System::TCodePage;

namespace {

constexpr char32_t kReplacement = 0xFFFD;

int Utf8Length(char32_t point) {
    return point < 0x80 ? 1 : point < 0x800 ? 2 : point < 0x10000 ? 3 : 4;
}

void AppendUtf8(std::string& text, char32_t point) {
    const auto tail = [&](int shift) {
        text.push_back(static_cast<char>(0x80 | ((point >> shift) & 0x3F)));
    };
    switch (Utf8Length(point)) {
        case 1:
            text.push_back(static_cast<char>(point));
            break;
        case 2:
            text.push_back(static_cast<char>(0xC0 | (point >> 6)));
            tail(0);
            break;
        case 3:
            text.push_back(static_cast<char>(0xE0 | (point >> 12)));
            tail(6);
            tail(0);
            break;
        default:
            text.push_back(static_cast<char>(0xF0 | (point >> 18)));
            tail(12);
            tail(6);
            tail(0);
    }
}

}  // namespace

bool IsWideCodePage(TCodePage code_page) {
    return code_page == System::kCodePageUtf16 || code_page == System::kCodePageUtf16BigEndian ||
           code_page == System::kCodePageUtf32 || code_page == System::kCodePageUtf32BigEndian;
}

TXmlDecodedText::TXmlDecodedText(const unsigned char* bytes, int size, TCodePage code_page)
    : bytes_(bytes),
      size_(size),
      width_(code_page == System::kCodePageUtf16 || code_page == System::kCodePageUtf16BigEndian
                 ? 2
                 : 4),
      big_endian_(code_page == System::kCodePageUtf16BigEndian ||
                  code_page == System::kCodePageUtf32BigEndian) {
    utf8_.reserve(static_cast<std::size_t>(size_ / width_));
    char32_t point = 0;
    for (int at = 0; Next(at, point);) AppendUtf8(utf8_, point);
    if (utf8_.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        throw UnicodeString("Out of length");
    }
}

int TXmlDecodedText::Original(int at) const {
    int original = 0;
    int next = 0;
    char32_t point = 0;
    for (int decoded = 0; decoded < at && Next(next, point);) {
        decoded += Utf8Length(point);
        if (decoded <= at) original = next;
    }
    return original;
}

bool TXmlDecodedText::Next(int& at, char32_t& point) const {
    if (!Unit(at, point)) return false;
    const bool lead = point >= 0xD800 && point < 0xDC00;
    if (width_ == 2 && lead) {
        int behind = at;
        char32_t trail = 0;
        if (Unit(behind, trail) && trail >= 0xDC00 && trail < 0xE000) {
            at = behind;
            point = 0x10000 + ((point - 0xD800) << 10) + (trail - 0xDC00);
            return true;
        }
    }
    if ((point >= 0xD800 && point < 0xE000) || point > 0x10FFFF) point = kReplacement;
    return true;
}

bool TXmlDecodedText::Unit(int& at, char32_t& unit) const {
    if (size_ - at < width_) return false;
    unit = 0;
    for (int i = 0; i < width_; ++i) {
        const int octet = big_endian_ ? at + i : at + width_ - 1 - i;
        unit = unit << 8 | bytes_[octet];
    }
    at += width_;
    return true;
}
