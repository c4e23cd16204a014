// The file dialog, with a program of the test in the user's place.
#include <gtest/gtest.h>
#include <windows.h>

#include "os_xp/file_dialog.h"
#include "support/dialog_program_linux.h"
#include "support/string_print.h"

namespace {

class FileDialog : public testing::Test {
  protected:
    bool Open(bool must_exist) {
        return OpenSaveFileDialog(nullptr, UnicodeString(), TEXT("Texts|*.txt|All|*.*"),
                                  TEXT("C:\\"), TEXT("Send"), file_, must_exist, false, true, true);
    }
    bool Save() {
        return OpenSaveFileDialog(nullptr, TEXT("tif"), UnicodeString(), UnicodeString(),
                                  UnicodeString(), file_, false, true, true, false);
    }

    test::DialogProgram program_;
    UnicodeString file_;
};

}  // namespace

TEST_F(FileDialog, GivesTheChosenFile) {
    file_ = TEXT("offered.txt");
    program_.Answer(program_.DriveC() + "chosen.txt");
    EXPECT_TRUE(Open(false));
    EXPECT_EQ(file_, TEXT("C:\\chosen.txt"));
    EXPECT_EQ(program_.Asked(),
              "open\nSend\n" + program_.Folder() + "/drive_c\noffered.txt\nTexts|*.txt\nAll|*.*\n");
    program_.Answer(program_.DriveC() + "fax");
    EXPECT_TRUE(Save());
    EXPECT_EQ(file_, TEXT("C:\\fax.tif"));
}

TEST_F(FileDialog, OffersOnlyFilesThatMustExist) {
    file_ = TEXT("C:\\missing.txt");
    program_.Answer("", 1);
    EXPECT_FALSE(Open(true));
    EXPECT_EQ(file_, UnicodeString());
    std::ofstream(program_.DriveC() + "there.txt") << "x";
    file_ = TEXT("C:\\there.txt");
    EXPECT_FALSE(Open(true));
    EXPECT_EQ(file_, TEXT("C:\\there.txt"));
    EXPECT_NE(program_.Asked().find("/drive_c/there.txt\n"), std::string::npos);
}

TEST_F(FileDialog, CutsANameThatIsTooLong) {
    file_ = UnicodeString::StringOfChar(TEXT('x'), 300);
    program_.Answer("", 1);
    EXPECT_FALSE(Save());
    EXPECT_EQ(file_.Length(), 300);
    EXPECT_EQ(program_.Asked(), "save\n\n\n" + std::string(259, 'x') + "\n");
}
