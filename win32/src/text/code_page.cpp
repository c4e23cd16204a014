#include "text/code_page.h"

#include <algorithm>
#include <array>
#include <cstring>

#include <iconv.h>

namespace host {

namespace {

class Page1252 : public NarrowPage {
  public:
    WCHAR Decode(std::string_view text, std::size_t& used) override {
        const auto byte = static_cast<unsigned char>(text[0]);
        used = 1;
        return byte >= 0x80 && byte < 0xA0 ? kHigh[byte - 0x80] : byte;
    }
    std::size_t Encode(WCHAR unit, char* bytes) override {
        if (unit < 0x80 || (unit >= 0xA0 && unit <= 0xFF)) {
            bytes[0] = static_cast<char>(unit);
            return 1;
        }
        const auto* found = std::find(kHigh.begin(), kHigh.end(), unit);
        if (found == kHigh.end()) return 0;
        bytes[0] = static_cast<char>(0x80 + (found - kHigh.begin()));
        return 1;
    }

  private:
    // The characters of the bytes 0x80 to 0x9F.
    static constexpr std::array<WCHAR, 32> kHigh = {
        0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
};

// A code page of the C library, as a pair of converters.
class LibraryPage : public NarrowPage {
  public:
    LibraryPage(UINT code_page, const char* name)
        : code_page_(code_page),
          to_wide_(iconv_open("UTF-16LE", name)),
          to_narrow_(iconv_open(name, "UTF-16LE")) {}
    LibraryPage(const LibraryPage&) = delete;
    LibraryPage& operator=(const LibraryPage&) = delete;
    ~LibraryPage() override {
        if (to_wide_ != kFailed) iconv_close(to_wide_);
        if (to_narrow_ != kFailed) iconv_close(to_narrow_);
    }
    bool Valid() const { return to_wide_ != kFailed && to_narrow_ != kFailed; }

    WCHAR Decode(std::string_view text, std::size_t& used) override {
        used = IsLeadByte(code_page_, text[0]) && text.size() > 1 ? 2 : 1;
        char source[2];
        std::copy_n(text.data(), used, source);
        WCHAR unit = kNone;
        char result[sizeof unit];
        if (Convert(to_wide_, source, used, result, sizeof result) != sizeof result) return kNone;
        std::memcpy(&unit, result, sizeof unit);
        return unit;
    }
    std::size_t Encode(WCHAR unit, char* bytes) override {
        char source[sizeof unit];
        std::memcpy(source, &unit, sizeof unit);
        return Convert(to_narrow_, source, sizeof source, bytes, 2);
    }

  private:
    // Returns the number of bytes written; 0 when the whole source does not convert into the room.
    static std::size_t Convert(iconv_t converter, char* source, std::size_t count, char* result,
                               std::size_t room) {
        const std::size_t given = room;
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        if (iconv(converter, &source, &count, &result, &room) == static_cast<std::size_t>(-1)) {
            return 0;
        }
        return count == 0 ? given - room : 0;
    }

    inline static const iconv_t kFailed = reinterpret_cast<iconv_t>(-1);
    UINT code_page_;
    iconv_t to_wide_;
    iconv_t to_narrow_;
};

// The C library's name of a page; empty for a page that is not a narrow one.
std::string LibraryName(UINT code_page) {
    if (code_page == 20127) return "ASCII";
    if (code_page == 20866) return "KOI8-R";
    if (code_page == 21866) return "KOI8-U";
    if (code_page >= 28591 && code_page <= 28605) {
        return "ISO-8859-" + std::to_string(code_page - 28590);
    }
    if (code_page == 1361) return "JOHAB";
    if (code_page < 437 || code_page > 1258 || code_page == 1200 || code_page == 1201) return "";
    return "CP" + std::to_string(code_page);
}

struct ByteRange {
    UINT code_page;
    BYTE low, high;
};
constexpr ByteRange kLeadBytes[] = {
    {932, 0x81, 0x9F}, {932, 0xE0, 0xFC},  {936, 0x81, 0xFE},  {949, 0x81, 0xFE},
    {950, 0x81, 0xFE}, {1361, 0x84, 0xD3}, {1361, 0xD8, 0xDE}, {1361, 0xE0, 0xF9},
};

}  // namespace

bool IsLeadByte(UINT code_page, char byte) {
    const auto value = static_cast<BYTE>(byte);
    return std::any_of(std::begin(kLeadBytes), std::end(kLeadBytes), [&](const ByteRange& range) {
        return range.code_page == code_page && value >= range.low && value <= range.high;
    });
}

std::unique_ptr<NarrowPage> OpenNarrowPage(UINT code_page) {
    if (code_page == 1252) return std::make_unique<Page1252>();
    const std::string name = LibraryName(code_page);
    if (name.empty()) return nullptr;
    auto page = std::make_unique<LibraryPage>(code_page, name.c_str());
    if (!page->Valid()) return nullptr;
    return page;
}

Conversion NarrowToWide(NarrowPage& page, std::string_view text, WCHAR* buffer, std::size_t size,
                        bool strict) {
    std::size_t length = 0;
    for (std::size_t used = 1; !text.empty(); text.remove_prefix(used), ++length) {
        WCHAR unit = page.Decode(text, used);
        if (unit == NarrowPage::kNone) {
            if (strict) return {0, ERROR_NO_UNICODE_TRANSLATION};
            unit = '?';
        }
        if (buffer == nullptr) continue;
        if (length == size) return {0, ERROR_INSUFFICIENT_BUFFER};
        buffer[length] = unit;
    }
    return {length, NO_ERROR};
}

Conversion WideToNarrow(NarrowPage& page, std::basic_string_view<WCHAR> text, char* buffer,
                        std::size_t size, std::string_view fallback, bool& used_fallback) {
    std::size_t length = 0;
    for (const WCHAR unit : text) {
        char bytes[2];
        std::size_t count = page.Encode(unit, bytes);
        if (count == 0) {
            used_fallback = true;
            count = fallback.copy(bytes, sizeof bytes);
        }
        if (buffer != nullptr) {
            if (size - length < count) return {0, ERROR_INSUFFICIENT_BUFFER};
            std::copy_n(bytes, count, buffer + length);
        }
        length += count;
    }
    return {length, NO_ERROR};
}

}  // namespace host
