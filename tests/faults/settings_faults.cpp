// Writing one value: to the registry, to a printer's settings.
#include <algorithm>
#include <string>

#include "driver_devmode/default_settings.h"
#include "faults/machine.h"
#include "faults/scenario_tests.h"
#include "mox_classes/text/sysutils.h"
#include "qv_rtl_main/command_entry.h"

namespace faults {

namespace {

constexpr const WCHAR* kValue = TEXT("Language");
constexpr const WCHAR* kNeighbour = TEXT("InstallPath");
const int kSuccess = static_cast<int>(ERROR_SUCCESS);

// The caller's buffer of a call that takes text and gives text.
struct Buffer {
    static constexpr int kUnits = 64;
    WCHAR text[kUnits + 2];
    Buffer() { std::fill(std::begin(text), std::end(text), u'#'); }
    void ExpectWhole() const {
        EXPECT_EQ(text[kUnits + 1], u'#') << "written past its end";
        EXPECT_NE(std::find(text, text + kUnits + 1, u'\0'), text + kUnits + 1) << "no terminator";
    }
};

class RegistryWrite : public Scenario {
  public:
    static constexpr const char* kName = "registry write";
    RegistryWrite() {
        Machine::SetValue(kNeighbour, TEXT("C:\\kept"));
        Machine::SetValue(kValue, Text(turns_.Stored()));
    }
    void Prepare() override { wanted_ = Text(turns_.Wanted()); }
    void Run() override {
        written_ = false;
        written_ = Mox::WriteRegistry(HKEY_LOCAL_MACHINE, kProductKey, kValue, wanted_);
    }
    void Check(const Step& step) override {
        EXPECT_TRUE(step.hit || written_);
        EXPECT_TRUE(!step.threw || step.plan.kind == Kind::Memory) << step.thrown;
        EXPECT_TRUE(Machine::Value(kNeighbour) == UnicodeString(TEXT("C:\\kept")));
        turns_.Found(Sysutils::StrToIntDef(Machine::Value(kValue), -1), written_);
        wanted_ = UnicodeString();
    }

  private:
    static UnicodeString Text(int number) { return UnicodeString(number); }

    Machine machine_;
    Turns turns_;
    UnicodeString wanted_;
    bool written_ = false;
};

class SpoolerWrite : public Scenario {
  public:
    static constexpr const char* kName = "spooler write";
    SpoolerWrite() {
        block_.dmCopies = 1;
        EXPECT_TRUE(SetGlobalDevMode(kPrinter, &block_, nullptr).IsSuccess());
    }
    void Prepare() override { block_.dmCopies = static_cast<short>(turns_.Wanted()); }
    void Run() override {
        code_ = -1;
        const TW32StructData<DEVMODEW> stored = SetGlobalDevMode(kPrinter, &block_, nullptr);
        code_ = stored.IsSuccess() ? kSuccess : static_cast<int>(stored.GetErrorCode());
        if (!stored.IsSuccess() && code_ == kSuccess) code_ = -2;
    }
    void Check(const Step& step) override {
        EXPECT_TRUE(step.hit || code_ == kSuccess);
        EXPECT_TRUE(!step.threw || step.plan.kind == Kind::Memory) << step.thrown;
        EXPECT_NE(code_, -2) << "a failure without a code";
        turns_.Found(Machine::Settings().dmCopies, code_ == kSuccess);
    }

  private:
    Machine machine_;
    Turns turns_;
    QV_DEVMODE block_;
    int code_ = 0;
};

class SetCommand : public Scenario {
  public:
    static constexpr const char* kName = "set command";
    SetCommand() { Send(turns_.Stored()); }
    void Run() override { Send(turns_.Wanted()); }
    void Check(const Step& step) override {
        EXPECT_FALSE(step.threw) << "an exception leaves a C call: " << step.thrown;
        EXPECT_TRUE(step.hit || status_ == 0) << status_;
        buffer_.ExpectWhole();
        turns_.Found(Machine::Settings().exDialog.Mode, status_ >= 0);
    }

  private:
    void Send(int mode) {
        constexpr const WCHAR kLine[] = TEXT("setdevmode\tprintername\tQV Fax\tmode\t");
        WCHAR line[80];
        WCHAR* end = std::copy(std::begin(kLine), std::end(kLine) - 1, line);
        if (mode >= 10) *end++ = static_cast<WCHAR>(u'0' + mode / 10);
        *end++ = static_cast<WCHAR>(u'0' + mode % 10);
        *end = 0;
        buffer_ = Buffer();
        status_ = DoCommandW(line, buffer_.text, Buffer::kUnits);
    }

    Machine machine_;
    Turns turns_;
    Buffer buffer_;
    int status_ = 0;
};

class GetCommandNarrow : public Scenario {
  public:
    static constexpr const char* kName = "get command, narrow";
    void Run() override {
        std::fill(std::begin(buffer_), std::end(buffer_), '#');
        status_ = DoCommandA("getdevmode\tprintername\tQV Fax", buffer_, kBytes);
    }
    void Check(const Step& step) override {
        EXPECT_FALSE(step.threw) << "an exception leaves a C call: " << step.thrown;
        EXPECT_EQ(buffer_[kBytes + 1], '#') << "written past its end";
        EXPECT_LE(std::strlen(buffer_), std::size_t{kBytes});
        EXPECT_TRUE(step.hit || status_ > 100) << status_;
        EXPECT_TRUE(status_ != 0) << "neither a failure nor a result";
        const std::string text = buffer_;
        EXPECT_TRUE(status_ < 0 || text.starts_with("Mode\t0\t") || text == "Invalid Command")
            << text;
    }

  private:
    static constexpr int kBytes = 300;
    Machine machine_;
    char buffer_[kBytes + 2] = {};
    int status_ = 0;
};

class DefaultSettings : public Scenario {
  public:
    static constexpr const char* kName = "default settings";
    DefaultSettings() { Set(turns_.Stored()); }
    void Run() override { Set(turns_.Wanted()); }
    void Check(const Step& step) override {
        EXPECT_FALSE(step.threw) << "an exception leaves a C call: " << step.thrown;
        EXPECT_TRUE(step.hit || done_ == 1);
        turns_.Found(Machine::Settings().exDialog.Mode, done_ == 1);
    }

  private:
    void Set(int mode) {
        done_ = 0;
        done_ = SetQVDefaultSetting(kPrinter, static_cast<BYTE>(mode), 1, 1, 0, TEXT("C:\\out"),
                                    TEXT("fax.tif"), TEXT("a.exe"), TEXT("-x"), TEXT(""), TEXT(""),
                                    TEXT(""));
    }

    Machine machine_;
    Turns turns_;
    int done_ = 0;
};

}  // namespace

using Scenarios =
    testing::Types<RegistryWrite, SpoolerWrite, SetCommand, GetCommandNarrow, DefaultSettings>;
INSTANTIATE_TYPED_TEST_SUITE_P(Settings, Faults, Scenarios);

}  // namespace faults
