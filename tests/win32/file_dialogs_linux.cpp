// The file dialogs of the Linux host: what its dialog program is asked, what its answers mean.
#include <gtest/gtest.h>
#include <windows.h>

#include <commdlg.h>

#include <fstream>

#include "support/dialog_program_linux.h"

namespace {

using Wide = std::basic_string<WCHAR>;

class FileDialogs : public testing::Test {
  protected:
    FileDialogs() {
        record_.lStructSize = sizeof record_;
        record_.lpstrFile = name_;
        record_.nMaxFile = MAX_PATH;
        record_.lpstrInitialDir = u"C:\\";
    }
    void Touch(const std::string& name) { std::ofstream(program_.DriveC() + name) << "x"; }
    Wide Name() const { return name_; }

    test::DialogProgram program_;
    WCHAR name_[MAX_PATH] = {};
    OPENFILENAMEW record_{};
};

}  // namespace

TEST_F(FileDialogs, ArgumentsReachTheProgramUnchanged) {
    record_.lpstrTitle = u"Open; a \"fax\" $(x)";
    record_.lpstrFilter = u"Texts\0*.txt;*.doc\0All files\0*.*\0";
    Wide(u"C:\\sub\\offered.txt").copy(name_, MAX_PATH);
    program_.Answer("");
    EXPECT_FALSE(GetOpenFileNameW(&record_));
    EXPECT_EQ(program_.Asked(), "open\nOpen; a \"fax\" $(x)\n" + program_.Folder() + "/drive_c\n" +
                                    program_.DriveC() +
                                    "sub/offered.txt\nTexts|*.txt;*.doc\nAll files|*.*\n");
}

TEST_F(FileDialogs, TheFirstLineIsTheFile) {
    program_.Answer(program_.DriveC() + "fax one.tif\nnoise");
    ASSERT_TRUE(GetOpenFileNameW(&record_));
    EXPECT_EQ(Name(), u"C:\\fax one.tif");
    EXPECT_EQ(record_.nFileOffset, 3);
    EXPECT_EQ(record_.nFileExtension, 11);
    EXPECT_EQ(CommDlgExtendedError(), 0u);
    program_.Answer("relative.tif");
    ASSERT_TRUE(GetOpenFileNameW(&record_));
    EXPECT_EQ(Name(), u"C:\\relative.tif");
}

TEST_F(FileDialogs, OtherEndingsHaveAReason) {
    program_.Answer(program_.DriveC() + "a.tif", 1);
    EXPECT_FALSE(GetOpenFileNameW(&record_));
    EXPECT_EQ(CommDlgExtendedError(), 0u);
    for (const char* bad : {"a:b", "a\xFF.tif"}) {
        program_.Answer(program_.DriveC() + bad);
        EXPECT_FALSE(GetOpenFileNameW(&record_)) << bad;
        EXPECT_EQ(CommDlgExtendedError(), FNERR_INVALIDFILENAME) << bad;
    }
    program_.Answer(program_.DriveC() + "a.tif");
    record_.Flags = OFN_FILEMUSTEXIST;
    EXPECT_FALSE(GetOpenFileNameW(&record_));
    EXPECT_EQ(CommDlgExtendedError(), FNERR_INVALIDFILENAME);
    record_.Flags = 0;
    record_.nMaxFile = 4;
    EXPECT_FALSE(GetOpenFileNameW(&record_));
    EXPECT_EQ(CommDlgExtendedError(), FNERR_BUFFERTOOSMALL);
    EXPECT_EQ(name_[0], 9);
    record_.lStructSize = 1;
    EXPECT_FALSE(GetOpenFileNameW(&record_));
    EXPECT_EQ(CommDlgExtendedError(), CDERR_STRUCTSIZE);
}

TEST_F(FileDialogs, WithoutAProgramThereIsNoDialog) {
    for (const char* program : {"", "/no/such/program"}) {
        setenv("QV_HOST_DIALOG", program, 1);
        EXPECT_FALSE(GetSaveFileNameW(&record_));
        EXPECT_EQ(CommDlgExtendedError(), CDERR_DIALOGFAILURE) << program;
    }
}

TEST_F(FileDialogs, OverwritingIsConfirmed) {
    Touch("old.tif");
    record_.Flags = OFN_OVERWRITEPROMPT;
    program_.Answer(program_.DriveC() + "old.tif");
    ASSERT_TRUE(GetSaveFileNameW(&record_));
    EXPECT_TRUE(program_.Asked().starts_with("overwrite\n")) << program_.Asked();
    program_.RefuseOverwriting();
    EXPECT_FALSE(GetSaveFileNameW(&record_));
    program_.Answer(program_.DriveC() + "new.tif");
    EXPECT_TRUE(GetSaveFileNameW(&record_));
}

TEST_F(FileDialogs, ANameWithoutExtensionGetsTheDefaultOne) {
    Touch("plain");
    record_.lpstrDefExt = u"tif";
    program_.Answer(program_.DriveC() + "plain");
    ASSERT_TRUE(GetSaveFileNameW(&record_));
    EXPECT_EQ(Name(), u"C:\\plain.tif");
    ASSERT_TRUE(GetOpenFileNameW(&record_));
    EXPECT_EQ(Name(), u"C:\\plain");
    program_.Answer(program_.DriveC() + "other.doc");
    ASSERT_TRUE(GetSaveFileNameW(&record_));
    EXPECT_EQ(Name(), u"C:\\other.doc");
}
