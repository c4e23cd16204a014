// A unit's start and stop: registry, resource file, log file, all of it in one call.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "driver_devmode/qv_devmode.h"
#include "driver_global/startup.h"
#include "faults/fault_loop.h"
#include "log_file/log_reader.h"
#include "support/clean_logger.h"
#include "support/fresh_host_root.h"
#include "support/test_registry.h"
#include "xml/xml_resource.h"

namespace faults {

namespace {

class StartAndStop : public Scenario {
  public:
    StartAndStop() : Scenario(Throws::WithoutMemory) {
        setenv("QV_HOST_DEBUG_OUTPUT", (root_.Folder() + "/debug.log").c_str(), 1);
        std::filesystem::create_directories(root_.Folder() + "/drive_c/QV");
        std::ofstream(root_.Folder() + "/drive_c/QV/qv_res.xml")
            << "<res><devmode><fields>511</fields></devmode></res>";
        test::TestKey(HKEY_LOCAL_MACHINE, TEXT("Software\\Halvorn\\Vantrel"))
            .Set(TEXT("InstallPath"), TEXT("C:\\QV"))
            .Set(TEXT("Logfile"), TEXT("C:\\qv.log"));
    }
    ~StartAndStop() override { unsetenv("QV_HOST_DEBUG_OUTPUT"); }
    void Prepare() override {
        DeleteFileW(TEXT("C:\\qv.log"));
        QV_DEVMODE_AvailableFields = 527;
    }
    void Run() override {
        QVInitApp(unit_, UnicodeString(), UnicodeString());
        QVUninitApp(unit_);
    }
    void Check(const Step& step) override {
        // A unit whose start failed is not connected.
        EXPECT_EQ(test::CleanLogger::Logger().refCount, 0);
        EXPECT_EQ(test::CleanLogger::Logger().recorder, nullptr);
        EXPECT_EQ(GetXmlRes(), nullptr);
        EXPECT_TRUE(QV_DEVMODE_AvailableFields == 511 || QV_DEVMODE_AvailableFields == 527);
        Mox::TLogReader reader;
        const bool readable = reader.Open(TEXT("C:\\qv.log"));
        int records = 0;
        while (readable && reader.Next() != nullptr) ++records;
        if (step.hit) return;
        EXPECT_EQ(QV_DEVMODE_AvailableFields, 511u);
        EXPECT_EQ(records, 2);
        EXPECT_EQ(reader.SkipCount(), 0);
    }

  private:
    test::FreshHostRoot root_;
    test::CleanLogger logger_{0};
    const UnicodeString unit_ = TEXT("tests");
};

const Tests kStartAndStop("start-up", New<StartAndStop>);

}  // namespace

}  // namespace faults
