// The settings block and its wrapper: string pool, ownership, and refusal of blocks that lie.
#include "driver_devmode/qvdm.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

#include "support/captured_log.h"
#include "support/format_page.h"
#include "support/string_print.h"

namespace {

UnicodeString Repeat(int count) {
    return UnicodeString::StringOfChar('x', count);
}

TEST(Qvdm, StringsArePackedInOrderBehindTheFirstUnit) {
    TQVDM settings;
    EXPECT_EQ(settings.DeviceName, TEXT("Vantrel"));
    EXPECT_EQ(settings.FormName, TEXT("A4"));
    EXPECT_EQ(settings.FileName.SubString(settings.FileName.Length() - 6, 7), TEXT("fax.tif"));
    settings.DeviceName = TEXT("Fax 2");
    settings.FormName = Repeat(31) + TEXT("y");
    settings.Directory = TEXT("C:\\out");
    settings.FileName = TEXT("fax.tif");
    settings.Target = UnicodeString();
    ASSERT_TRUE(settings.Encode());
    EXPECT_EQ(int{settings.GetDM()->exOut.DirectoryOffset}, 1);
    EXPECT_EQ(int{settings.GetDM()->exOut.FileNameOffset}, 8);
    EXPECT_EQ(int{settings.GetDM()->exRun.TargetOffset}, 0);

    const TQVDM reader(settings.GetDM());
    EXPECT_EQ(reader.DeviceName, TEXT("Fax 2"));
    EXPECT_EQ(reader.FormName, Repeat(31));
    EXPECT_EQ(reader.Directory, TEXT("C:\\out"));
    EXPECT_EQ(reader.FileName, TEXT("fax.tif"));
    EXPECT_EQ(reader.Target.Length(), 0);
    settings.GetDM()->dmFormName[31] = 'z';
    EXPECT_EQ(TQVDM(settings.GetDM()).FormName, Repeat(31) + TEXT("z")) << "no terminator";
}

TEST(Qvdm, ThePoolTakesExactly2047Units) {
    TQVDM settings;
    settings.Directory = Repeat(1000);
    settings.FileName = Repeat(1000);
    settings.Target = Repeat(44);
    EXPECT_TRUE(settings.Encode());
    EXPECT_EQ(int{settings.GetDM()->exRun.TargetOffset}, 2003);
    EXPECT_EQ(TQVDM(settings.GetDM()).Target.Length(), 44);
    settings.Target = Repeat(45);
    EXPECT_FALSE(settings.Encode());
    EXPECT_EQ(int{settings.GetDM()->exRun.TargetOffset}, 0);
    // A text behind one without room is not read from the middle of another one.
    settings.Directory = Repeat(1500);
    EXPECT_FALSE(settings.Encode());
    EXPECT_EQ(int{settings.GetDM()->exOut.FileNameOffset}, 0);
    EXPECT_EQ(int{settings.GetDM()->exRun.TargetOffset}, 0);
}

TEST(Qvdm, OffsetsOutsideThePoolAndMissingTerminatorsFail) {
    TQVDM settings;
    UnicodeString text(TEXT("kept"));
    EXPECT_FALSE(settings.ReadString(text, -1));
    EXPECT_FALSE(settings.ReadString(text, 2048));
    EXPECT_EQ(text, TEXT("kept"));
    EXPECT_TRUE(settings.ReadString(text, 2047));
    EXPECT_EQ(text.Length(), 0);
    for (WCHAR& unit : settings.GetDM()->exPool) unit = 'y';
    EXPECT_FALSE(settings.ReadString(text, 5));
    EXPECT_EQ(text.Length(), 0);
}

TEST(Qvdm, DecodeStopsAtTheFirstWrongOffset) {
    TQVDM settings;
    settings.FileName = TEXT("stays");
    settings.GetDM()->exOut.DirectoryOffset = 3000;
    settings.GetDM()->dmFormName[0] = 'B';
    EXPECT_FALSE(settings.Decode());
    EXPECT_EQ(settings.FormName, TEXT("B4"));
    EXPECT_EQ(settings.FileName, TEXT("stays"));
}

TEST(Qvdm, OnlyAValidBlockIsBorrowed) {
    test::CapturedLog log;
    QV_DEVMODE block;
    block.dmCopies = 7;
    TQVDM settings;
    QV_DEVMODE* const own = settings.GetDM();
    block.exVersion = 1;
    EXPECT_FALSE(settings.SetDEVMODE(&block));
    EXPECT_TRUE(settings.SetDEVMODE(own)) << "which it still owns";
    EXPECT_EQ(settings.GetDM(), own);
    EXPECT_TRUE(log.Has('X', TEXT("[TQVDM::SetDEVMODE()] Cannot set the DEVMODE structure: ")));
    block.exVersion = 263;
    EXPECT_FALSE(settings.SetDEVMODE(&block, 400));
    EXPECT_TRUE(settings.SetDEVMODE(&block, sizeof(block)));
    EXPECT_EQ(settings.GetDM(), &block);
    EXPECT_TRUE(settings.StatedSizeFits());
    block.dmDriverExtra = 60000;
    EXPECT_FALSE(settings.StatedSizeFits());
    EXPECT_TRUE(settings.SetDEVMODE(&block));
    EXPECT_TRUE(settings.StatedSizeFits());
}

TEST(Qvdm, ACopySharesTheBlockAndAssignCopiesIt) {
    auto settings = std::make_unique<TQVDM>();
    TQVDM other;
    other.GetDM()->dmCopies = 9;
    other.DeviceName = TEXT("Other");
    other.FormName = TEXT("B5");
    other.Directory = TEXT("C:\\d");
    other.FileName = TEXT("f.tif");
    other.Target = TEXT("run.exe");
    settings->Assign(&other);
    EXPECT_NE(settings->GetDM(), other.GetDM());
    QV_DEVMODE target;
    TQVDM assigned;
    {
        TQVDM copy(*settings);
        EXPECT_EQ(copy.GetDM(), settings->GetDM());
        assigned = copy;
        EXPECT_EQ(assigned.GetDM(), settings->GetDM());
    }
    assigned.Encode();
    assigned.CopyTo(&target);
    settings.reset();
    const TQVDM read(&target);
    EXPECT_EQ(read.DeviceName + read.FormName + read.Directory + read.FileName + read.Target,
              TEXT("OtherB5C:\\df.tifrun.exe"));
    EXPECT_EQ(target.dmCopies, 9);
}

TEST(Qvdm, WithoutABlockNothingWorksAndNothingBreaks) {
    test::CapturedLog log;
    TQVDM none(static_cast<DEVMODEW*>(nullptr));
    QV_DEVMODE target;
    none.CopyTo(&target);
    TQVDM().CopyTo(nullptr);
    none.Assign(&none);
    UnicodeString text;
    EXPECT_FALSE(none.Decode() || none.Encode() || none.StatedSizeFits());
    EXPECT_FALSE(none.ReadString(text, 0));
    EXPECT_TRUE(target.IsValid());
    EXPECT_TRUE(log.Has('X', TEXT("[TQVDM::CopyTo()] FDM cannot be NULL")));
    EXPECT_TRUE(log.Has('X', TEXT("[TQVDM::CopyTo()] Target cannot be NULL")));
}

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
