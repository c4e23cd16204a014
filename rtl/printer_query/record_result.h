// How a query's records get into their holder.
#pragma once

#include <windows.h>

#include <cstring>

#include "mox_classes/containers/struct_data.h"
#include "mox_classes/text/log_here.h"
#include "mox_classes/text/sys_error.h"
#include "mox_classes/text/sysutils_numbers.h"
#include "printer_query/two_call.h"

namespace printer_query {

// A holder whose buffer this folder fills; it is handed out as the plain holder.
template <class T>
class TRecordResult : public TW32StructData<T> {
  public:
    LPBYTE Bytes() { return static_cast<LPBYTE>(this->FData); }
    // A zeroed buffer with `count` records in it; null when not even they fit.
    LPBYTE Reserve(DWORD size, DWORD count) {
        if (size == 0 || size / sizeof(T) < count) return nullptr;
        return Allocate(size, count);
    }
    // A zeroed buffer for one record that may end early, as an old settings block does.
    LPBYTE ReserveBlock(DWORD size) { return Allocate(size, 1); }
    // False when the buffer cannot hold so many records.
    bool SetCount(DWORD count) {
        const DWORD size = static_cast<DWORD>(this->Size());
        if (size / sizeof(T) < count) return false;
        this->SetBufferSize(this->Size(), static_cast<int>(count), sizeof(T));
        return true;
    }

  private:
    LPBYTE Allocate(DWORD size, DWORD count) {
        this->SetBufferSize(static_cast<int>(size), static_cast<int>(count), sizeof(T));
        std::memset(Bytes(), 0, size);
        return Bytes();
    }
};

// The messages of a query; their last argument is the system's error text.
struct TQueryTexts {
    const WCHAR* size_failed;
    const WCHAR* data_failed;
};

// Runs `call(buffer, size, needed, count)`, which reports as Win32 calls do. `expected` is 1 for a
// query of one record, 0 for an enumeration, which may be empty and whose call sets the count.
// Failures are logged with `arguments` in front of the error text.
template <class T, class Call, class... Args>
TW32StructData<T> QueryRecords(DWORD expected, const TQueryTexts& texts, Call call,
                               const Args&... arguments) {
    TRecordResult<T> result;
    DWORD count = expected;
    TQuery query = QueryTwice(
        ERROR_INSUFFICIENT_BUFFER,
        [&](LPBYTE buffer, DWORD size, DWORD* needed) {
            return CodeOf(call(buffer, size, needed, &count));
        },
        [&](DWORD needed) { return result.Reserve(needed, expected); });

    if (query.answer == TAnswer::Empty && expected != 0) {
        query = {TAnswer::SizeFailed, ERROR_INVALID_DATA};
    } else if (query.answer == TAnswer::Filled && !result.SetCount(count)) {
        query = {TAnswer::DataFailed, ERROR_INVALID_DATA};
    }
    if (query.Failed()) {
        result.SetErrorCode(query.code);
        const bool early = query.answer == TAnswer::SizeFailed;
        Mox::LogHere('X',
                     Sysutils::UnicodePrintf(early ? texts.size_failed : texts.data_failed,
                                             arguments..., Mox::GetSysError(query.code, true)));
    }
    return result;
}

}  // namespace printer_query
