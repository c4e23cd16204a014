// The scanner under the XML parser: finds the next byte of a class and knows how many bytes each
// character takes in the input's encoding.
#pragma once

#include <string_view>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"
#include "xml/byte_block.h"

using System::TCodePage;

// A set of byte values: a non-zero entry makes the byte a member. Plain value.
class QV_API TSearchSet {
  public:
    unsigned char& operator[](int i) { return members_[i]; }
    bool Contains(unsigned char octet) const { return members_[octet] != 0; }
    // Bytes 33 to 126 and the UTF-8 lead bytes: what is neither blank nor control.
    void NoneControl(unsigned char v);
    void Number(unsigned char v) { Fill('0', '9', v); }
    void Alpha(unsigned char v);
    void UpperAlpha(unsigned char v) { Fill('A', 'Z', v); }
    void LowerAlpha(unsigned char v) { Fill('a', 'z', v); }
    // The lead bytes of multi-byte characters, 192 to 247.
    void Utf8NonAnsi(unsigned char v) { Fill(192, 247, v); }

  private:
    void Fill(int first, int last, unsigned char v) {
        for (int i = first; i <= last; ++i) members_[i] = v;
    }

    unsigned char members_[256] = {};
};

// Scans a buffer that it does not own; positions are bytes from the buffer's start. Never reads
// outside the buffer, and no position passes its end. Spans are always decoded as UTF-8.
class QV_API TAsciiCharFinder {
  public:
    TAsciiCharFinder();
    // `size` below 0 counts as 0.
    TAsciiCharFinder(const void* buffer, int size);

    // Skips a byte-order mark at the position and settles code page and character lengths: a mark
    // wins over `wanted` (0 = none), and without either the content decides.
    void CheckCodePage(TCodePage wanted);
    // Advances to the next member of the set and returns it; 255 at the end. A byte that cannot
    // start a character throws "Invalid char found" and stays at the position.
    unsigned char Find(const TSearchSet* set);
    // The same for a set of a few ASCII characters, in input that is scanned by bytes.
    template <class... Chars>
    unsigned char FindAny(Chars... wanted) {
        const unsigned char* const end = FBuffer + FSize;
        const unsigned char* at = FBuffer + FPos;
        while (true) {
            at = FindOrOdd(at, end, wanted...);
            const bool found = at < end && ((*at == static_cast<unsigned char>(wanted)) || ...);
            if (at == end || found) {
                FPos = static_cast<int>(at - FBuffer);
                return found ? *at : static_cast<unsigned char>(255);
            }
            at = PassOdd(at, end);
        }
    }
    // Whether well-formed UTF-8 is passed over character by character, or byte by byte.
    bool TakesUtf8() const;
    // Moves on to the next byte that is not one of 1 to 32, which are characters in any encoding.
    void SkipBlanks() {
        FPos = static_cast<int>(SkipBlank(FBuffer + FPos, FBuffer + FSize) - FBuffer);
    }
    // The same for UTF-16 input; 65535 at the end, and at once for any other code page.
    unsigned short FindW(const TSearchSet* set);
    // A span from the position plus offset ...
    void BeginRead(int offset) { FMark = At(offset); }
    // ... to the position plus offset.
    UnicodeString EndRead(int offset) const { return Read(FMark, At(offset)); }
    // The bytes from `from` up to `to`, clipped to the buffer, decoded; null when there are none.
    UnicodeString Read(int from, int to) const;
    unsigned char Current() const { return b(0); }
    unsigned char Next() const { return b(1); }
    unsigned char Prev() const { return b(-1); }
    // The byte at position plus offset, 0 outside the buffer.
    char c(int offset) const { return static_cast<char>(b(offset)); }
    unsigned char b(int offset) const {
        // In front of the start wraps to far behind the end.
        const unsigned at = static_cast<unsigned>(FPos) + static_cast<unsigned>(offset);
        return at < static_cast<unsigned>(FSize) ? FBuffer[at] : static_cast<unsigned char>(0);
    }
    bool Eof() const { return FPos >= FSize; }

    int Position() const { return FPos; }
    int Size() const { return FSize; }
    // Moves on to the next byte that belongs to the set, which has 33 to 126 and no blank.
    void FindSignificant(const TSearchSet* set) {
        SkipBlanks();
        const unsigned char octet = Current();
        if (octet <= 32 || octet >= 127) Find(set);
    }
    // To any position of the input.
    void MoveTo(int position) { FPos = position; }
    // Moves on by `count` bytes, at most to the end.
    void Skip(int count) { FPos = count < FSize - FPos ? FPos + count : FSize; }
    TCodePage CodePage() const { return FCodePage; }
    // The bytes from `from` on; for a position inside the buffer.
    const unsigned char* Bytes(int from) const { return FBuffer + from; }

  protected:
    int FMark = 0;
    const unsigned char* FBuffer = nullptr;
    int FSize = 0;
    int FPos = 0;
    TCodePage FCodePage = System::kCodePageAnsi;
    unsigned char FStep[256];  // bytes of a character that starts with this byte; 0 = none does

  private:
    // The position plus offset, -1 and the end standing for all that lies outside.
    int At(int offset) const {
        const long long at = static_cast<long long>(FPos) + offset;
        return at < 0 ? -1 : at > FSize ? FSize : static_cast<int>(at);
    }
    // Steps over characters that begin with 0 or no ASCII, as Find does.
    const unsigned char* PassOdd(const unsigned char* at, const unsigned char* end);
    unsigned short FindUnit(const TSearchSet* set, int low_byte);
    TCodePage GuessFromContent() const;
    void StepByAnsi();
    void StepByUtf8();
};

// Spans of the scanned buffer are positions from its start.

// Takes blanks and control characters off both ends.
inline void XmlTrimSpan(const TAsciiCharFinder& finder, int& from, int& to) {
    const unsigned char* bytes = finder.Bytes(0);
    while (from < to && bytes[from] <= 0x20) ++from;
    while (from < to && bytes[to - 1] <= 0x20) --to;
}

inline std::string_view XmlSpanBytes(const TAsciiCharFinder& finder, int from, int to) {
    return {reinterpret_cast<const char*>(finder.Bytes(from)), static_cast<std::size_t>(to - from)};
}
