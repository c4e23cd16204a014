#include "xml/xml_output_buffer.h"

#include <limits>
#include <utility>

#include "mox_classes/containers/streams.h"

namespace {

// The number of units that are written to the stream at once. A buffer of this size stays in the
// processor's cache.
constexpr std::size_t kPiece = 65536;
// The number of units that are encoded before the room is checked again.
constexpr std::ptrdiff_t kRun = 1024;

int Clamped(long long amount) {
    return static_cast<int>(std::min<long long>(amount, std::numeric_limits<int>::max()));
}

}  // namespace

static_assert(xml_encode::kSlack <= TXmlOutputBuffer<char>::kStep);

template <class Unit>
template <bool escape>
int TXmlOutputBuffer<Unit>::PutUnits(const WCHAR* text, std::ptrdiff_t length) {
    xml_encode::TState state{1, lead_};
    for (const WCHAR* const end = text + length; text < end;) {
        const std::ptrdiff_t run = std::min(end - text, kRun);
        Reserve(static_cast<std::size_t>(run) * xml_encode::kMostPerUnit);
        at_ = xml_encode::PutUnits<escape>(text, text + run, at_, state);
        text += run;
    }
    lead_ = state.lead;
    return state.lines;
}

template <class Unit>
void TXmlOutputBuffer<Unit>::PutLead() {
    if constexpr (sizeof(Unit) == sizeof(char)) {
        at_ = xml_encode::PutPoint(xml_encode::kReplacement, at_);
    }
    lead_ = 0;
}

template <class Unit>
void TXmlOutputBuffer<Unit>::Put(const UnicodeString& text, int length) {
    PutUnits<false>(text.t_str(), length);
}

template <class Unit>
int TXmlOutputBuffer<Unit>::PutEscaped(const UnicodeString& text) {
    const WCHAR* first = text.t_str();
    const WCHAR* last = first + text.Length();
    while (first < last && last[-1] <= 0x20) --last;
    while (first < last && *first <= 0x20) ++first;
    if (lead_ == 0) {
        Reserve(static_cast<std::size_t>(last - first));
        Unit* out = at_;
        const bool all = xml_encode::PutPlain<true>(first, last, out);
        at_ = out;
        if (all) return 1;
    }
    return PutUnits<true>(first, last - first);
}

template <class Unit>
void TXmlOutputBuffer<Unit>::MakeRoom(std::size_t units) {
    if (stream_ != nullptr && at_ - first_ >= static_cast<std::ptrdiff_t>(kPiece)) {
        Flush();
        if (static_cast<std::size_t>(end_ - first_) >= units) return;
    }
    const auto used = static_cast<std::size_t>(at_ - first_);
    const std::size_t least = stream_ != nullptr ? kPiece + kPiece / 4 : used * 2;
    const std::size_t size = std::max(least, used + units);
    auto larger = std::make_unique_for_overwrite<Unit[]>(size);
    std::copy(first_, at_, larger.get());
    long_text_ = std::move(larger);
    first_ = long_text_.get();
    at_ = first_ + used;
    end_ = first_ + size;
}

template <class Unit>
void TXmlOutputBuffer<Unit>::Flush() {
    // One text may be longer than what one Write takes.
    constexpr std::ptrdiff_t kMost = 1 << 30;
    const Unit* const end = std::exchange(at_, first_);
    for (const Unit* from = first_; from < end;) {
        const std::ptrdiff_t count = std::min(end - from, kMost / std::ptrdiff_t{sizeof(Unit)});
        written_ += stream_->Write(from, static_cast<int>(count * std::ptrdiff_t{sizeof(Unit)}));
        from += count;
    }
}

template <class Unit>
int TXmlOutputBuffer<Unit>::Finish() {
    if (lead_ != 0) PutMarkup("");
    Flush();
    return Clamped(written_);
}

template <>
int TXmlOutputBuffer<WCHAR>::FinishInto(UnicodeString& out) {
    const std::ptrdiff_t length = at_ - first_;
    const UnicodeString text(first_, length);
    if (out.IsEmpty()) {
        out = text;
    } else {
        out += text;
    }
    return Clamped(length);
}

template class TXmlOutputBuffer<char>;
template class TXmlOutputBuffer<WCHAR>;
