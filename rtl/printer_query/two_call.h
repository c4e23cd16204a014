// The platform's two-call protocol, once: ask with no buffer for the size that is needed, then ask
// again with a buffer of that size.
//
// There is no retry: an answer that grows between the two calls fails the second one.
#pragma once

#include <windows.h>

#include <climits>
#include <new>

namespace printer_query {

enum class TAnswer {
    Empty,       // the first call succeeded: there is nothing to fetch
    Filled,      // the buffer holds the answer
    SizeFailed,  // the first call failed with anything but "more room is needed"
    DataFailed,  // the second call failed, or the size cannot be had
};

struct TQuery {
    TAnswer answer;
    DWORD code;  // NO_ERROR unless it failed

    bool Failed() const { return code != NO_ERROR; }
};

// The code of a call that reports by its result and the last error.
inline DWORD CodeOf(BOOL success) {
    if (success) return NO_ERROR;
    const DWORD code = GetLastError();
    return code == NO_ERROR ? DWORD{ERROR_GEN_FAILURE} : code;
}

// `call(buffer, size, needed)` gives a Win32 code; `more_room` is the one with which it states the
// needed bytes. `reserve(needed)` gives a buffer of that many bytes, or null when such an answer
// makes no sense.
template <class Call, class Reserve>
TQuery QueryTwice(DWORD more_room, Call call, Reserve reserve) {
    DWORD needed = 0;
    const DWORD first = call(nullptr, DWORD{0}, &needed);
    if (first == NO_ERROR) return {TAnswer::Empty, NO_ERROR};
    if (first != more_room) return {TAnswer::SizeFailed, first};

    if (needed > INT_MAX) return {TAnswer::DataFailed, ERROR_INVALID_DATA};
    LPBYTE buffer;
    try {
        buffer = reserve(needed);
    } catch (const std::bad_alloc&) {
        return {TAnswer::DataFailed, ERROR_NOT_ENOUGH_MEMORY};
    }
    if (buffer == nullptr) return {TAnswer::DataFailed, ERROR_INVALID_DATA};
    const DWORD second = call(buffer, needed, &needed);
    if (second != NO_ERROR) return {TAnswer::DataFailed, second};
    return {TAnswer::Filled, NO_ERROR};
}

}  // namespace printer_query
