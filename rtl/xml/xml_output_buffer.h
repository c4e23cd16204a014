// The buffer that the writer fills. Text is encoded straight into it; then it goes to a stream in
// large pieces or becomes a string.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

#include "mox_classes/text/unicode_string.h"
#include "xml/xml_encode.h"

namespace Classes {
class TStream;
}
using System::TCodePage;

// Unit is the form of the output: char for UTF-8, WCHAR for UTF-16. Text that has not been written
// by Finish is lost when the buffer is destroyed. Stream exceptions pass through.
template <class Unit>
class TXmlOutputBuffer {
  public:
    // For a string, or for a stream that stays the caller's.
    // cppcheck-suppress uninitMemberVar ; room that is written before it is read
    TXmlOutputBuffer() = default;
    // cppcheck-suppress uninitMemberVar ; room that is written before it is read
    explicit TXmlOutputBuffer(Classes::TStream* stream) : stream_(stream) {}
    TXmlOutputBuffer(const TXmlOutputBuffer&) = delete;
    TXmlOutputBuffer& operator=(const TXmlOutputBuffer&) = delete;

    // Puts an ASCII literal.
    template <std::size_t size>
    void PutMarkup(const char (&markup)[size]) {
        at_ = Markup(markup, Begin(size));
    }
    // Puts a name between two ASCII literals, which is how most tags look.
    template <std::size_t before_size, std::size_t behind_size>
    void PutName(const char (&before)[before_size], const UnicodeString& name,
                 const char (&behind)[behind_size]) {
        const auto length = static_cast<std::size_t>(name.Length());
        const WCHAR* at = name.t_str();
        Unit* out = Markup(before, Begin(before_size + length + behind_size));
        if (xml_encode::PutPlain<false>(at, at + length, out)) {
            at_ = Markup(behind, out);
        } else {
            PutMarkup(before);
            Put(name, name.Length());
            PutMarkup(behind);
        }
    }
    // Puts units that are encoded already. The buffer may read kStep units behind them.
    void PutEncoded(const Unit* units, std::size_t count) {
        Unit* const out = Begin(count);
        for (std::size_t i = 0; i < count; i += kStep) {
            std::memcpy(out + i, units + i, kStep * sizeof(Unit));
        }
        at_ = out + count;
    }
    void Put(const UnicodeString& text) { Put(text, text.Length()); }
    // Puts the first `length` units of the text.
    void Put(const UnicodeString& text, int length);
    // Puts the text trimmed and escaped. Returns the number of its lines.
    int PutEscaped(const UnicodeString& text);
    static constexpr std::size_t kStep = 16;

    // Writes the rest to the stream. Returns the bytes that the stream took, at most 2147483647.
    int Finish();
    // Appends the text to `out`. Returns the length of the text in units.
    int FinishInto(UnicodeString& out);

  private:
    template <std::size_t size>
    static Unit* Markup(const char (&markup)[size], Unit* out) {
        for (std::size_t i = 0; i + 1 < size; ++i) out[i] = static_cast<Unit>(markup[i]);
        return out + size - 1;
    }

    // Room that is kept free behind the units that a caller asks for: one step, and the replacement
    // of a lead surrogate without its other half.
    static constexpr std::size_t kSlack = kStep + 8;
    static constexpr std::size_t kFirst = 512;

    template <bool escape>
    int PutUnits(const WCHAR* text, std::ptrdiff_t length);
    // Makes room for `units` units that do not continue a text that was put before.
    Unit* Begin(std::size_t units) {
        Reserve(units);
        if (lead_ != 0) PutLead();
        return at_;
    }
    void PutLead();
    void Reserve(std::size_t units) {
        if (static_cast<std::size_t>(end_ - at_) < units + kSlack) MakeRoom(units + kSlack);
    }
    void MakeRoom(std::size_t units);
    void Flush();

    Classes::TStream* stream_ = nullptr;
    Unit short_text_[kFirst];
    std::unique_ptr<Unit[]> long_text_;  // in place of short_text_, once it is longer
    Unit* first_ = short_text_;
    Unit* at_ = short_text_;
    Unit* end_ = short_text_ + kFirst;
    long long written_ = 0;
    WCHAR lead_ = 0;  // UTF-8: a lead surrogate whose other half may follow
};
