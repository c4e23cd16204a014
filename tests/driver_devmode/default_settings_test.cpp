// One call sets a printer's defaults: what it stores, and when it refuses.
#include "driver_devmode/default_settings.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

#include "driver_devmode/qvdm.h"
#include "printer_query/spooler.h"
#include "support/fresh_host_root.h"
#include "support/string_print.h"
#include "support/test_printers.h"

namespace {

test::Bytes BlockBytes() {
    const QV_DEVMODE block;
    const auto* bytes = reinterpret_cast<const BYTE*>(static_cast<const DEVMODEW*>(&block));
    return test::Bytes(bytes, bytes + QV_DEVMODE::Size());
}

class DefaultSettings : public testing::Test {
  protected:
    DefaultSettings() {
        printers.InstallPrinter(name);
        printers.SetDefaultDevMode(name, BlockBytes());
    }
    struct Target {
        const WCHAR *program, *parameters, *message, *window, *format;
    };
    int Set(const Target& t, const WCHAR* directory = TEXT("C:\\out")) {
        return SetQVDefaultSetting(name.c_str(), 1, 0, 0, 1, directory, TEXT("fax.tif"), t.program,
                                   t.parameters, t.message, t.window, t.format);
    }
    UnicodeString StoredTarget() {
        auto stored = GetGlobalDevMode(name.c_str());
        TQVDM settings;
        EXPECT_TRUE(stored.Count() == 1 && settings.SetDEVMODE(&stored[0], stored.Size()));
        return settings.Target;
    }

    test::FreshHostRoot root;
    test::TestPrinters printers;
    const test::Text name = TEXT("Defaults Fax");
};

TEST_F(DefaultSettings, SwitchesAndTextsLandInTheUsersBlock) {
    ASSERT_EQ(Set({nullptr, nullptr, nullptr, nullptr, nullptr}), 1);
    auto stored = GetGlobalDevMode(name.c_str());
    ASSERT_EQ(stored.Count(), 1);
    TQVDM settings;
    ASSERT_TRUE(settings.SetDEVMODE(&stored[0], stored.Size()));
    EXPECT_EQ(settings.GetDM()->exDialog.Mode, 1);
    EXPECT_EQ(settings.GetDM()->exRun.Enabled, 0);
    EXPECT_EQ(settings.GetDM()->exOut.UseSerial, 0);
    EXPECT_EQ(settings.GetDM()->exOut.UseDocNameAsFileName, 1);
    EXPECT_EQ(settings.Directory, TEXT("C:\\out"));
    EXPECT_EQ(settings.FileName, TEXT("fax.tif"));
    EXPECT_EQ(settings.Target.Length(), 0);
}

TEST_F(DefaultSettings, TheTargetIsACommandLineOrAnEvent) {
    const std::pair<Target, const WCHAR*> rows[] = {
        {{TEXT("C:\\a b\\x.exe"), TEXT("-q"), nullptr, nullptr, nullptr},
         TEXT("\"C:\\a b\\x.exe\" -q")},
        {{TEXT("x.exe"), nullptr, nullptr, nullptr, nullptr}, TEXT("x.exe")},
        {{nullptr, nullptr, TEXT("D"), nullptr, nullptr},
         TEXT("<event file=\"\" msg=\"D\" win=\"\"/>")},
        {{nullptr, nullptr, nullptr, nullptr, TEXT("f")},
         TEXT("<event file=\"\" param_msg=\"f\" msg=\"\" win=\"\"/>")},
        {{TEXT("x"), TEXT("-p"), TEXT("m"), TEXT("w"), TEXT("-p")},
         TEXT("<event file=\"x\" param=\"-p\" msg=\"m\" win=\"w\"/>")},
        {{TEXT("x"), TEXT("-p"), nullptr, TEXT("w"), TEXT("-f")},
         TEXT("<event file=\"x\" param_run=\"-p\" param_msg=\"-f\" msg=\"\" win=\"w\"/>")}};
    for (const auto& [target, stored] : rows) {
        ASSERT_EQ(Set(target), 1);
        EXPECT_EQ(StoredTarget(), stored);
    }
}

TEST_F(DefaultSettings, NothingIsWrittenWhenItCannotBeDoneWhole) {
    EXPECT_EQ(Set({TEXT("before"), nullptr, nullptr, nullptr, nullptr}), 1);
    const test::Text long_text(2100, 'x');
    EXPECT_EQ(Set({TEXT("after"), nullptr, nullptr, nullptr, nullptr}, long_text.c_str()), 0);
    EXPECT_EQ(StoredTarget(), TEXT("before"));
}

TEST_F(DefaultSettings, MissingAndForeignPrintersAreRefused) {
    const test::Text foreign = TEXT("Defaults Laser");
    printers.InstallPrinter(foreign, test::kOtherDriver);
    printers.SetDefaultDevMode(foreign, test::PublicBlock(foreign, test::kOtherBlockBytes));
    for (const WCHAR* printer :
         {TEXT("No Such Printer"), foreign.c_str(), static_cast<const WCHAR*>(nullptr)}) {
        EXPECT_EQ(SetQVDefaultSetting(printer, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr,
                                      nullptr, nullptr, nullptr),
                  0);
    }
}

}  // namespace
