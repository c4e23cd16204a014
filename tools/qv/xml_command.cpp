// qv xml: the XML request call on files or on the standard streams.
#include <memory>

#include "commands.h"
#include "files.h"
#include "mox_classes/sysutils.h"
#include "qv_rtl_main/xml_request.h"
#include "xml/xml_doc.h"

namespace qv {

namespace {

// A file in the temporary folder, gone at the end of the call.
class TemporaryFile {
  public:
    explicit TemporaryFile(const WCHAR* extension)
        : name_(Sysutils::GetTempPathW() +
                UnicodeString().sprintf(TEXT("qv_%lu"), GetCurrentProcessId()) + extension) {}
    ~TemporaryFile() { DeleteFileW(name_.t_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    const UnicodeString& Name() const { return name_; }

  private:
    UnicodeString name_;
};

// Throws the texts of the response's error elements, if it has any.
void FailOnErrors(const UnicodeString& response_file) {
    TXmlDoc response;
    response.LoadFromFile(response_file);
    const TXmlNode* messages = response.FRoot->FindChild(TEXT("message"), System::kCodePageUtf8);
    std::string text;
    for (int i = 0; messages != nullptr && i < messages->ChildCount(); ++i) {
        const TXmlNode& entry = *messages->GetChild(i);
        if (entry.FName != TEXT("error")) continue;
        const UnicodeString system_text =
            entry.AttrGetString(TEXT("W32Msg"), System::kCodePageUtf8).Trim();
        text += (text.empty() ? "" : "\nqv: ") + OneLine(entry.FValue);
        if (system_text.Length() > 0) text += " " + OneLine(system_text);
    }
    if (!text.empty()) throw Failure(text);
}

void RunXml(const std::string& request, const std::string& response) {
    const TemporaryFile input(TEXT("_request.xml"));
    const TemporaryFile output(TEXT("_response.xml"));
    const bool from_stream = request == kStandardStream;
    const bool to_stream = response == kStandardStream;
    if (from_stream) WriteAll(ToUtf8(input.Name()), ReadAll(request));
    const UnicodeString request_file = from_stream ? input.Name() : FromUtf8(request);
    const UnicodeString response_file = to_stream ? output.Name() : FromUtf8(response);
    DoXMLW(request_file.t_str(), response_file.t_str());
    if (to_stream) {
        const std::string bytes = ReadAll(ToUtf8(response_file));
        Print(bytes);
        if (bytes.empty() || bytes.back() != '\n') Print("\n");
    }
    FailOnErrors(response_file);
}

}  // namespace

void AddXmlCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("xml", "Answer an XML request");
    auto request = std::make_shared<std::string>();
    auto response = std::make_shared<std::string>(kStandardStream);
    command->add_option("REQUEST", *request, "Request file; - is standard input")->required();
    command->add_option("RESPONSE", *response, "Response file; - is standard output, the default");
    command->callback([request, response] { RunXml(*request, *response); });
}

}  // namespace qv
