// UnicodeString, the string of every interface of the library: one pointer to UTF-16 code units
// behind a header, shared by reference count and copied on write.
//
// The header (StrRec), the meaning of the null pointer and the count rules are a contract with the
// modules that load the library; docs/formats/string.md shows the bytes.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "mox_classes/text/code_page.h"
#include "mox_classes/text/wide_format.h"
#include "qv_api.h"

// NULL is a number for the compiler: a string made from it would be "0". In every file that
// includes this one that is an error, not a warning.
#pragma GCC diagnostic error "-Wconversion-null"

namespace System {

// Lies immediately in front of the first character. The block's data part holds (length + 1) * 2
// bytes, exactly: the characters and a terminating 0 that is not counted.
#pragma pack(push, 4)
struct StrRec {
    std::uint16_t code_page;     // always 1200
    std::uint16_t element_size;  // always 2
    std::int32_t ref_count;      // holders of the buffer; changed only atomically
    std::int32_t length;         // code units, 0 to 2147483647
};
#pragma pack(pop)
static_assert(sizeof(StrRec) == 12);

// Null is the empty string; a buffer of length 0 is empty in content, but IsEmpty() is false for
// it. Positions are 1-based. One object is used by one thread at a time; objects that share a
// buffer may live in different threads. Failures are thrown as a UnicodeString that holds the
// message, and leave the string as it was; a heap that is exhausted throws std::bad_alloc.
class QV_API UnicodeString {
  public:
    // 1 = lead surrogate, 2 = trail surrogate, 0 = any other code unit.
    enum TStringLeadCharType : unsigned char { lctSingle = 0, lctLead = 1, lctTrail = 2 };

    UnicodeString() noexcept : data_(nullptr) {}
    // Copies and releases are all over a program: what is not the last share costs no call.
    UnicodeString(const UnicodeString& other) noexcept : data_(other.data_) {
        if (data_ != nullptr && count().load(std::memory_order_relaxed) >= 1) {
            count().fetch_add(1, std::memory_order_relaxed);
        }
    }
    UnicodeString(UnicodeString&& other) noexcept : data_(other.data_) { other.data_ = nullptr; }
    // One code unit: the char's value sign-extended (0xE9 gives U+FFE9).
    UnicodeString(char c);
    UnicodeString(unsigned short unit);
    UnicodeString(WCHAR unit);
    UnicodeString(short value);
    UnicodeString(int value);
    UnicodeString(unsigned int value);
    UnicodeString(long value);
    UnicodeString(unsigned long value);
    UnicodeString(long long value);
    UnicodeString(unsigned long long value);
    // Fixed notation with six decimals.
    UnicodeString(double value);
    // A null pointer is no number.
    UnicodeString(std::nullptr_t) = delete;
    // Narrow text of the system ANSI code page; count -1 means up to the terminating zero. A count
    // above 2147483647 throws "Out of length", other negative counts give the empty string.
    UnicodeString(const char* text);
    UnicodeString(const char* text, long long count);
    UnicodeString(const unsigned short* text);
    UnicodeString(const unsigned short* text, long long count);
    UnicodeString(const WCHAR* text);
    UnicodeString(const WCHAR* text, long long count);
    // UTF-32, up to `count` code points or a 0; code points above 0x10FFFF become U+FFFD.
    UnicodeString(const unsigned int* text, long long count);
    ~UnicodeString() {
        if (data_ != nullptr) Release();
    }

    UnicodeString& operator=(const UnicodeString& other) noexcept {
        UnicodeString shared(other);
        return swap(shared);
    }
    UnicodeString& operator=(UnicodeString&& other) noexcept {
        UnicodeString taken(std::move(other));
        return swap(taken);
    }
    UnicodeString& swap(UnicodeString& other) noexcept {
        std::swap(data_, other.data_);
        return *this;
    }
    // No change: every string is UTF-16 already.
    UnicodeString& EnsureUnicode() noexcept { return *this; }

    int Length() const noexcept { return data_ == nullptr ? 0 : rec()->length; }
    // True for the null string only.
    [[nodiscard]] bool IsEmpty() const noexcept { return data_ == nullptr; }
    int RefCount() const noexcept {
        return data_ == nullptr ? 0 : count().load(std::memory_order_acquire);
    }
    int CodePage() const noexcept { return data_ == nullptr ? 1200 : rec()->code_page; }
    int ElementSize() const noexcept { return data_ == nullptr ? 2 : rec()->element_size; }
    // Never null, always terminated; valid until the string changes or dies.
    const WCHAR* t_str() const noexcept { return data_ == nullptr ? kEmpty : data_; }
    const WCHAR* w_str() const noexcept { return t_str(); }
    // The raw pointer, null for the null string. Write through it only after Unique() or
    // SetLength().
    WCHAR* data() noexcept { return data_; }
    const WCHAR* data() const noexcept { return data_; }
    // Both throw "Out of index" outside 1 .. Length(); the second gives the string a buffer of its
    // own first.
    WCHAR operator[](int index) const;
    WCHAR& operator[](int index);
    void ThrowIfOutOfRange(int index) const;

    // Throws "Out of length" above 2147483647 and below -1; -1 gives the null string, 0 a buffer of
    // length 0.
    UnicodeString& SetLength(long long length);
    // Makes this string the only holder of its buffer; the null string becomes a buffer of length
    // 0.
    UnicodeString& Unique();
    // In front of the character at `index`, which counts from 1; below 1 at the start, behind the
    // end at the end. A text longer than 2147483647 units throws "Integer overflow!", and the
    // string stays as it was. `sub` may be this string.
    UnicodeString& Insert(const UnicodeString& sub, int index);
    // Removes `count` characters from `index` on, as far as there are any. Nothing when `index` is
    // outside of the string or `count` is below 1.
    UnicodeString& Delete(int index, int count);
    // Throws as Insert does. `other` may be this string.
    UnicodeString& operator+=(const UnicodeString& other);
    [[nodiscard]] UnicodeString operator+(const UnicodeString& other) const;

    // Replace the content by the formatted text; the result is the new length.
    int vprintf(const WCHAR* format, va_list arguments);
    template <class... Args>
    int printf(const WCHAR* format, const Args&... args) {
        return printf_passed(format, FormatArgument(args)...);
    }
    template <class... Args>
    UnicodeString& sprintf(const WCHAR* format, const Args&... args) {
        printf_passed(format, FormatArgument(args)...);
        return *this;
    }
    // Append the formatted text; the result is the number of characters appended.
    int cat_vprintf(const WCHAR* format, va_list arguments);
    template <class... Args>
    int cat_printf(const WCHAR* format, const Args&... args) {
        return cat_printf_passed(format, FormatArgument(args)...);
    }
    template <class... Args>
    UnicodeString& cat_sprintf(const WCHAR* format, const Args&... args) {
        cat_printf_passed(format, FormatArgument(args)...);
        return *this;
    }

    // String `id` of the module's string table; the content stays when there is none or it is
    // empty.
    UnicodeString& LoadStringW(HINSTANCE module, int id);
    static UnicodeString LoadStr(HINSTANCE module, int id);
    // `count` copies; 0 gives a buffer of length 0, a negative count the empty string.
    static UnicodeString StringOfChar(WCHAR unit, int count);
    static UnicodeString IntToHex(int value, int digits);

    // These give another string and leave this one as it is. A start below 1 counts as 1; the count
    // is clipped at the end.
    [[nodiscard]] UnicodeString SubString(int start, int count) const;
    // 1-based position, 0 when absent. Both texts end at their first 0 unit; an empty `sub`
    // gives 1.
    int Pos(const UnicodeString& sub) const noexcept;
    [[nodiscard]] UnicodeString Trim() const;
    [[nodiscard]] UnicodeString TrimLeft() const;
    [[nodiscard]] UnicodeString TrimRight() const;
    [[nodiscard]] UnicodeString LowerCase() const;
    [[nodiscard]] UnicodeString UpperCase() const;
    int ToInt() const;
    int ToIntDef(int value) const;
    double ToDouble() const;
    bool IsDelimiter(const UnicodeString& delimiters, int index) const;
    bool IsPathDelimiter(int index) const;
    int LastDelimiter(const UnicodeString& delimiters) const;
    TStringLeadCharType ByteType(int index) const;
    bool IsLeadSurrogate(int index) const;
    bool IsTrailSurrogate(int index) const;

    // Ordinal: code units as unsigned numbers, up to the first difference or 0.
    bool operator==(const UnicodeString& other) const noexcept;
    bool operator!=(const UnicodeString& other) const noexcept;
    bool operator<(const UnicodeString& other) const noexcept;
    bool operator<=(const UnicodeString& other) const noexcept;
    bool operator>(const UnicodeString& other) const noexcept;
    bool operator>=(const UnicodeString& other) const noexcept;
    // By the user's locale: -1, 0, 1; -2 when the platform cannot compare. Null sorts before a
    // buffer of length 0.
    int Compare(const UnicodeString& other) const;
    int CompareIC(const UnicodeString& other) const;

  protected:
    // The header; only for a string that is not null.
    StrRec* GetRec() { return rec(); }
    const StrRec* GetRec() const { return rec(); }

  private:
    static constexpr WCHAR kEmpty[1] = {};
    StrRec* rec() const {
        return reinterpret_cast<StrRec*>(reinterpret_cast<char*>(data_) - sizeof(StrRec));
    }
    std::atomic_ref<std::int32_t> count() const {
        return std::atomic_ref<std::int32_t>(rec()->ref_count);
    }
    void Release() noexcept;
    void Resize(int units);
    int printf_passed(const WCHAR* format, ...);
    int cat_printf_passed(const WCHAR* format, ...);

    WCHAR* data_;
};
static_assert(sizeof(UnicodeString) == sizeof(void*));

QV_API UnicodeString operator+(const char* text, const UnicodeString& string);
QV_API UnicodeString operator+(const unsigned short* text, const UnicodeString& string);
QV_API UnicodeString operator+(const WCHAR* text, const UnicodeString& string);

}  // namespace System

using System::UnicodeString;
