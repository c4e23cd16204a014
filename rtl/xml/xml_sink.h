// Where the writer puts its text: encoded straight into one buffer, which goes to a stream in large
// pieces or becomes a string.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>

#include "mox_classes/unicode_string.h"

namespace Classes {
class TStream;
}
using System::TCodePage;

// Unit is what the text consists of on its way out: char for UTF-8, WCHAR for UTF-16. Text that is
// still held when the sink is destroyed is lost. Stream exceptions pass through.
template <class Unit>
class TXmlSink {
  public:
    // For a string, or for a stream that stays the caller's.
    // cppcheck-suppress uninitMemberVar ; room that is written before it is read
    TXmlSink() = default;
    // cppcheck-suppress uninitMemberVar ; room that is written before it is read
    explicit TXmlSink(Classes::TStream* stream) : stream_(stream) {}
    TXmlSink(const TXmlSink&) = delete;
    TXmlSink& operator=(const TXmlSink&) = delete;

    // An ASCII literal.
    template <std::size_t size>
    void PutMarkup(const char (&markup)[size]) {
        Reserve(size + kOdd);
        if (lead_ != 0) at_ = PutOdd(0, at_);
        for (std::size_t i = 0; i + 1 < size; ++i) at_[i] = static_cast<Unit>(markup[i]);
        at_ += size - 1;
    }
    // What is encoded already.
    void PutEncoded(const Unit* units, std::size_t count) {
        Reserve(count + kOdd);
        if (lead_ != 0) at_ = PutOdd(0, at_);
        at_ = std::copy_n(units, count, at_);
    }
    void Put(const UnicodeString& text) { Put(text, text.Length()); }
    // Its first `length` units.
    void Put(const UnicodeString& text, int length);
    // Trimmed and escaped; the number of lines of the text.
    int PutEscaped(const UnicodeString& text);
    // Hands on the rest; the bytes that the stream took, at most 2147483647.
    int Finish();
    // Appends the text to `out`; its length.
    int FinishInto(UnicodeString& out);

  private:
    // Room for what one unit can become, and for one that is still to come.
    static constexpr std::size_t kOdd = 8;
    static constexpr std::size_t kFirst = 512;

    template <bool escape>
    int PutUnits(const WCHAR* text, int length);
    // Puts a unit that is no ASCII, together with a lead surrogate that came before it; 0 only ends
    // such a lead.
    Unit* PutOdd(WCHAR unit, Unit* out);
    void Reserve(std::size_t units) {
        if (static_cast<std::size_t>(end_ - at_) < units) MakeRoom(units);
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
