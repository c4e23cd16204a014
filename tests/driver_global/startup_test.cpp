// Start and stop of units, and what the product asks about its installation.
#include "driver_global/startup.h"

#include <set>
#include <thread>

#include "driver_devmode/document_folders.h"
#include "driver_devmode/spool_file.h"

#include "driver_devmode/qv_devmode.h"
#include "driver_global/installation.h"
#include "log_file/log_fixture.h"
#include "mox_classes/text/sysutils.h"
#include "mox_log/registry.h"
#include "xml/xml_resource.h"

using namespace test;

namespace {

const Wide kPrinterKey = Wide(kPrintersKey) + TEXT("\\One");

// An installation without a single value, no unit connected.
class Installation : public FileTest {
  protected:
    Installation() { RegDeleteTreeW(HKEY_LOCAL_MACHINE, kProductKey); }
    ~Installation() override { RegDeleteTreeW(HKEY_LOCAL_MACHINE, kProductKey); }

    static void Set(const WCHAR* name, const Wide& value, const Wide& key = kProductKey) {
        ASSERT_TRUE(Mox::WriteRegistry(HKEY_LOCAL_MACHINE, key.c_str(), name, value.c_str()));
    }

    const CleanLogger logger_{0};
};

TEST_F(Installation, WhatIsNotSetHasAFallback) {
    UnicodeString params;
    EXPECT_TRUE(GetInstallPath().IsEmpty());
    EXPECT_EQ(GetPrinterLanguage(), TEXT("en"));
    EXPECT_EQ(GetPrinterLocale(TEXT("One")), TEXT("gl"));
    EXPECT_EQ(GetPrinterPost(TEXT("One"), &params), TEXT("\\qv_post.exe"));
    EXPECT_EQ(params, UnicodeString(TEXT("-d {spoolfile} -t {docname} -p {printername} -j {jobid} "
                                         "-a {application}")));
}

TEST_F(Installation, APrintersOwnValuesComeFirst) {
    Set(TEXT("DefaultLocale"), TEXT("fr"));
    Set(TEXT("InstallPath"), TEXT("C:\\QV"));
    Set(TEXT("DefaultRasterizer"), TEXT("all.exe"));
    EXPECT_EQ(GetPrinterLocale(TEXT("One")), TEXT("fr"));
    EXPECT_EQ(GetPrinterPost(TEXT("One"), nullptr), TEXT("C:\\QV\\all.exe"));
    Set(TEXT("Locale"), TEXT("de"), kPrinterKey);
    Set(TEXT("Rasterizer"), TEXT("D:\\own.exe"), kPrinterKey);
    Set(TEXT("RasterizerParams"), TEXT("{jobid}"), kPrinterKey);
    Set(TEXT("InstallPath"), TEXT("C:\\QV\\"));
    UnicodeString params;
    EXPECT_EQ(GetPrinterLocale(TEXT("One")), TEXT("de"));
    EXPECT_EQ(GetPrinterPost(TEXT("One"), &params), TEXT("D:\\own.exe"));
    EXPECT_EQ(params, TEXT("{jobid}"));
    EXPECT_EQ(GetPrinterPost(TEXT("Two"), nullptr), TEXT("C:\\QV\\all.exe"));
}

TEST_F(Installation, TheLogFileIsInThePublicDocumentsOrTheTemporaryFolder) {
    const UnicodeString documents = GetPublicDocument();
    const UnicodeString expected =
        documents.Length() > 0
            ? Sysutils::ConfirmPathString(documents) + TEXT("ORLO\\orlo.log")
            : Sysutils::ConfirmPathString(Sysutils::GetEnvExpanded(TEXT("%temp%"))) +
                  TEXT("orlo.log");
    EXPECT_EQ(GetPrinterLogFile(), expected);
    Set(TEXT("Logfile"), TEXT("Disabled"));
    EXPECT_EQ(GetPrinterLogFile(), TEXT("Disabled"));
}

TEST_F(Installation, TheSystemIsDescribedOnce) {
    const UnicodeString info = GetOSInfo();
    EXPECT_GT(info.Pos(TEXT(" build ")), 1);
    EXPECT_GT(info.Pos(TEXT("[AMD64]")), 1);
    EXPECT_EQ(GetOSInfo().t_str(), info.t_str());
}

TEST_F(Installation, SpoolFilesHaveNamesOfTheirOwn) {
    const UnicodeString name = MakeSpoolFilename();
    const UnicodeString lead = Sysutils::UnicodePrintf(
        TEXT("%s%08x_"), Sysutils::ConfirmPathString(Sysutils::GetTempPathW()),
        Mox::GetSessionId());
    EXPECT_EQ(name.SubString(1, lead.Length()), lead);
    EXPECT_EQ(name.Length(), lead.Length() + 16 + 6);
    EXPECT_EQ(name.SubString(name.Length() - 5, 6), TEXT(".qvspl"));
    std::vector<std::string> names(12000);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&names, t] {
            for (int i = 0; i < 3000; ++i) names[t * 3000 + i] = Narrow(MakeSpoolFilename());
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), names.size());
}

class Startup : public Installation {
  protected:
    void SetUp() override {
        Installation::SetUp();
        log_ = Path(TEXT("start.log"));
        Set(TEXT("Logfile"), log_);
    }
    void TearDown() override {
        while (CleanLogger::Logger().refCount > 0) QVUninitApp(TEXT("rest"));
        QV_DEVMODE_AvailableFields = fields_before_;
        SetLanguage(language_before_);
        Installation::TearDown();
    }

    static void Start(const WCHAR* name, const Wide& resource = Wide()) {
        QVInitApp(name, resource.c_str(), TEXT("de"));
    }
    static void Log(const char* text) {
        CleanLogger::Logger().Log('i', TEXT("tests"), 1, text, UnicodeString(), nullptr, 0);
    }
    // The log's texts, without those that tell of the operating system.
    Texts Logged() {
        Mox::TLogReader reader;
        Texts texts = Drain(reader, reader.Open(log_.c_str())).texts;
        std::erase_if(texts, [](const std::string& t) { return t.rfind("OS Version: ", 0) == 0; });
        return texts;
    }
    static std::string Started(const std::string& name) {
        return "'" + name + " [AMD64]' initiated the log system. ";
    }

  private:
    Wide log_;
    std::uint32_t fields_before_ = QV_DEVMODE_AvailableFields;
    UnicodeString language_before_ = GetLanguage();
};

TEST_F(Startup, AUnitSaysWhoItIs) {
    Start(TEXT("unit"));
    EXPECT_EQ(Logged(), Texts{Started("unit")});
    EXPECT_EQ(GetLanguage(), TEXT("de"));
    EXPECT_NE(GetXmlRes(), nullptr);
    QVUninitApp(TEXT("unit"));
    EXPECT_EQ(CleanLogger::Logger().refCount, 0);
    EXPECT_EQ(CleanLogger::Logger().recordProc, nullptr);
    EXPECT_EQ(GetXmlRes(), nullptr);
}

// The first unit that stops removes the recorder, also one that another unit installed.
TEST_F(Startup, UnitsStopInAnyOrder) {
    for (int round = 0; round < 2; ++round) {
        Start(TEXT("one"));
        QVInitDriver(TEXT("two"), UnicodeString(), UnicodeString());
        Log("both");
        QVUninitApp(TEXT("one"));
        Log("not in the file");
        EXPECT_NE(GetXmlRes(), nullptr);
        EXPECT_EQ(CleanLogger::Logger().recorder, nullptr);
        QVUninitDriver(TEXT("two"));
        EXPECT_EQ(GetXmlRes(), nullptr);
        QVUninitDriver(TEXT("one too many"));
    }
    const Texts round{Started("one"), Started("two"), "both"};
    Texts twice = round;
    twice.insert(twice.end(), round.begin(), round.end());
    EXPECT_EQ(Logged(), twice);
}

TEST_F(Startup, AUnitMayEndInACallbackOfTheLog) {
    Start(TEXT("unit"));
    CleanLogger::Logger().recordProc = [](void*, Mox::TLogMsg*, Mox::TLogRecorder*, bool*) {
        QVUninitApp(UnicodeString());
    };
    Mox::SetLogRecorder(CleanLogger::Logger().recorder);
    EXPECT_EQ(Mox::LogSurely('i', TEXT("tests"), 1, TEXT("last")), DWORD{ERROR_WRITE_FAULT});
    EXPECT_EQ(Logged(), (Texts{Started("unit"), "last"}));
}

TEST_F(Startup, TheResourceFileMaySetTheSupportedFields) {
    const std::pair<const char*, std::uint32_t> rows[] = {
        {"<r><devmode><fields>515</fields></devmode></r>", 515},
        {"<r><devmode><fields>all</fields></devmode></r>", 527},
        {"<r><devmode/></r>", 77},
        {"", 77},
        {"<r><devmode><fields>5", 527},
        {"<r><devmode><fields a=>5</fields></devmode></r>", 527},
        {"<r>\x80\x80</r>", 77}};
    for (const auto& [content, fields] : rows) {
        const Wide name = Path(TEXT("res"));
        MakeFile(name, content);
        QV_DEVMODE_AvailableFields = 77;
        Start(TEXT("unit"), name);
        EXPECT_EQ(QV_DEVMODE_AvailableFields, fields) << content;
        QVUninitApp(TEXT("unit"));
    }
    EXPECT_EQ(Logged().size(), std::size(rows));
}

TEST_F(Startup, ADisabledLogIsNotWritten) {
    Set(TEXT("Logfile"), TEXT("Disabled"));
    Start(TEXT("unit"));
    EXPECT_EQ(CleanLogger::Logger().recorder, nullptr);
}

TEST_F(Startup, ALogFileThatDoesNotOpenKeepsTheOneInUse) {
    Start(TEXT("one"));
    Set(TEXT("Logfile"), Folder());
    Start(TEXT("two"));
    Log("text");
    EXPECT_EQ(Logged(), (Texts{Started("one"), Started("two"), "text"}));
    QVUninitApp(TEXT("two"));
    Start(TEXT("three"));
    EXPECT_EQ(CleanLogger::Logger().recorder, nullptr);
}

}  // namespace
