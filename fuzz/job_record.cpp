// The flattened job record: a block is refused or decoded, and what was decoded travels on whole.
#include "printer_query/job_record.h"

#include "driver_global/diagnostic_text.h"
#include "support/input.h"

namespace {

using Block = TW32StructData<ADP_JOB_INFO_2W>;

bool SameBlock(const Block& a, const Block& b) {
    return a.Size() == b.Size() &&
           std::memcmp(&a[0], &b[0], static_cast<std::size_t>(a.Size())) == 0;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto job = DecodeJobInfo2(data, static_cast<int>(size));
    if (!job.IsSuccess()) {
        fuzz::Require(job.GetErrorCode() == ERROR_INVALID_DATA, "a lying block is code 13");
        return 0;
    }
    fuzz::Require(job[0].Size == static_cast<DWORD>(job.Size()), "a job knows its size");
    TextTypeJOB_INFO_2(&job[0]);
    Block block = EncodeJobInfo2(&job[0]);
    fuzz::Require(block.IsSuccess(), "a decoded job can be encoded");

    auto checked = DecodeJobInfo2(&block[0], block.Size());
    fuzz::Require(checked.IsSuccess(), "an encoded job can be decoded");
    fuzz::Require(SameBlock(block, EncodeJobInfo2(&checked[0])), "a job travels on unchanged");
    auto trusted = DecodeJobInfo2(&block[0]);
    fuzz::Require(trusted.Size() == checked.Size(), "both decoders take the same bytes");
    fuzz::Require(SameBlock(block, EncodeJobInfo2(&trusted[0])), "both decoders agree");
    return 0;
}
