// Versions as text, and formats that ask for something else.
#include "printer_query/versions.h"

#include <gtest/gtest.h>

#include "support/string_print.h"
#include "win32/file_fixture.h"
#include "win32/small_image.h"

namespace {

class Versions : public test::FileTest {};

}  // namespace

TEST_F(Versions, FourNumbersOfAFile) {
    const test::Wide name = Path(TEXT("image.dll"));
    MakeFile(name, test::SmallImage(true));
    const UnicodeString file = name.c_str();
    EXPECT_EQ(FormatFileVersion(file, TEXT("%d.%d.%d.%d")), TEXT("1.2.3.4"));
    EXPECT_EQ(FormatFileVersion(file, TEXT("v%u.%02u")), TEXT("v1.02"));
    for (const WCHAR* bad : {TEXT("%s"), TEXT("%d.%d.%d.%d.%d"), TEXT("%n"), TEXT("%*d"),
                             TEXT("%I64d"), TEXT("%d%")}) {
        EXPECT_TRUE(FormatFileVersion(file, bad).IsEmpty());
    }
    EXPECT_TRUE(FormatFileVersion(TEXT("no such file.dll"), TEXT("%d.%d.%d.%d")).IsEmpty());
}

TEST_F(Versions, TheSystemsVersion) {
    const UnicodeString version = FormatOSVersion(TEXT("%d.%d"));
    EXPECT_GE(version.Length(), 3);
    EXPECT_EQ(FormatOSVersion(TEXT("%d.%d.%d%s %d %d.%d %d %d")).SubString(1, version.Length()),
              version);
    EXPECT_EQ(FormatOSVersion(TEXT("Windows")), TEXT("Windows"));
    EXPECT_TRUE(FormatOSVersion(TEXT("%s")).IsEmpty());
}
