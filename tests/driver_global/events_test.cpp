// Events of a job: the programs they start, the texts they send, and that the names of a job stay
// names.
#include "driver_global/events.h"

#include <gtest/gtest.h>
#include <shellapi.h>

#include <random>
#include <utility>

#include "driver_global/program_texts.h"
#include "support/captured_log.h"
#include "support/fresh_host_root.h"
#include "support/second_process.h"
#include "support/string_print.h"

namespace {

using Text = std::basic_string<WCHAR>;
using Texts = std::vector<Text>;

// The arguments of a program, as the system splits them.
Texts Split(const UnicodeString& parameters) {
    const UnicodeString line = UnicodeString(TEXT("program ")) + parameters;
    int count = 0;
    LPWSTR* const arguments = CommandLineToArgvW(line.t_str(), &count);
    EXPECT_EQ(Text(arguments[0]), TEXT("program"));
    Texts texts(arguments + 1, arguments + count);
    LocalFree(arguments);
    return texts;
}

class Events : public testing::Test {
  protected:
    Events() {
        job.JobId = 17;
        info.Job = &job;
        SetDocument(TEXT("Annual report"));
    }
    void SetDocument(const Text& name) {
        document = name;
        job.pDocument = document.data();
    }
    UnicodeString Parameters(const WCHAR* pattern) {
        return driver_global::FilledParameters(pattern, info);
    }
    bool Fire(const std::string& description) {
        return DoXmlEvent(TEXT("jobdone"), UnicodeString(description.c_str()), &info);
    }

    test::FreshHostRoot root;
    Text document;
    JOB_INFO_2W job = {};
    TFillTagsInfo info;
};

TEST_F(Events, AnyNameStaysOneArgument) {
    const Text units = TEXT("  \"\"\\\\\\,%;\tab=/&");
    std::mt19937 random(20240521);
    for (int i = 0; i < 20000; ++i) {
        Text name;
        for (auto length = random() % 12; length > 0; --length) {
            name += units[random() % units.size()];
        }
        SetDocument(name);
        const Texts expected = {TEXT("-t"), name, TEXT("o:\\") + name + TEXT(".x"), name,
                                TEXT("end")};
        const UnicodeString line =
            Parameters(TEXT("-t {docname} o:\\{docname}.x \"{docname}\" end"));
        ASSERT_EQ(Split(line), expected) << testing::PrintToString(line);
    }
}

TEST_F(Events, AProgramGetsTheNameAsOneArgument) {
    const test::ScratchFolder folder;
    SetDocument(TEXT("The \"big, red\" 50% dog; %PATH% \\"));
    EXPECT_TRUE(Fire("<event file=\"" + test::Program("argument_writer") + "\" param_run=\"" +
                     folder.Name("out") + " {docname} {jobid}\"/><x/>"));
    EXPECT_EQ(test::Lines(folder.File("out"), 2),
              (std::vector<std::string>{"<The \"big, red\" 50% dog; %PATH% \\>", "<17>"}));
}

TEST_F(Events, WindowsOfOtherProcessesGetTextAndAtom) {
    const test::WindowProgram listener("QvEventTest", "listen");
    EXPECT_TRUE(
        Fire("<a win=\"qveventtest\" msg=\"1024\" param_msg=\"{docname}!\" file=\"none\"/>"
             "<b win=\"QvEventTest\" msg=\"1024\" timeout=\"0\" param=\"{docname}!\"/>"
             "<c win=\"QvEventTest\" param=\"{jobid}\"/>"));
    const test::CapturedLog log;
    EXPECT_TRUE(
        Fire("<a win=\"QvEventTest\" timeout=\"0\" param=\"" + std::string(256, 'x') + "\"/><b/>"));
    EXPECT_TRUE(log.Has('X', TEXT("DoXmlEvent: a text was not posted: ")));
    const std::string number = std::to_string(RegisterWindowMessageW(TEXT("JobDone")));
    const std::vector<std::string> lines = listener.Lines(4);
    ASSERT_EQ(lines.size(), 4u);
    // A sent text may overtake a posted one.
    EXPECT_EQ(lines[1], "data 1024 34 \"Annual report\"!");
    const bool posted_last = lines[3].starts_with("atom");
    EXPECT_EQ(lines[posted_last ? 3 : 2], "atom 1024 \"Annual report\"!");
    EXPECT_EQ(lines[posted_last ? 2 : 3], "data " + number + " 6 17");
    EXPECT_EQ(SendString(listener.Window(), 5, TEXT("abc")), 7);
    EXPECT_EQ(listener.Lines(5)[4], "data 5 8 abc");
}

TEST_F(Events, AWindowThatDoesNotAnswerCostsItsTimeOut) {
    const test::WindowProgram listener("QvDeafTest", "deaf");
    const DWORD start = GetTickCount();
    EXPECT_TRUE(Fire("<a win=\"QvDeafTest\" timeout=\"300\" param=\"x\"/>"));
    const DWORD spent = GetTickCount() - start;
    EXPECT_GE(spent, 290u);
    EXPECT_LT(spent, 2000u);
}

TEST_F(Events, WhatCannotBeReadFiresNothing) {
    const test::ScratchFolder folder;
    const std::string action = "<event file=\"" + test::Program("argument_writer") + "\" param=\"" +
                               folder.Name("out") + "\"/>";
    const test::CapturedLog log;
    info.FileNameSafe = true;
    EXPECT_FALSE(Fire(""));
    EXPECT_FALSE(Fire(action + "<event"));
    EXPECT_TRUE(Fire("<event/><event win=\"QvNoSuchWindow\"/>"));
    EXPECT_TRUE(log.Has('i', TEXT("DoXmlEvent: jobdone,<event/>")));
    EXPECT_TRUE(info.FileNameSafe);
    Sleep(100);
    EXPECT_FALSE(std::filesystem::exists(folder.File("out")));
}

TEST_F(Events, BatchFilesDoNotGetNamesThatCouldBeCommands) {
    const test::CapturedLog log;
    SetDocument(TEXT("a&calc"));
    EXPECT_TRUE(Fire("<event file=\"C:\\none\\x.CMD .\" param=\"{docname}\"/>"));
    EXPECT_TRUE(log.Has('*', TEXT("DoXmlEvent: 'C:\\none\\x.CMD .' is not started")));
}

}  // namespace
