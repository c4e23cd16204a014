// Job records as one block: layout, round trip, and blocks that lie.
#include "printer_query/job_record.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "driver_global/diagnostic_text.h"
#include "support/format_page.h"
#include "support/string_print.h"

namespace {

using Text = std::basic_string<WCHAR>;

// A job in which no two members are alike.
struct SampleJob {
    Text texts[10] = {
        TEXT("Fax"), TEXT("\\\\PC"),   TEXT("anna"), TEXT("Report"),         TEXT(""),
        TEXT("RAW"), TEXT("winprint"), TEXT("-q"),   TEXT("Vantrel Driver"), TEXT("busy")};
    struct {
        DEVMODEW mode = {};
        BYTE extra[6] = {1, 2, 3, 4, 5, 6};
    } block;
    JOB_INFO_2W job = {};

    SampleJob() {
        block.mode.dmSize = sizeof(DEVMODEW);
        block.mode.dmDriverExtra = 6;
        block.mode.dmCopies = 3;
        LPWSTR* const members[] = {&job.pPrinterName,    &job.pMachineName, &job.pUserName,
                                   &job.pDocument,       &job.pNotifyName,  &job.pDatatype,
                                   &job.pPrintProcessor, &job.pParameters,  &job.pDriverName,
                                   &job.pStatus};
        for (int i = 0; i < 10; ++i) *members[i] = texts[i].data();
        job.pDevMode = &block.mode;
        DWORD* const numbers[] = {&job.JobId,      &job.Status,      &job.Priority,  &job.Position,
                                  &job.Time,       &job.StartTime,   &job.UntilTime, &job.Size,
                                  &job.TotalPages, &job.PagesPrinted};
        for (DWORD i = 0; i < 10; ++i) *numbers[i] = 17 + i;
        job.Submitted = {2026, 11, 4, 26, 10, 20, 30, 400};
    }
};

std::vector<unsigned char> BytesOf(TW32StructData<ADP_JOB_INFO_2W>& block) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(&block[0]);
    return {bytes, bytes + block.Size()};
}

TEST(JobRecord, DecodingGivesBackEveryCarriedField) {
    SampleJob sample;
    auto block = EncodeJobInfo2(&sample.job);
    EXPECT_EQ(block.Count(), 1);
    EXPECT_EQ(block.Size(), 96 + 2 * 58 + 226);
    for (auto decoded : {DecodeJobInfo2(&block[0]), DecodeJobInfo2(&block[0], block.Size())}) {
        ASSERT_TRUE(decoded.IsSuccess());
        EXPECT_EQ(decoded[0].Size, static_cast<DWORD>(decoded.Size()));
        EXPECT_EQ(decoded[0].Submitted.wMilliseconds, 400);
        EXPECT_EQ(std::memcmp(decoded[0].pDevMode, &sample.block, 226), 0);
        decoded[0].Size = sample.job.Size;
        EXPECT_EQ(TextTypeJOB_INFO_2(&decoded[0]), TextTypeJOB_INFO_2(&sample.job));
    }
}

TEST(JobRecord, AJobWithoutDevmodeDecodesToNull) {
    DEVMODEW cut = {};
    cut.dmSize = 71;
    for (DEVMODEW* const mode : {static_cast<DEVMODEW*>(nullptr), &cut}) {
        JOB_INFO_2W empty = {};
        empty.pDevMode = mode;
        auto block = EncodeJobInfo2(&empty);
        EXPECT_EQ(block[0].StringOffsets[9], 18u);
        EXPECT_EQ(block[0].DevModeOffset, 20u);
        EXPECT_EQ(block.Size(), 96 + 20 + 72);
        for (auto decoded : {DecodeJobInfo2(&block[0]), DecodeJobInfo2(&block[0], block.Size())}) {
            ASSERT_TRUE(decoded.IsSuccess());
            EXPECT_EQ(decoded[0].pDevMode, nullptr);
            EXPECT_EQ(Text(decoded[0].pNotifyName), Text());
        }
    }
    EXPECT_FALSE(EncodeJobInfo2(nullptr).IsSuccess());
    EXPECT_FALSE(DecodeJobInfo2(nullptr, 200).IsSuccess());
}

TEST(JobRecord, ABlockThatLiesIsRefused) {
    SampleJob sample;
    auto block = EncodeJobInfo2(&sample.job);
    const std::vector<unsigned char> honest = BytesOf(block);
    const int size = block.Size();
    for (int cut = 0; cut < size; ++cut) {
        const std::vector<unsigned char> shorter(honest.begin(), honest.begin() + cut);
        EXPECT_EQ(DecodeJobInfo2(shorter.data(), cut).GetErrorCode(), DWORD{ERROR_INVALID_DATA})
            << cut;
    }
    const std::pair<std::size_t, std::uint32_t> lies[] = {
        {52, 1}, {52, 0xFFFFFFFEu}, {88, 100000}, {92, 0xFFFFFFFFu}, {92, 0}, {92, 400}};
    for (const auto& [at, value] : lies) {
        std::vector<unsigned char> bytes = honest;
        std::memcpy(bytes.data() + at, &value, 4);
        EXPECT_FALSE(DecodeJobInfo2(bytes.data(), size).IsSuccess()) << at << " " << value;
    }
    std::vector<unsigned char> bytes = honest;
    const std::size_t dm_extra = 96 + block[0].DevModeOffset + 70;
    bytes[dm_extra] = 1;
    EXPECT_FALSE(DecodeJobInfo2(bytes.data(), size).IsSuccess());
}

TEST(JobRecord, TheFormatPagesExampleDecodesAndEncodesBack) {
    const std::vector<unsigned char> dump = test::PageDump("job_record.md", 0);
    auto decoded = DecodeJobInfo2(dump.data(), static_cast<int>(dump.size()));
    ASSERT_TRUE(decoded.IsSuccess());
    EXPECT_EQ(Text(decoded[0].pDocument), TEXT("Hi"));
    auto block = EncodeJobInfo2(&decoded[0]);
    EXPECT_EQ(BytesOf(block), dump);
}

}  // namespace
