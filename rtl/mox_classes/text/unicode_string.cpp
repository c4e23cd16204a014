#include "mox_classes/text/unicode_string.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <new>
#include <string>

#include "mox_classes/memory/process_heap.h"
#include "mox_classes/units/unit_copy.h"

namespace System {

namespace {

// The layout is the one that TRCMSpec(12, 4, 1, 1) describes. Strings are made and resized far more
// often than other counted blocks, so these steps use constants: an append through the description
// takes 1.5 times as long.
static_assert(sizeof(StrRec) == 12 && offsetof(StrRec, ref_count) == 4);
constexpr int kMaxLength = std::numeric_limits<int>::max();

int BlockSize(int units) {
    constexpr int kLargest = (kMaxLength - static_cast<int>(sizeof(StrRec))) / 2 - 1;
    if (units > kLargest) throw std::bad_alloc();
    return static_cast<int>(sizeof(StrRec)) + (units + 1) * static_cast<int>(sizeof(WCHAR));
}

// Writes the header of a new block with one holder, and the terminator. The characters are left as
// they are. `block` null means that the heap is exhausted.
WCHAR* Prepared(void* block, int units) {
    if (block == nullptr) throw std::bad_alloc();
    auto* const rec = static_cast<StrRec*>(block);
    *rec = {1200, sizeof(WCHAR), 1, units};
    auto* const data = reinterpret_cast<WCHAR*>(rec + 1);
    data[units] = 0;
    return data;
}

WCHAR* NewBuffer(int units) {
    return Prepared(TProcessHeap::New(BlockSize(units)), units);
}

void MoveUnits(WCHAR* dest, const WCHAR* source, int count) {
    std::memmove(dest, source, static_cast<std::size_t>(count) * sizeof(WCHAR));
}

}  // namespace

// The most common constructor: it copies the text straight into a new block.
UnicodeString::UnicodeString(const WCHAR* text, long long count) : UnicodeString() {
    if (text == nullptr) return;
    if (count == -1) count = static_cast<long long>(std::char_traits<WCHAR>::length(text));
    if (count > kMaxLength) throw UnicodeString("Out of length");
    if (count < 1) return;
    data_ = NewBuffer(static_cast<int>(count));
    CopyUnits(data_, text, static_cast<int>(count));
}

void UnicodeString::Release() noexcept {
    // When two holders release at the same time, both may read 2 here. The decrement below tells
    // which one is the last.
    if (count().load(std::memory_order_acquire) <= 1 ||
        count().fetch_sub(1, std::memory_order_acq_rel) == 1) {
        TProcessHeap::Delete(rec());
    }
}

void UnicodeString::ThrowIfOutOfRange(int index) const {
    if (index < 1 || index > Length()) throw UnicodeString("Out of index");
}

WCHAR UnicodeString::operator[](int index) const {
    ThrowIfOutOfRange(index);
    return data_[index - 1];
}

WCHAR& UnicodeString::operator[](int index) {
    ThrowIfOutOfRange(index);
    Unique();
    return data_[index - 1];
}

UnicodeString& UnicodeString::SetLength(long long length) {
    if (length > kMaxLength || length < -1) throw UnicodeString("Out of length");
    if (length < 0) {
        UnicodeString().swap(*this);
    } else {
        Resize(static_cast<int>(length));
    }
    return *this;
}

// Gives the string its own buffer of `units` units, and keeps as many of its characters as fit.
void UnicodeString::Resize(int units) {
    if (data_ == nullptr) {
        data_ = NewBuffer(units);
    } else if (RefCount() > 1) {
        // The other holders may release the old buffer at any time. This string keeps its share
        // while it copies.
        UnicodeString fresh;
        fresh.data_ = NewBuffer(units);
        CopyUnits(fresh.data_, data_, std::min(Length(), units));
        swap(fresh);
    } else {
        void* block = Length() == units ? rec() : TProcessHeap::Resized(rec(), BlockSize(units));
        // A heap without memory may refuse the smaller block too. The string keeps the larger one.
        if (block == nullptr && units < Length()) block = rec();
        data_ = Prepared(block, units);
    }
}

UnicodeString& UnicodeString::Unique() {
    Resize(Length());
    return *this;
}

UnicodeString& UnicodeString::Insert(const UnicodeString& sub, int index) {
    const int added = sub.Length();
    if (added == 0) return *this;
    const int old_length = Length();
    const int position = index < 1 ? 0 : std::min(index - 1, old_length);
    if (added > kMaxLength - old_length) throw UnicodeString("Integer overflow!");
    // `sub` may be this string. The copy of it keeps the inserted text unchanged.
    const UnicodeString inserted(sub);
    Resize(old_length + added);
    MoveUnits(data_ + position + added, data_ + position, old_length - position);
    CopyUnits(data_ + position, inserted.data_, added);
    return *this;
}

UnicodeString& UnicodeString::Delete(int index, int count) {
    const int length = Length();
    if (index < 1 || index > length || count < 1) return *this;
    const int behind = length - index + 1;
    const int tail = behind - std::min(count, behind);
    Unique();
    MoveUnits(data_ + index - 1, data_ + length - tail, tail);
    return SetLength(index - 1 + tail);
}

UnicodeString& UnicodeString::operator+=(const UnicodeString& other) {
    const int added = other.Length();
    if (added == 0) return *this;
    const int old_length = Length();
    if (added > kMaxLength - old_length) throw UnicodeString("Integer overflow!");
    Resize(old_length + added);
    CopyUnits(data_ + old_length, other.data_, added);
    return *this;
}

UnicodeString UnicodeString::operator+(const UnicodeString& other) const {
    const int added = other.Length();
    if (added == 0) return *this;
    const int length = Length();
    if (added > kMaxLength - length) throw UnicodeString("Integer overflow!");
    UnicodeString sum;
    sum.Resize(length + added);
    CopyUnits(sum.data_, data_, length);
    CopyUnits(sum.data_ + length, other.data_, added);
    return sum;
}

UnicodeString operator+(const char* text, const UnicodeString& string) {
    return UnicodeString(text) + string;
}

UnicodeString operator+(const unsigned short* text, const UnicodeString& string) {
    return UnicodeString(text) + string;
}

UnicodeString operator+(const WCHAR* text, const UnicodeString& string) {
    return UnicodeString(text) + string;
}

UnicodeString UnicodeString::StringOfChar(WCHAR unit, int count) {
    UnicodeString text;
    if (count < 0) return text;
    text.SetLength(count);
    std::fill_n(text.data_, count, unit);
    return text;
}

UnicodeString UnicodeString::SubString(int start, int count) const {
    const int length = Length();
    const int first = std::max(start, 1);
    if (first > length || count < 1) return UnicodeString();
    const int units = std::min(count, length - first + 1);
    if (units == length) return *this;
    return UnicodeString(data_ + first - 1, units);
}

}  // namespace System
