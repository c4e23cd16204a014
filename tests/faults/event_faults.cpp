// An event that sends a text to a window of another process, posts one, and starts a program.
#include <shellapi.h>
#include <winspool.h>

#include "driver_global/events.h"
#include "faults/fault_loop.h"
#include "faults/machine.h"
#include "support/second_process.h"

namespace faults {

namespace {

class FireEvent : public Scenario {
  public:
    FireEvent() : Scenario(Throws::AnyFault) {
        job_.JobId = 17;
        job_.pDocument = document_;
        info_.Job = &job_;
        info_.FileNameSafe = true;
    }
    void Run() override {
        fired_ = false;
        fired_ = DoXmlEvent(TEXT("jobdone"), description_, &info_);
    }
    void Check(const Step& step) override {
        EXPECT_TRUE(info_.FileNameSafe) << "the caller's record stays changed";
        EXPECT_TRUE(step.hit || fired_);
    }

  private:
    Machine machine_;
    test::WindowProgram peer_{"QvFaultPeer", "listen"};
    JOB_INFO_2W job_ = {};
    WCHAR document_[16] = TEXT("Annual report");
    TFillTagsInfo info_;
    const UnicodeString description_ =
        TEXT("<e win=\"QvFaultPeer\" msg=\"1025\" timeout=\"500\" param=\"{jobid} {docname}\"/>")
            TEXT("<e win=\"QvFaultPeer\" msg=\"1024\" timeout=\"0\" param=\"{docname}\"/>")
                TEXT("<e file=\"/bin/true\" param=\"{docname}\"/>");
    bool fired_ = false;
};

const Tests kFireEvent("event", New<FireEvent>);

}  // namespace

}  // namespace faults
