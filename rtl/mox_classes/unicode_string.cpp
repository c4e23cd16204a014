#include "mox_classes/unicode_string.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>

#include "mox_classes/memory.h"
#include "mox_classes/rcm_spec.h"

namespace System {

namespace {

constexpr TRCMSpec kBlocks(sizeof(StrRec), offsetof(StrRec, ref_count), 1, 1);
constexpr int kMaxLength = std::numeric_limits<int>::max();

void CopyUnits(WCHAR* dest, const WCHAR* source, int count) {
    if (count > 0) std::memcpy(dest, source, static_cast<std::size_t>(count) * sizeof(WCHAR));
}

void MoveUnits(WCHAR* dest, const WCHAR* source, int count) {
    std::memmove(dest, source, static_cast<std::size_t>(count) * sizeof(WCHAR));
}

}  // namespace

UnicodeString::UnicodeString(const UnicodeString& other) noexcept : data_(other.data_) {
    if (data_ == nullptr) return;
    auto count = kBlocks.Count(data_);
    if (count.load(std::memory_order_relaxed) >= 1) count.fetch_add(1, std::memory_order_relaxed);
}

UnicodeString::~UnicodeString() {
    void* data = data_;
    kBlocks.Clear(data);
}

// Sharing the own buffer changes nothing.  NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
UnicodeString& UnicodeString::operator=(const UnicodeString& other) noexcept {
    void* data = data_;
    kBlocks.Assign(data, other.data_);
    data_ = other.data_;
    return *this;
}

UnicodeString& UnicodeString::operator=(UnicodeString&& other) noexcept {
    UnicodeString taken(std::move(other));
    return swap(taken);
}

UnicodeString& UnicodeString::swap(UnicodeString& other) noexcept {
    std::swap(data_, other.data_);
    return *this;
}

int UnicodeString::RefCount() const {
    return data_ == nullptr ? 0 : kBlocks.Count(data_).load(std::memory_order_acquire);
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
    const int units = static_cast<int>(length);
    void* data = data_;
    if (units < 0) {
        data_ = nullptr;
        kBlocks.Clear(data);
        return *this;
    }
    const int size = kBlocks.CalcAllocSize(units, sizeof(WCHAR));
    if (RefCount() > 1) {
        // The old share is kept while its characters are copied: the other holders may let go.
        void* fresh = nullptr;
        kBlocks.SetSize(fresh, size);
        CopyUnits(static_cast<WCHAR*>(fresh), data_, std::min(Length(), units));
        kBlocks.Clear(data);
        data = fresh;
    } else if (data_ == nullptr || Length() != units) {
        kBlocks.SetSize(data, size);
    }
    data_ = static_cast<WCHAR*>(data);
    rec()->code_page = 1200;
    rec()->element_size = sizeof(WCHAR);
    rec()->length = units;
    data_[units] = 0;
    return *this;
}

UnicodeString& UnicodeString::Unique() {
    return SetLength(Length());
}

UnicodeString& UnicodeString::Insert(const UnicodeString& sub, int index) {
    const int added = sub.Length();
    if (added == 0) return *this;
    const int old_length = Length();
    const int position = index < 1 ? 0 : std::min(index - 1, old_length);
    if (added > kMaxLength - old_length) throw UnicodeString("Integer overflow!");
    // A share of its own keeps the inserted text whole when it is this string.
    const UnicodeString inserted(sub);
    SetLength(static_cast<long long>(old_length) + added);
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
    return Insert(other, kMaxLength);
}

UnicodeString UnicodeString::operator+(const UnicodeString& other) const {
    const int added = other.Length();
    if (added == 0) return *this;
    const int length = Length();
    if (added > kMaxLength - length) throw UnicodeString("Integer overflow!");
    UnicodeString sum;
    sum.SetLength(static_cast<long long>(length) + added);
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
