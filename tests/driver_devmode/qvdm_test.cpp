// The wrapper: string pool, ownership, and refusal of blocks that lie.
#include "driver_devmode/qvdm.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

UnicodeString Repeat(int count) {
    return UnicodeString::StringOfChar('x', count);
}

TEST(Qvdm, StringsArePackedInOrderBehindTheFirstUnit) {
    TQVDM settings;
    settings.Directory = TEXT("C:\\out");
    settings.FileName = TEXT("fax.tif");
    settings.Target = UnicodeString();
    ASSERT_TRUE(settings.Encode());
    EXPECT_EQ(int{settings.GetDM()->exOut.DirectoryOffset}, 1);
    EXPECT_EQ(int{settings.GetDM()->exOut.FileNameOffset}, 8);
    EXPECT_EQ(int{settings.GetDM()->exRun.TargetOffset}, 0);

    TQVDM reader(settings.GetDM());
    EXPECT_EQ(reader.DeviceName, UnicodeString(TEXT("Vantrel")));
    EXPECT_EQ(reader.FormName, UnicodeString(TEXT("A4")));
    EXPECT_EQ(reader.Directory, UnicodeString(TEXT("C:\\out")));
    EXPECT_EQ(reader.FileName, UnicodeString(TEXT("fax.tif")));
    EXPECT_EQ(reader.Target.Length(), 0);
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
}

TEST(Qvdm, OffsetsOutsideThePoolAndMissingTerminatorsFail) {
    TQVDM settings;
    UnicodeString text(TEXT("kept"));
    EXPECT_FALSE(settings.ReadString(text, -1));
    EXPECT_FALSE(settings.ReadString(text, 2048));
    EXPECT_EQ(text, UnicodeString(TEXT("kept")));
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
    EXPECT_EQ(settings.FormName, UnicodeString(TEXT("B4")));
    EXPECT_EQ(settings.FileName, UnicodeString(TEXT("stays")));
}

TEST(Qvdm, OnlyAValidBlockIsBorrowed) {
    QV_DEVMODE block;
    block.dmCopies = 7;
    TQVDM settings;
    QV_DEVMODE* const own = settings.GetDM();
    block.exVersion = 1;
    EXPECT_FALSE(settings.SetDEVMODE(&block));
    EXPECT_EQ(settings.GetDM(), own);
    block.exVersion = 263;
    EXPECT_FALSE(settings.SetDEVMODE(&block, 400));
    EXPECT_TRUE(settings.SetDEVMODE(&block, sizeof(block)));
    EXPECT_EQ(settings.GetDM(), &block);
}

TEST(Qvdm, ACopySharesTheBlockAndAssignCopiesIt) {
    auto settings = std::make_unique<TQVDM>();
    TQVDM other;
    other.GetDM()->dmCopies = 9;
    other.Target = TEXT("run.exe");
    settings->Assign(&other);
    EXPECT_NE(settings->GetDM(), other.GetDM());
    EXPECT_EQ(settings->GetDM()->dmCopies, 9);
    {
        TQVDM copy(*settings);
        EXPECT_EQ(copy.GetDM(), settings->GetDM());
    }
    QV_DEVMODE target;
    settings->CopyTo(&target);
    settings.reset();
    EXPECT_EQ(TQVDM(&target).Target, UnicodeString(TEXT("run.exe")));
}

TEST(Qvdm, ABlockWhoseStatedSizeGrewIsRecognised) {
    TQVDM settings;
    EXPECT_TRUE(settings.StatedSizeFits());
    settings.GetDM()->dmDriverExtra = 60000;
    EXPECT_FALSE(settings.StatedSizeFits());
}

}  // namespace
