// Job records as one block: layout, round trip, and blocks that lie.
#include "printer_query/job_record.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/format_page.h"

namespace {

using Text = std::basic_string<WCHAR>;

struct SampleJob {
    Text texts[10] = {
        TEXT("Fax"), TEXT("\\\\PC"),   TEXT("anna"), TEXT("Report"),         TEXT(""),
        TEXT("RAW"), TEXT("winprint"), TEXT(""),     TEXT("Vantrel Driver"), TEXT("")};
    DEVMODEW devmode = {};
    JOB_INFO_2W job = {};

    SampleJob() {
        devmode.dmSize = sizeof(devmode);
        devmode.dmCopies = 3;
        job.JobId = 17;
        job.Status = 2;
        job.TotalPages = 5;
        job.Submitted.wYear = 2026;
        job.Time = 1500;
        LPWSTR* const members[] = {&job.pPrinterName,    &job.pMachineName, &job.pUserName,
                                   &job.pDocument,       &job.pNotifyName,  &job.pDatatype,
                                   &job.pPrintProcessor, &job.pParameters,  &job.pDriverName,
                                   &job.pStatus};
        for (int i = 0; i < 10; ++i) *members[i] = texts[i].data();
        job.pDevMode = &devmode;
    }
};

std::vector<unsigned char> BytesOf(TW32StructData<ADP_JOB_INFO_2W>& block) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(&block[0]);
    return {bytes, bytes + block.Size()};
}

TEST(JobRecord, EmptyStringsAndAPublicDevmodeTake336Bytes) {
    JOB_INFO_2W job = {};
    DEVMODEW devmode = {};
    devmode.dmSize = sizeof(devmode);
    job.pDevMode = &devmode;
    auto block = EncodeJobInfo2(&job);
    EXPECT_EQ(block.Size(), 336);
    EXPECT_EQ(block.Count(), 1);
    EXPECT_EQ(block[0].StringOffsets[9], 18u);
    EXPECT_EQ(block[0].DevModeOffset, 20u);
}

TEST(JobRecord, DecodingGivesBackEveryCarriedField) {
    SampleJob sample;
    auto block = EncodeJobInfo2(&sample.job);
    for (auto decoded : {DecodeJobInfo2(&block[0]), DecodeJobInfo2(&block[0], block.Size())}) {
        ASSERT_TRUE(decoded.IsSuccess());
        const JOB_INFO_2W& job = static_cast<const TW32StructData<JOB_INFO_2W>&>(decoded)[0];
        EXPECT_EQ(job.JobId, 17u);
        EXPECT_EQ(job.TotalPages, 5u);
        EXPECT_EQ(job.Submitted.wYear, 2026);
        EXPECT_EQ(job.Time, 1500u);
        EXPECT_EQ(job.Size, static_cast<DWORD>(decoded.Size()));
        EXPECT_EQ(Text(job.pMachineName), TEXT("\\\\PC"));
        EXPECT_EQ(Text(job.pDriverName), TEXT("Vantrel Driver"));
        EXPECT_EQ(Text(job.pNotifyName), Text());
        DEVMODEW devmode;
        std::memcpy(&devmode, job.pDevMode, sizeof(devmode));
        EXPECT_EQ(devmode.dmCopies, 3);
    }
}

TEST(JobRecord, AJobWithoutDevmodeDecodesToNull) {
    SampleJob sample;
    sample.job.pDevMode = nullptr;
    sample.job.pNotifyName = nullptr;
    auto block = EncodeJobInfo2(&sample.job);
    for (auto decoded : {DecodeJobInfo2(&block[0]), DecodeJobInfo2(&block[0], block.Size())}) {
        const JOB_INFO_2W& job = static_cast<const TW32StructData<JOB_INFO_2W>&>(decoded)[0];
        EXPECT_EQ(job.pDevMode, nullptr);
        EXPECT_EQ(Text(job.pNotifyName), Text());
    }
    EXPECT_FALSE(EncodeJobInfo2(nullptr).IsSuccess());
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
    struct {
        std::size_t at;
        std::uint32_t value;
    } const lies[] = {{52, 1},           {52, 0xFFFFFFFEu}, {88, 100000},
                      {92, 0xFFFFFFFFu}, {92, 0},           {92, 400}};
    for (const auto& lie : lies) {
        std::vector<unsigned char> bytes = honest;
        std::memcpy(bytes.data() + lie.at, &lie.value, 4);
        EXPECT_FALSE(DecodeJobInfo2(bytes.data(), size).IsSuccess()) << lie.at << " " << lie.value;
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
