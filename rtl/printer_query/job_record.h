// Print job records that can travel between processes: a JOB_INFO_2W with all it points into, as
// one block without pointers (docs/formats/job_record.md).
#pragma once

#include <windows.h>
#include <winspool.h>

#include <cstddef>
#include <cstdint>

#include "mox_classes/containers/struct_data.h"
#include "qv_api.h"

// The header of the block; little-endian. Offsets count bytes from the data area behind it, which
// holds the ten strings in the order of their offsets, each with its terminating zero, then the
// DEVMODE.
#pragma pack(push, 4)
struct ADP_JOB_INFO_2W {
    static constexpr int kStrings = 10;

    std::uint32_t JobId;
    std::uint32_t Status;
    std::uint32_t Priority;
    std::uint32_t Position;
    std::uint32_t StartTime;
    std::uint32_t UntilTime;
    std::uint32_t TotalPages;
    SYSTEMTIME Submitted;
    std::uint32_t Time;
    std::uint32_t PagesPrinted;
    // Printer name, machine name, user name, document, notify name, data type, print processor,
    // parameters, driver name, status.
    std::uint32_t StringOffsets[kStrings];
    std::uint32_t DevModeOffset;
};
#pragma pack(pop)
static_assert(sizeof(ADP_JOB_INFO_2W) == 96);
static_assert(offsetof(ADP_JOB_INFO_2W, Submitted) == 28);
static_assert(offsetof(ADP_JOB_INFO_2W, Time) == 44);
static_assert(offsetof(ADP_JOB_INFO_2W, StringOffsets) == 52);
static_assert(offsetof(ADP_JOB_INFO_2W, DevModeOffset) == 92);

// One block; the holder's size is the block's. Null strings are encoded as empty ones; a job
// without DEVMODE gets 72 zero bytes in its place, which read as one of size 0 and decode as null,
// and so does a job whose DEVMODE states a size below 72 bytes.
// The job's own size and its security descriptor are not carried.
QV_API TW32StructData<ADP_JOB_INFO_2W> EncodeJobInfo2(JOB_INFO_2W* job);

// The record with its pointers into the holder's own buffer, Size being that buffer's. Trusts the
// block: only for one that this process encoded.
QV_API TW32StructData<JOB_INFO_2W> DecodeJobInfo2(ADP_JOB_INFO_2W* block);

// The same for `size` bytes from another process: every offset, terminator and the DEVMODE's size
// are checked first. A block that lies gives the failure state with ERROR_INVALID_DATA (13).
QV_API TW32StructData<JOB_INFO_2W> DecodeJobInfo2(const void* block, int size);
