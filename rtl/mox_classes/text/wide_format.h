// The typed front of the counted wide formatter, and the check for format texts from outside.
//
// A printf-style call takes strings, numbers, enums and pointers, each as its conversion reads it:
//   UnicodeString, const WCHAR*     %s
//   integers up to 32 bits, bool    %d %i %u %x %X %o %c, also with h or l (a long has 32 bits)
//   64-bit integers                 %I64d %I64u %I64x
//   any floating-point number       %f %e %g %Lf
//   other pointers                  %p
// Everything else is refused by the compiler. The texts in the source are trusted to match their
// arguments; a text from a file, the registry or a
// caller is asked with FormatFits first.
#pragma once

#include <windows.h>

#include <concepts>
#include <type_traits>

#include "qv_api.h"

namespace System {

// What one conversion of a format text reads.
enum class TFormatKind : unsigned char { Int32, Int64, Double, Text, Pointer };

template <class T>
concept WideText = requires(const T& text) {
    { text.t_str() } -> std::convertible_to<const WCHAR*>;
};

// The value of `argument` as it travels in a variable argument list.
template <class T>
auto FormatArgument(const T& argument) {
    using D = std::decay_t<T>;
    if constexpr (WideText<D>) {
        return static_cast<const WCHAR*>(argument.t_str());
    } else if constexpr (std::is_enum_v<D>) {
        return FormatArgument(static_cast<std::underlying_type_t<D>>(argument));
    } else if constexpr (std::is_floating_point_v<D>) {
        return static_cast<double>(argument);
    } else if constexpr (std::is_integral_v<D>) {
        static_assert(sizeof(D) <= 8);
        if constexpr (std::is_signed_v<D>) {
            return static_cast<std::conditional_t<sizeof(D) == 8, long long, int>>(argument);
        } else {
            return static_cast<
                std::conditional_t<sizeof(D) == 8, unsigned long long, unsigned int>>(argument);
        }
    } else {
        static_assert(std::is_pointer_v<D>, "this type cannot be formatted");
        using Pointee = std::remove_cv_t<std::remove_pointer_t<D>>;
        static_assert(!std::is_same_v<Pointee, char>,
                      "narrow text is converted to a UnicodeString first");
        if constexpr (std::is_same_v<Pointee, WCHAR>) {
            return static_cast<const WCHAR*>(argument);
        } else {
            return static_cast<const void*>(argument);
        }
    }
}

template <class T>
constexpr TFormatKind FormatKindOf() {
    using A = decltype(FormatArgument(std::declval<const T&>()));
    if constexpr (std::is_same_v<A, double>) {
        return TFormatKind::Double;
    } else if constexpr (std::is_same_v<A, const WCHAR*>) {
        return TFormatKind::Text;
    } else if constexpr (std::is_same_v<A, const void*>) {
        return TFormatKind::Pointer;
    } else {
        return sizeof(A) == 8 ? TFormatKind::Int64 : TFormatKind::Int32;
    }
}

// Whether `format` reads exactly the `count` arguments of these kinds, in order. Refused as well:
// '*', %n, narrow text (%hs, %S), widths and precisions above 4096, unknown
// conversions and a lone '%' at the end. Null is an empty format.
QV_API bool FormatTakes(const WCHAR* format, const TFormatKind* kinds, int count);

// FormatTakes for a list of arguments.
template <class... Args>
bool FormatFits(const WCHAR* format, const Args&...) {
    constexpr TFormatKind kinds[] = {FormatKindOf<Args>()..., TFormatKind::Int32};
    return FormatTakes(format, kinds, static_cast<int>(sizeof...(Args)));
}

}  // namespace System
