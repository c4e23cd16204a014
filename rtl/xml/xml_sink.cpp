#include "xml/xml_sink.h"

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "mox_classes/streams.h"

namespace {

// Code units that make a write worth while, and the most that are converted at a time.
constexpr std::size_t kPiece = 32768;

// What a code unit below 128 becomes; null is the unit itself.
using TEscapes = std::array<const WCHAR*, 128>;
constexpr TEscapes kEscapeTexts = [] {
    TEscapes texts{};
    texts['>'] = TEXT("&gt;");
    texts['<'] = TEXT("&lt;");
    texts['"'] = TEXT("&quot;");
    texts['&'] = TEXT("&amp;");
    texts['\''] = TEXT("&apos;");
    texts['\r'] = TEXT("");
    return texts;
}();

bool IsLead(WCHAR unit) {
    return (unit & 0xFC00) == 0xD800;
}

// Writes the text piece by piece, never between the halves of a surrogate pair.
long long WriteText(Classes::TStream* stream, const WCHAR* text, std::size_t length,
                    TCodePage code_page) {
    const bool utf16 = code_page == System::kCodePageUtf16;
    if (!utf16 && code_page != System::kCodePageUtf8 && code_page != System::kCodePageAnsi)
        return 0;
    std::vector<char> bytes;
    if (!utf16) bytes.resize(std::min(length, kPiece) * 3);
    long long written = 0;
    while (length > 0) {
        std::size_t piece = std::min(length, kPiece);
        if (piece < length && IsLead(text[piece - 1])) --piece;
        const int units = static_cast<int>(piece);
        if (utf16) {
            written += stream->Write(text, units * 2);
        } else {
            const int count = WideCharToMultiByte(CP_UTF8, 0, text, units, bytes.data(),
                                                  static_cast<int>(bytes.size()), nullptr, nullptr);
            written += stream->Write(bytes.data(), count);
        }
        text += piece;
        length -= piece;
    }
    return written;
}

int Clamped(long long amount) {
    return static_cast<int>(std::min<long long>(amount, std::numeric_limits<int>::max()));
}

}  // namespace

int UnicodeStringToStream(Classes::TStream* stream, const UnicodeString& text,
                          TCodePage code_page) {
    return Clamped(
        WriteText(stream, text.t_str(), static_cast<std::size_t>(text.Length()), code_page));
}

void TXmlSink::PutRun(const WCHAR* text, int length) {
    text_.append(text, static_cast<std::size_t>(length));
}

int TXmlSink::PutEscaped(const UnicodeString& text) {
    const WCHAR* first = text.t_str();
    const WCHAR* last = first + text.Length();
    while (first < last && last[-1] <= 0x20) --last;
    while (first < last && *first <= 0x20) ++first;
    int lines = 1;
    const WCHAR* run = first;
    for (; first < last; ++first) {
        if (*first >= 128) continue;
        if (*first == TEXT('\n')) ++lines;
        const WCHAR* replacement = kEscapeTexts[*first];
        if (replacement == nullptr) continue;
        text_.append(run, first);
        text_.append(replacement);
        run = first + 1;
    }
    text_.append(run, last);
    return lines;
}

void TXmlSink::Checkpoint() {
    if (stream_ == nullptr || text_.size() < kPiece) return;
    written_ += WriteText(stream_, text_.data(), text_.size(), code_page_);
    text_.clear();
}

int TXmlSink::Finish() {
    if (stream_ != nullptr) {
        written_ += WriteText(stream_, text_.data(), text_.size(), code_page_);
    } else {
        written_ += static_cast<long long>(text_.size());
        *out_ += UnicodeString(text_.data(), static_cast<long long>(text_.size()));
    }
    text_.clear();
    return Clamped(written_);
}
