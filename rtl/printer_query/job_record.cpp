#include "printer_query/job_record.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

#include "mox_classes/text/unicode_string.h"

namespace {

constexpr LPWSTR JOB_INFO_2W::*kStringMembers[ADP_JOB_INFO_2W::kStrings] = {
    &JOB_INFO_2W::pPrinterName,    &JOB_INFO_2W::pMachineName, &JOB_INFO_2W::pUserName,
    &JOB_INFO_2W::pDocument,       &JOB_INFO_2W::pNotifyName,  &JOB_INFO_2W::pDatatype,
    &JOB_INFO_2W::pPrintProcessor, &JOB_INFO_2W::pParameters,  &JOB_INFO_2W::pDriverName,
    &JOB_INFO_2W::pStatus};

// The part of a DEVMODE up to the end of its size members. A job without a DEVMODE is encoded with
// this many zero bytes, so that a reader finds a DEVMODE of 0 bytes.
constexpr std::int64_t kSizesEnd = offsetof(DEVMODEW, dmFields);

// A holder whose buffer is filled here.
template <class T>
class TFilledHolder : public TW32StructData<T> {
  public:
    // Zeroed bytes for one record with what belongs to it; null, and the failure state, when they
    // are too many.
    char* Allocate(std::int64_t size) {
        if (size > std::numeric_limits<int>::max()) {
            this->SetErrorCode(ERROR_INVALID_DATA);
            return nullptr;
        }
        this->SetBufferSize(static_cast<int>(size), 1, sizeof(T));
        std::memset(this->FData, 0, static_cast<std::size_t>(size));
        return static_cast<char*>(this->FData);
    }
};

std::int64_t StringBytes(const WCHAR* text) {
    return (static_cast<std::int64_t>(std::char_traits<WCHAR>::length(text)) + 1) * 2;
}

const WCHAR* TextOf(const JOB_INFO_2W& job, int index) {
    const WCHAR* text = job.*kStringMembers[index];
    return text == nullptr ? TEXT("") : text;
}

std::int64_t DevModeBytes(const void* dm) {
    DEVMODEW header;
    std::memcpy(&header, dm, static_cast<std::size_t>(kSizesEnd));
    return std::int64_t{header.dmSize} + header.dmDriverExtra;
}

// Copies the members that both records have, in either direction.
template <class From, class To>
void CopyNumbers(const From& from, To& to) {
    to.JobId = from.JobId;
    to.Status = from.Status;
    to.Priority = from.Priority;
    to.Position = from.Position;
    to.StartTime = from.StartTime;
    to.UntilTime = from.UntilTime;
    to.TotalPages = from.TotalPages;
    to.Submitted = from.Submitted;
    to.Time = from.Time;
    to.PagesPrinted = from.PagesPrinted;
}

// Decodes a block. Its DEVMODE has `dm_bytes` bytes (0: none) and ends the data area.
TW32StructData<JOB_INFO_2W> Decode(const ADP_JOB_INFO_2W& block, const void* data,
                                   std::int64_t dm_bytes) {
    TFilledHolder<JOB_INFO_2W> result;
    const std::int64_t data_bytes = block.DevModeOffset + dm_bytes;
    char* const buffer =
        result.Allocate(static_cast<std::int64_t>(sizeof(JOB_INFO_2W)) + data_bytes);
    if (buffer == nullptr) return result;
    char* const area = buffer + sizeof(JOB_INFO_2W);
    std::memcpy(area, data, static_cast<std::size_t>(data_bytes));
    JOB_INFO_2W& job = *reinterpret_cast<JOB_INFO_2W*>(buffer);
    CopyNumbers(block, job);
    job.Size = static_cast<DWORD>(result.Size());
    for (int i = 0; i < ADP_JOB_INFO_2W::kStrings; ++i) {
        job.*kStringMembers[i] = reinterpret_cast<LPWSTR>(area + block.StringOffsets[i]);
    }
    if (dm_bytes > 0) job.pDevMode = reinterpret_cast<LPDEVMODEW>(area + block.DevModeOffset);
    return result;
}

// Whether a string begins at an even offset and ends, terminator included, before `end`.
bool IsString(const char* data, std::int64_t offset, std::int64_t end) {
    if (offset % 2 != 0) return false;
    for (; offset + 2 <= end; offset += 2) {
        if (data[offset] == 0 && data[offset + 1] == 0) return true;
    }
    return false;
}

// The size of the DEVMODE in bytes; 0 when there is none, -1 when it does not end with the data
// area of `data_bytes` bytes.
std::int64_t CheckedDevModeBytes(const char* data, std::int64_t offset, std::int64_t data_bytes) {
    if (offset + kSizesEnd > data_bytes) return -1;
    const std::int64_t bytes = DevModeBytes(data + offset);
    return offset + std::max(bytes, kSizesEnd) == data_bytes && (bytes == 0 || bytes >= kSizesEnd)
               ? bytes
               : -1;
}

}  // namespace

TW32StructData<ADP_JOB_INFO_2W> EncodeJobInfo2(JOB_INFO_2W* job) {
    TFilledHolder<ADP_JOB_INFO_2W> result;
    if (job == nullptr) {
        result.SetErrorCode(ERROR_INVALID_PARAMETER);
        return result;
    }
    std::int64_t text_bytes = 0;
    for (int i = 0; i < ADP_JOB_INFO_2W::kStrings; ++i) text_bytes += StringBytes(TextOf(*job, i));
    const std::int64_t stated = job->pDevMode == nullptr ? 0 : DevModeBytes(job->pDevMode);
    // One that ends in front of its own sizes is none.
    const std::int64_t dm_bytes = stated < kSizesEnd ? 0 : stated;
    constexpr std::int64_t kHeader = sizeof(ADP_JOB_INFO_2W);
    char* const buffer =
        result.Allocate(kHeader + text_bytes + (dm_bytes == 0 ? kSizesEnd : dm_bytes));
    if (buffer == nullptr) return result;
    auto& block = *reinterpret_cast<ADP_JOB_INFO_2W*>(buffer);
    CopyNumbers(*job, block);
    std::int64_t offset = 0;
    for (int i = 0; i < ADP_JOB_INFO_2W::kStrings; ++i) {
        const WCHAR* text = TextOf(*job, i);
        block.StringOffsets[i] = static_cast<std::uint32_t>(offset);
        std::memcpy(buffer + kHeader + offset, text, static_cast<std::size_t>(StringBytes(text)));
        offset += StringBytes(text);
    }
    block.DevModeOffset = static_cast<std::uint32_t>(offset);
    if (dm_bytes > 0)
        std::memcpy(buffer + kHeader + offset, job->pDevMode, static_cast<std::size_t>(dm_bytes));
    return result;
}

TW32StructData<JOB_INFO_2W> DecodeJobInfo2(ADP_JOB_INFO_2W* block) {
    const char* data = reinterpret_cast<const char*>(block + 1);
    return Decode(*block, data, DevModeBytes(data + block->DevModeOffset));
}

TW32StructData<JOB_INFO_2W> DecodeJobInfo2(const void* block, int size) {
    TW32StructData<JOB_INFO_2W> refused;
    refused.SetErrorCode(ERROR_INVALID_DATA);
    if (block == nullptr || size < static_cast<int>(sizeof(ADP_JOB_INFO_2W))) return refused;
    ADP_JOB_INFO_2W header;
    std::memcpy(&header, block, sizeof(header));
    const char* data = static_cast<const char*>(block) + sizeof(header);
    const std::int64_t data_bytes = size - static_cast<std::int64_t>(sizeof(header));
    if (header.DevModeOffset > data_bytes) return refused;
    for (const std::uint32_t offset : header.StringOffsets) {
        if (!IsString(data, offset, header.DevModeOffset)) return refused;
    }
    const std::int64_t dm_bytes = CheckedDevModeBytes(data, header.DevModeOffset, data_bytes);
    return dm_bytes < 0 ? refused : Decode(header, data, dm_bytes);
}
