// XML requests by file: a query of all there is, an update of a value and a setting.
#include "faults/fault_loop.h"
#include "faults/machine.h"
#include "mox_classes/containers/streams.h"
#include "mox_classes/memory/handles.h"
#include "mox_classes/text/sysutils.h"
#include "qv_rtl_main/xml_request.h"
#include "support/saved_response.h"
#include "xml/xml_doc.h"

namespace faults {

namespace {

constexpr const WCHAR* kRequest = TEXT("C:\\request.xml");
constexpr const WCHAR* kResponse = TEXT("C:\\response.xml");
constexpr TCodePage kUtf8 = System::kCodePageUtf8;

void WriteRequest(const std::string& text) {
    Classes::TFileStream file(kRequest, Classes::TFileStream::kCreate);
    file.WriteBuffer(text.data(), static_cast<int>(text.size()));
}

// The bytes of the response file; empty without a file.
std::string ResponseText() {
    std::string text;
    const System::TFileHandle file(CreateFileW(kResponse, GENERIC_READ, FILE_SHARE_READ, nullptr,
                                               OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return text;
    text.resize(GetFileSize(file.Get(), nullptr));
    DWORD done = 0;
    ReadFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &done, nullptr);
    return text;
}

// A request. Its response must be whole, or the log says that it is not.
class Request : public Scenario {
  public:
    Request() : Scenario(Throws::Never) {}
    void Prepare() override {
        DeleteFileW(kResponse);
        errors_before_ = Machine::Errors();
    }
    void Run() override {
        result_ = 0;
        result_ = DoXMLW(kRequest, kResponse);
    }
    void Check(const Step& step) override {
        EXPECT_EQ(result_, 1);
        const std::string text = ResponseText();
        TXmlDoc response;
        const bool whole = Parse(response, text);
        const bool logged = Machine::Errors() > errors_before_;
        // Without memory nothing can be logged either.
        const bool speechless = step.plan.kind == Kind::Memory;
        EXPECT_TRUE(whole || logged || speechless) << "nobody is told: " << text;
        if (whole) {
            test::SaveResponse(text);
            CheckResponse(step, response, text);
        }
        CheckMachine(step, whole && !Has(response, TEXT("message")));
    }

  protected:
    virtual void CheckResponse(const Step& step, TXmlDoc& response, const std::string& text) = 0;
    virtual void CheckMachine(const Step& /*step*/, bool /*told_done*/) {}
    static bool Has(TXmlDoc& response, const WCHAR* path) {
        return response.FRoot->Find(path, kUtf8) != nullptr;
    }

  private:
    static bool Parse(TXmlDoc& document, const std::string& text) {
        try {
            return document.Parse(text.data(), static_cast<int>(text.size())) > 0;
        } catch (const UnicodeString&) {
            return false;
        }
    }

    Machine machine_;
    int errors_before_ = 0;
    int result_ = 0;
};

class XmlQuery : public Request {
  public:
    XmlQuery() {
        Machine::SetValue(TEXT("Language"), TEXT("de"));
        WriteRequest("<query><global/><monitor/><driver/><printer/></query>");
        DoXMLW(kRequest, kResponse);
        clean_ = ResponseText();
    }
    void CheckResponse(const Step& step, TXmlDoc& response, const std::string& text) override {
        EXPECT_TRUE(response.FRoot->FName == UnicodeString(TEXT("response")));
        EXPECT_TRUE(step.hit || text == clean_) << text;
    }

  private:
    std::string clean_;
};

class XmlUpdate : public Request {
  public:
    XmlUpdate() {
        WriteNumber();
        DoXMLW(kRequest, kResponse);
        value_.Found(value_.Wanted(), true);
        copies_.Found(copies_.Wanted(), true);
    }
    void Prepare() override {
        WriteNumber();
        Request::Prepare();
    }
    void CheckResponse(const Step& step, TXmlDoc& response, const std::string& text) override {
        if (step.hit) return;
        EXPECT_TRUE(Has(response, TEXT("printer\\devmode\\dmCopies"))) << text;
        EXPECT_FALSE(Has(response, TEXT("message"))) << text;
    }
    void CheckMachine(const Step&, bool told_done) override {
        const int value = Sysutils::StrToIntDef(Machine::Value(TEXT("Language")), -1);
        const int copies = Machine::Settings().dmCopies;
        // The response leaves out a setting that could not be converted. A value of the registry
        // has no such sign.
        value_.Found(value, told_done);
        copies_.Found(copies, false);
    }

  private:
    void WriteNumber() {
        WriteRequest("<update><global><Language>" + std::to_string(value_.Wanted()) +
                     "</Language></global><printer><name>QV Fax</name><devmode><dmCopies>" +
                     std::to_string(copies_.Wanted()) + "</dmCopies></devmode></printer></update>");
    }
    Turns value_, copies_;
};

const Tests kXmlQuery("XML query", New<XmlQuery>);
const Tests kXmlUpdate("XML update", New<XmlUpdate>);

}  // namespace

}  // namespace faults
