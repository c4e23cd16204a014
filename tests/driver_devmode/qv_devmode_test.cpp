// The settings block: defaults, validity and the derived resolution.
#include "driver_devmode/qv_devmode.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "driver_devmode/qvdm.h"
#include "support/format_page.h"

namespace {

const unsigned char* Bytes(const QV_DEVMODE& block) {
    return reinterpret_cast<const unsigned char*>(static_cast<const DEVMODEW*>(&block));
}

TEST(QvDevmode, AFreshBlockIsValidAndItsBytesAreWhereReadersLook) {
    QV_DEVMODE block;
    EXPECT_TRUE(block.IsValid());
    EXPECT_EQ(QV_DEVMODE::Size(), 4400);
    EXPECT_EQ(block.dmSize, 220);
    EXPECT_EQ(block.dmDriverExtra, 4180);
    EXPECT_EQ(block.dmFields, QV_DEVMODE_AvailableFields);
    EXPECT_EQ(std::memcmp(Bytes(block) + 220, "QV DEVMODEex\0\x07\x01", 15), 0);
    EXPECT_EQ(Bytes(block)[238], 204);
    EXPECT_EQ(Bytes(block)[294], 30);
    EXPECT_EQ(Bytes(block)[78], 9);
}

TEST(QvDevmode, ValidityLooksAtExtraSizeIdentifierAndVersion) {
    QV_DEVMODE block;
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
}

TEST(QvDevmode, ABlockThatClaimsMoreThanItsBytesIsNotRead) {
    QV_DEVMODE block;
    EXPECT_TRUE(QV_DEVMODE::IsValidQV_DEVMODE(&block, 4400));
    EXPECT_FALSE(QV_DEVMODE::IsValidQV_DEVMODE(&block, 4399));
    EXPECT_FALSE(QV_DEVMODE::IsValidQV_DEVMODE(&block, 10));
}

TEST(QvDevmode, TheRenderingResolutionFollowsTheFaxResolution) {
    struct {
        short x, y, quality, y_resolution, expected;
    } const cases[] = {{204, 196, 0, 0, 196},
                       {204, 98, 0, 0, 196},
                       {204, 391, 600, 300, 391},
                       {204, 196, 600, 600, 600}};
    for (const auto& c : cases) {
        QV_DEVMODE block;
        block.exFax.Resolution[0] = c.x;
        block.exFax.Resolution[1] = c.y;
        block.dmPrintQuality = c.quality;
        block.dmYResolution = c.y_resolution;
        block.Validate();
        EXPECT_EQ(block.dmPrintQuality, c.expected);
        EXPECT_EQ(block.dmYResolution, c.expected);
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
}

TEST(QvDevmode, TheFormatPagesExampleIsWhatTheWriterWritesAndTheReaderReads) {
    const std::vector<unsigned char> dump = test::PageDump("devmode.md", 0);
    QV_DEVMODE block;
    TQVDM settings(&block);
    settings.Directory = TEXT("C:\\f");
    ASSERT_TRUE(settings.Encode());
    const unsigned char* extra = Bytes(block) + 220;
    EXPECT_EQ(std::vector<unsigned char>(extra, extra + dump.size()), dump);

    QV_DEVMODE read;
    std::memcpy(reinterpret_cast<char*>(static_cast<DEVMODEW*>(&read)) + 220, dump.data(),
                dump.size());
    EXPECT_EQ(TQVDM(&read).Directory, UnicodeString(TEXT("C:\\f")));
}

}  // namespace
