// The rows of the tables of functions that can fail. A row names the function, the number of its
// parameters, how it shows a failure, and the codes to fail with. The types come from the
// function's own declaration.
#pragma once

#include <windows.h>

#include <dlfcn.h>

#include <algorithm>
#include <cerrno>
#include <tuple>

#include "faults/fault_seam.h"

namespace faults {

template <class F>
struct Signature;
template <class R, class... A>
struct Signature<R(A...)> {
    using Result = R;
    using Arguments = std::tuple<A...>;
    static constexpr bool kNoexcept = false;
};
template <class R, class... A>
struct Signature<R(A...) noexcept> : Signature<R(A...)> {
    static constexpr bool kNoexcept = true;
};
template <class F>
using ResultOf = typename Signature<F>::Result;
template <class F, std::size_t I>
using ArgumentOf = std::tuple_element_t<I, typename Signature<F>::Arguments>;

/// The function that the program's own definition hides.
template <class F>
F* Next(const char* name) {
    return reinterpret_cast<F*>(dlsym(RTLD_NEXT, name));
}

template <class R>
R FromNumber(long long number) {
    if constexpr (std::is_pointer_v<R>) {
        return reinterpret_cast<R>(number);
    } else {
        return static_cast<R>(number);
    }
}

template <class R>
R Failed(const Site& site, int code) {
    switch (site.answer) {
        case Answer::Status:
            return FromNumber<R>(code);
        case Answer::Errno:
            errno = code;
            return FromNumber<R>(-1);
        case Answer::NullErrno:
            errno = code;
            return R{};
        case Answer::Ones:
            SetLastError(static_cast<DWORD>(code));
            return FromNumber<R>(-1);
        default:
            SetLastError(static_cast<DWORD>(code));
            return R{};
    }
}

template <class Forward>
auto Call(Site& site, const Forward& forward) -> decltype(forward()) {
    using R = decltype(forward());
    const int verdict = Verdict(site);
    if (verdict != kGoOn && !site.releases) return Failed<R>(site, verdict);
    const InsideHost inside(site);
    const R result = forward();
    return verdict == kGoOn ? result : Failed<R>(site, verdict);
}

template <class Size>
Size Shortened(Size size, int how) {
    switch (how) {
        case kHalf:
            return size / 2;
        case kOneByte:
            return std::min<Size>(size, 1);
        case kAllButOne:
            return size - std::min<Size>(size, 1);
        default:
            return 0;
    }
}

/// For functions that move `size` bytes.
template <class Size, class Forward>
auto CallTransfer(Site& site, Size& size, const Forward& forward) -> decltype(forward()) {
    const int verdict = Verdict(site);
    if (verdict > kGoOn) return Failed<decltype(forward())>(site, verdict);
    if (verdict < kGoOn) size = Shortened(size, verdict);
    const InsideHost inside(site);
    return forward();
}

}  // namespace faults

// A row defines a function of the given name. Only the preprocessor can do that.
#define QV_ARG(f, i) faults::ArgumentOf<decltype(::f), i> a##i
#define QV_PARAMS0(f)
#define QV_PARAMS1(f) QV_ARG(f, 0)
#define QV_PARAMS2(f) QV_PARAMS1(f), QV_ARG(f, 1)
#define QV_PARAMS3(f) QV_PARAMS2(f), QV_ARG(f, 2)
#define QV_PARAMS4(f) QV_PARAMS3(f), QV_ARG(f, 3)
#define QV_PARAMS5(f) QV_PARAMS4(f), QV_ARG(f, 4)
#define QV_PARAMS6(f) QV_PARAMS5(f), QV_ARG(f, 5)
#define QV_PARAMS7(f) QV_PARAMS6(f), QV_ARG(f, 6)
#define QV_PARAMS8(f) QV_PARAMS7(f), QV_ARG(f, 7)
#define QV_PARAMS9(f) QV_PARAMS8(f), QV_ARG(f, 8)
#define QV_ARGS0
#define QV_ARGS1 a0
#define QV_ARGS2 a0, a1
#define QV_ARGS3 a0, a1, a2
#define QV_ARGS4 a0, a1, a2, a3
#define QV_ARGS5 a0, a1, a2, a3, a4
#define QV_ARGS6 a0, a1, a2, a3, a4, a5
#define QV_ARGS7 a0, a1, a2, a3, a4, a5, a6
#define QV_ARGS8 a0, a1, a2, a3, a4, a5, a6, a7
#define QV_ARGS9 a0, a1, a2, a3, a4, a5, a6, a7, a8

#define QV_HEAD(n, f)                                                       \
    extern "C" faults::ResultOf<decltype(::f)> f(QV_PARAMS##n(f)) noexcept( \
        faults::Signature<decltype(::f)>::kNoexcept)
#define QV_SITE(f, answer, releases, ...)                                    \
    static constexpr int kCodes[] = {__VA_ARGS__};                           \
    static constinit faults::Site site{#f, kKind, answer, kCodes, releases}; \
    static const auto next = faults::Next<decltype(::f)>(#f)

// Three kinds of functions: one that fails, one that releases something, and one that moves as many
// bytes as its third parameter says.
#define QV_FAILS(n, f, answer, ...)                                  \
    QV_HEAD(n, f) {                                                  \
        QV_SITE(f, answer, false, __VA_ARGS__);                      \
        return faults::Call(site, [&] { return next(QV_ARGS##n); }); \
    }
#define QV_RELEASES(n, f, answer, ...)                               \
    QV_HEAD(n, f) {                                                  \
        QV_SITE(f, answer, true, __VA_ARGS__);                       \
        return faults::Call(site, [&] { return next(QV_ARGS##n); }); \
    }
#define QV_TRANSFERS(n, f, answer, ...)                                          \
    QV_HEAD(n, f) {                                                              \
        QV_SITE(f, answer, false, __VA_ARGS__);                                  \
        return faults::CallTransfer(site, a2, [&] { return next(QV_ARGS##n); }); \
    }
