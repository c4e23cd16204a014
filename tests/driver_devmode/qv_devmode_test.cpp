// The settings block: defaults, validity and the derived resolution.
#include "driver_devmode/qv_devmode.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "driver_devmode/qvdm.h"
#include "support/format_page.h"
#include "support/string_print.h"

namespace {

TEST(QvDevmode, ValidityLooksAtExtraSizeIdentifierAndVersion) {
    QV_DEVMODE block;
    EXPECT_TRUE(block.IsValid());
    EXPECT_EQ(QV_DEVMODE::Size(), 4400);
    block.dmDriverExtra = 4181;
    EXPECT_TRUE(block.IsValid());
    block.dmDriverExtra = 4179;
    EXPECT_FALSE(block.IsValid());
    block.dmDriverExtra = 4180;
    block.exID[12] = 'x';
    EXPECT_FALSE(block.IsValid());
    block.exID[12] = 0;
    block.exVersion = 260;
    EXPECT_FALSE(block.IsValid());
    block.exVersion = 261;
    EXPECT_TRUE(block.IsValid());
    EXPECT_FALSE(QV_DEVMODE::IsValidQV_DEVMODE(nullptr));
    // A block that claims more than its bytes is not read.
    EXPECT_TRUE(QV_DEVMODE::IsValidQV_DEVMODE(&block, 4400));
    EXPECT_FALSE(QV_DEVMODE::IsValidQV_DEVMODE(&block, 4399));
    EXPECT_FALSE(QV_DEVMODE::IsValidQV_DEVMODE(&block, 10));
}

TEST(QvDevmode, TheRenderingResolutionFollowsTheFaxResolution) {
    const short rows[][5] = {{204, 196, 0, 0, 196},     {204, 98, 0, 0, 196},
                             {203, 102, 0, 0, 102},     {200, 100, 1, 1, 200},
                             {204, 391, 600, 300, 391}, {1, 2, 600, 600, 600}};
    for (const auto& [x, y, quality, y_resolution, expected] : rows) {
        QV_DEVMODE block;
        block.exFax.Resolution[0] = x;
        block.exFax.Resolution[1] = y;
        block.dmPrintQuality = quality;
        block.dmYResolution = y_resolution;
        block.Validate();
        EXPECT_EQ(block.dmPrintQuality, expected);
        EXPECT_EQ(block.dmYResolution, expected);
    }
}

TEST(QvDevmode, ControlPointsKeepTheirSign) {
    TImageProcessOptions options;
    options.CP[0].SetValues(-1, 300);
    POINT points[4];
    options.cpToPOINT(points);
    EXPECT_EQ(points[0].x, -1);
    EXPECT_EQ(points[0].y, 300);
    EXPECT_EQ(points[2].x, 127);
    EXPECT_EQ(points[2].y, 255);
    EXPECT_EQ(points[3].x, 255);
}

TEST(QvDevmode, TheFormatPagesExampleIsWhatTheWriterWritesAndTheReaderReads) {
    const std::vector<unsigned char> dump = test::PageDump("devmode.md", 0);
    QV_DEVMODE block;
    TQVDM settings(&block);
    settings.Directory = TEXT("C:\\f");
    ASSERT_TRUE(settings.Encode());
    auto* extra = reinterpret_cast<unsigned char*>(static_cast<DEVMODEW*>(&block)) + 220;
    EXPECT_EQ(std::vector<unsigned char>(extra, extra + dump.size()), dump);
    std::memset(extra, 0, dump.size());
    std::memcpy(extra, dump.data(), dump.size());
    EXPECT_EQ(TQVDM(&block).Directory, TEXT("C:\\f"));
}

}  // namespace
