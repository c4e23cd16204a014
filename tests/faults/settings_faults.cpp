// Commands and calls that change one value in the registry or in a printer's settings.
#include <algorithm>
#include <string>

#include "driver_devmode/default_settings.h"
#include "faults/fault_loop.h"
#include "faults/machine.h"
#include "mox_classes/text/sysutils.h"
#include "qv_rtl_main/command_entry.h"

namespace faults {

namespace {

// The caller's buffer of a command.
template <class Char, int kLength>
class Buffer {
  public:
    Char* Fresh() {
        std::fill(std::begin(text_), std::end(text_), Char{'#'});
        return text_;
    }
    const Char* Text() const { return text_; }
    void ExpectWhole() const {
        EXPECT_EQ(text_[kLength + 1], Char{'#'}) << "written past its end";
        EXPECT_NE(std::find(text_, text_ + kLength + 1, Char{}), text_ + kLength + 1)
            << "no terminator";
    }
    static constexpr int kSize = kLength;

  private:
    Char text_[kLength + 2];
};

// The result of a call that stores a value.
enum class Told { Stored, Failed, FailedWithoutCode };

Told WriteValue(int number) {
    const UnicodeString text(number);
    return Mox::WriteRegistry(HKEY_LOCAL_MACHINE, kProductKey, TEXT("Language"), text)
               ? Told::Stored
               : Told::Failed;
}

int Value() {
    return Sysutils::StrToIntDef(Machine::Value(TEXT("Language")), -1);
}

Told WriteCopies(int number) {
    QV_DEVMODE block;
    block.dmCopies = static_cast<short>(number);
    const TW32StructData<DEVMODEW> stored = SetGlobalDevMode(kPrinter, &block, nullptr);
    if (stored.IsSuccess()) return Told::Stored;
    return stored.GetErrorCode() == ERROR_SUCCESS ? Told::FailedWithoutCode : Told::Failed;
}

int Copies() {
    return Machine::Settings().dmCopies;
}

Buffer<WCHAR, 64> command_buffer;

Told CommandMode(int mode) {
    constexpr const WCHAR kLine[] = TEXT("setdevmode\tprintername\tQV Fax\tmode\t");
    WCHAR line[80];
    WCHAR* end = std::copy(std::begin(kLine), std::end(kLine) - 1, line);
    if (mode >= 10) *end++ = static_cast<WCHAR>(u'0' + mode / 10);
    *end++ = static_cast<WCHAR>(u'0' + mode % 10);
    *end = 0;
    const int status = DoCommandW(line, command_buffer.Fresh(), command_buffer.kSize);
    return status >= 0 ? Told::Stored : Told::Failed;
}

int Mode() {
    return Machine::Settings().exDialog.Mode;
}

int ModeAfterCommand() {
    command_buffer.ExpectWhole();
    return Mode();
}

Told SetDefaults(int mode) {
    const int done = SetQVDefaultSetting(kPrinter, static_cast<BYTE>(mode), 1, 1, 0,
                                         TEXT("C:\\out"), TEXT("fax.tif"), TEXT("a.exe"),
                                         TEXT("-x"), TEXT(""), TEXT(""), TEXT(""));
    return done == 1 ? Told::Stored : Told::Failed;
}

struct Row {
    const char* name;
    Throws throws;
    Told (*write)(int number);
    int (*read)();
};
constexpr Row kRows[] = {
    {"registry write", Throws::WithoutMemory, WriteValue, Value},
    {"spooler write", Throws::WithoutMemory, WriteCopies, Copies},
    {"set command", Throws::Never, CommandMode, ModeAfterCommand},
    {"default settings", Throws::Never, SetDefaults, Mode},
};

class Change : public Scenario {
  public:
    explicit Change(const Row& row) : Scenario(row.throws), row_(row) {
        EXPECT_EQ(row_.write(turns_.Stored()), Told::Stored);
    }
    void Run() override {
        told_ = Told::Failed;
        told_ = row_.write(turns_.Wanted());
    }
    void Check(const Step& step) override {
        EXPECT_NE(told_, Told::FailedWithoutCode);
        EXPECT_TRUE(step.hit || told_ == Told::Stored);
        EXPECT_TRUE(Machine::Value(kNeighbour) == UnicodeString(TEXT("kept")));
        turns_.Found(row_.read(), told_ == Told::Stored);
    }

  private:
    const Row& row_;
    Machine machine_;
    Turns turns_;
    Told told_ = Told::Failed;
};

class GetCommandNarrow : public Scenario {
  public:
    GetCommandNarrow() : Scenario(Throws::Never) {}
    void Run() override {
        status_ = DoCommandA("getdevmode\tprintername\tQV Fax", buffer_.Fresh(), buffer_.kSize);
    }
    void Check(const Step& step) override {
        buffer_.ExpectWhole();
        EXPECT_TRUE(step.hit || status_ > 100) << status_;
        EXPECT_TRUE(status_ != 0) << "neither a failure nor a result";
        const std::string text = buffer_.Text();
        EXPECT_TRUE(status_ < 0 || text.starts_with("Mode\t0\t") || text == "Invalid Command")
            << text;
    }

  private:
    Machine machine_;
    Buffer<char, 300> buffer_;
    int status_ = 0;
};

const bool kAdded = [] {
    for (const Row& row : kRows) Tests(row.name, [&row] { return std::make_unique<Change>(row); });
    return true;
}();
const Tests kGetCommandNarrow("get command, narrow", New<GetCommandNarrow>);

}  // namespace

}  // namespace faults
