// One log file for one test, and a few verbs on it.
#pragma once

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "log_file/log_format.h"
#include "log_file/log_reader.h"
#include "log_file/log_recorder.h"
#include "support/clean_logger.h"
#include "support/string_print.h"
#include "win32/file_fixture.h"

namespace test {

using Texts = std::vector<std::string>;
using LogImage = std::vector<BYTE>;

inline std::string Narrow(const UnicodeString& text) {
    std::string narrow;
    for (int i = 1; i <= text.Length(); ++i) narrow += static_cast<char>(text[i]);
    return narrow;
}

inline UnicodeString Widen(const std::string& text) {
    return UnicodeString(text.c_str());
}

// The records of the checked reader (without a header when that is damaged), and whether it left
// any bytes out.
struct ReadBack {
    Texts texts;
    Texts skips;
    std::string error;
};

inline ReadBack Drain(Mox::TLogReader& reader, bool ok) {
    ReadBack result;
    result.error = Narrow(reader.Error());
    EXPECT_EQ(ok, result.error.empty());
    ok = ok || reader.StartWithoutHeader();
    while (const Mox::TLogMsg* message = ok ? reader.Next() : nullptr) {
        result.texts.push_back(Narrow(message->text));
    }
    for (int i = 0; i < reader.SkipCount(); ++i) {
        result.skips.push_back(Narrow(reader.Skip(i).reason));
    }
    return result;
}

class LogFileTest : public FileTest {
  protected:
    void SetUp() override {
        FileTest::SetUp();
        name_ = Path(TEXT("test.log"));
    }
    void TearDown() override {
        Close();
        FileTest::TearDown();
    }

    const Wide& Name() const { return name_; }
    // Installs a recorder on the file.
    void Record(DWORD limit) {
        recorder_ = std::make_unique<Mox::TLogRecorder>();
        ASSERT_TRUE(recorder_->Open(name_.c_str(), limit));
        Mox::SetLogRecorder(recorder_.get());
    }
    void Close() {
        Mox::ClearLogRecorder(recorder_.get());
        recorder_.reset();
    }
    static void Log(const std::string& text, const UnicodeString& label = UnicodeString(),
                    std::vector<BYTE> block = {}) {
        CleanLogger::Logger().Log('i', TEXT("tests"), 1, Widen(text), label,
                                  block.empty() ? nullptr : block.data(),
                                  static_cast<int>(block.size()));
    }
    LogImage Image() {
        const HANDLE file = OpenShared(name_);
        LogImage image(GetFileSize(file, nullptr));
        DWORD done = 0;
        ReadFile(file, image.data(), static_cast<DWORD>(image.size()), &done, nullptr);
        FileTest::Close(file);
        return image;
    }
    void Replace(const LogImage& image) {
        MakeFile(name_, std::string(image.begin(), image.end()));
    }
    Mox::TLogFileHeader Header() {
        Mox::TLogFileHeader header{};
        const LogImage image = Image();
        EXPECT_GE(image.size(), sizeof(header));
        std::memcpy(&header, image.data(), sizeof(header));
        return header;
    }
    ReadBack Read() {
        Mox::TLogReader reader;
        return Drain(reader, reader.Open(name_.c_str()));
    }

    const CleanLogger logger_;

  private:
    Wide name_;
    std::unique_ptr<Mox::TLogRecorder> recorder_;
};

}  // namespace test
