// The file dialogs of the Linux host: the arguments of the dialog program, and its answers.
#include <gtest/gtest.h>
#include <windows.h>

#include <commdlg.h>

#include <fstream>

#include "os_xp/file_dialog.h"
#include "support/dialog_program_linux.h"
#include "support/string_print.h"

namespace {

using Wide = std::basic_string<WCHAR>;

class FileDialogs : public testing::Test {
  protected:
    FileDialogs() {
        record_.lStructSize = sizeof record_;
        record_.lpstrFile = name_;
        record_.nMaxFile = MAX_PATH;
        record_.lpstrInitialDir = u"C:\\";
        record_.lpstrTitle = u"Open; a \"fax\" $(x)";
    }
    void Touch(const std::string& name) { std::ofstream(program_.DriveC() + name) << "x"; }
    // The chosen name after an answer; "none" after a cancel.
    Wide Opened(const std::string& answer, int exit_code = 0) {
        program_.Answer(answer, exit_code);
        return GetOpenFileNameW(&record_) ? Wide(name_) : u"none";
    }
    Wide Saved(const std::string& answer) {
        program_.Answer(program_.DriveC() + answer);
        return GetSaveFileNameW(&record_) ? Wide(name_) : u"none";
    }

    test::DialogProgram program_;
    WCHAR name_[MAX_PATH] = {};
    OPENFILENAMEW record_{};
};

}  // namespace

TEST_F(FileDialogs, ArgumentsReachTheProgramUnchangedAndItsFirstLineIsTheFile) {
    record_.lpstrFilter = u"Texts\0*.txt;*.doc\0All files\0*.*\0";
    Wide(u"C:\\sub\\offered.txt").copy(name_, MAX_PATH);
    EXPECT_EQ(Opened(""), u"none");
    EXPECT_EQ(program_.Asked(), "open\nOpen; a \"fax\" $(x)\n" + program_.Folder() + "/drive_c\n" +
                                    program_.DriveC() +
                                    "sub/offered.txt\nTexts|*.txt;*.doc\nAll files|*.*\n");
    EXPECT_EQ(Opened(program_.DriveC() + "fax one.tif\nnoise"), u"C:\\fax one.tif");
    EXPECT_EQ(record_.nFileOffset, 3);
    EXPECT_EQ(record_.nFileExtension, 11);
    EXPECT_EQ(Opened("relative.v1/plain"), u"C:\\relative.v1\\plain");
    EXPECT_EQ(record_.nFileOffset, 15);
    EXPECT_EQ(record_.nFileExtension, 0);
    EXPECT_EQ(Opened("C:\\windows.tif"), u"C:\\windows.tif");
}

TEST_F(FileDialogs, OtherAnswersAreNoFile) {
    const std::string file = program_.DriveC() + "a.tif";
    EXPECT_EQ(Opened(file, 1), u"none");
    for (const char* bad : {"a:b", "a\xFF.tif"})
        EXPECT_EQ(Opened(program_.DriveC() + bad), u"none");
    record_.Flags = OFN_FILEMUSTEXIST;
    EXPECT_EQ(Opened(file), u"none");
    Touch("a.tif");
    record_.nMaxFile = 9;
    EXPECT_EQ(Opened(file), u"C:\\a.tif");
    record_.nMaxFile = 8;
    EXPECT_EQ(Opened(file), u"none");
    EXPECT_EQ(name_[0], 9) << "the room that is needed";
    record_.nMaxFile = MAX_PATH;
    record_.Flags = 0x40;
    EXPECT_EQ(Opened(file), u"none");
    record_.Flags = 0;
    record_.lStructSize = 1;
    EXPECT_EQ(Opened(file), u"none");
    record_.lStructSize = sizeof record_;
    for (const char* program : {"", "/no/such/program"}) {
        setenv("QV_HOST_DIALOG", program, 1);
        EXPECT_EQ(Opened(file), u"none");
    }
}

TEST_F(FileDialogs, OverwritingIsConfirmedAndTheDefaultExtensionAdded) {
    Touch("old.tif");
    Touch("plain");
    record_.Flags = OFN_OVERWRITEPROMPT;
    record_.lpstrDefExt = u"tif";
    EXPECT_EQ(Saved("old"), u"C:\\old.tif");
    EXPECT_TRUE(program_.Asked().starts_with("overwrite\n")) << program_.Asked();
    program_.RefuseOverwriting();
    EXPECT_EQ(Saved("old.tif"), u"none");
    EXPECT_EQ(Saved("other.doc"), u"C:\\other.doc");
    EXPECT_EQ(Saved("plain"), u"C:\\plain.tif");
    EXPECT_EQ(Opened(program_.DriveC() + "plain"), u"C:\\plain");
}

TEST_F(FileDialogs, TheLibrarysDialogOffersOnlyFilesThatMustExist) {
    UnicodeString file = TEXT("offered.txt");
    const auto open = [&](bool must_exist) {
        return OpenSaveFileDialog(nullptr, UnicodeString(), TEXT("Texts|*.txt|All|*.*"),
                                  TEXT("C:\\"), TEXT("Send"), file, must_exist, false, true, true);
    };
    program_.Answer(program_.DriveC() + "chosen.txt");
    EXPECT_TRUE(open(false));
    EXPECT_EQ(file, TEXT("C:\\chosen.txt"));
    EXPECT_EQ(program_.Asked(),
              "open\nSend\n" + program_.Folder() + "/drive_c\noffered.txt\nTexts|*.txt\nAll|*.*\n");
    program_.Answer("", 1);
    file = TEXT("C:\\missing.txt");
    EXPECT_FALSE(open(true));
    EXPECT_EQ(file, UnicodeString());
    Touch("there.txt");
    file = TEXT("C:\\there.txt");
    EXPECT_FALSE(open(true));
    EXPECT_EQ(file, TEXT("C:\\there.txt"));
    EXPECT_NE(program_.Asked().find("/drive_c/there.txt\n"), std::string::npos);
}

TEST_F(FileDialogs, TheLibrarysDialogCutsANameThatIsTooLong) {
    UnicodeString file = UnicodeString::StringOfChar(TEXT('x'), 300);
    const auto save = [&] {
        return OpenSaveFileDialog(nullptr, TEXT("tif"), UnicodeString(), UnicodeString(),
                                  UnicodeString(), file, false, true, true, false);
    };
    program_.Answer("", 1);
    EXPECT_FALSE(save());
    EXPECT_EQ(file.Length(), 300);
    EXPECT_EQ(program_.Asked(), "save\n\n\n" + std::string(259, 'x') + "\n");
    program_.Answer(program_.DriveC() + "fax");
    EXPECT_TRUE(save());
    EXPECT_EQ(file, TEXT("C:\\fax.tif"));
}
