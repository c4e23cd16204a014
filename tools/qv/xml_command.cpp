// qv xml: makes the library's XML request call on files or the standard streams.
#include <limits>
#include <memory>
#include <string_view>

#include "base/commands.h"
#include "base/files.h"
#include "base/host.h"
#include "mox_classes/containers/memory_stream.h"
#include "qv_rtl_main/xml_check.h"
#include "qv_rtl_main/xml_request.h"
#include "settings/recorded_call.h"
#include "xml/xml_doc.h"

namespace qv {

namespace {

using Classes::TFileStream;
using Classes::TMemoryStream;
using System::kCodePageUtf8;

struct XmlOptions {
    std::string request, response = kStandardStream;
    bool strict = false;
    RecordOptions record;
};

// The file for the response; null for standard output. It is opened before the request runs: a
// request whose response cannot be stored must change nothing.
std::unique_ptr<TFileStream> MakeResponse(const std::string& name) {
    if (name == kStandardStream) return nullptr;
    CheckFileName(name);
    try {
        return std::make_unique<TFileStream>(FromUtf8(name), TFileStream::kCreate);
    } catch (const UnicodeString& reason) {
        CannotOpen(name, reason);
    }
}

void WriteResponse(TFileStream* file, const TMemoryStream& response, int size) {
    const auto* bytes = static_cast<const char*>(response.GetMemory());
    if (file != nullptr) {
        file->WriteBuffer(bytes, size);
        return;
    }
    std::string text(bytes, static_cast<std::size_t>(size));
    if (text.empty() || text.back() != '\n') text += '\n';
    Print(text);
}

// Whether a response may have messages. One in UTF-16 may.
bool MayHaveMessages(std::string_view response) {
    return !response.starts_with("<?xml") || response.find("<message") != response.npos;
}

// Throws the texts of the response's error elements, if there are any. An error with a position
// means that the request is damaged.
void FailOnErrors(const std::string& request, const TMemoryStream& bytes, int size) {
    const auto* const text_begin = static_cast<const char*>(bytes.GetMemory());
    if (!MayHaveMessages({text_begin, static_cast<std::size_t>(size)})) return;
    TXmlDoc response;
    response.Parse(bytes.GetMemory(), size);
    const TXmlNode* messages = response.FRoot->FindChild(TEXT("message"), kCodePageUtf8);
    const std::string name = request == kStandardStream ? "standard input" : request;
    std::string text;
    ExitCode code = ExitCode::kFailed;
    for (int i = 0; messages != nullptr && i < messages->ChildCount(); ++i) {
        const TXmlNode& entry = *messages->GetChild(i);
        if (entry.FName != TEXT("error")) continue;
        const bool has_place = entry.FindAttribute(TEXT("line"), kCodePageUtf8) != nullptr;
        if (entry.FindAttribute(TEXT("position"), kCodePageUtf8) != nullptr)
            code = ExitCode::kDamaged;
        const UnicodeString system_text = entry.AttrGetString(TEXT("W32Msg"), kCodePageUtf8).Trim();
        text += text.empty() ? "" : "\nqv: ";
        text += has_place ? OneLine(FromUtf8(name)) + ": " + Lines(entry.FValue)
                          : OneLine(entry.FValue);
        if (system_text.Length() > 0) text += " " + OneLine(system_text);
    }
    if (!text.empty()) throw Failure(text, code);
}

bool IsNamed(const TXmlNode& node, const WCHAR* name) {
    return node.FName.CompareIC(name) == 0;
}

void AddTargets(const TXmlNode& change, CallTargets& targets) {
    if (IsNamed(change, TEXT("global"))) {
        for (int i = 0; i < change.ChildCount(); ++i)
            targets.globals.push_back(change.GetChild(i)->FName);
    } else if (IsNamed(change, TEXT("printer"))) {
        const TXmlNode* const name = change.FindChild(TEXT("name"), kCodePageUtf8);
        if (name != nullptr) targets.printers.push_back(name->FValue);
    }
}

// The settings that the request may change. A request that cannot be parsed changes nothing.
CallTargets TargetsOf(const std::string& bytes) {
    CallTargets targets;
    TXmlDoc request;
    try {
        request.Parse(bytes.data(), static_cast<int>(bytes.size()));
    } catch (const UnicodeString&) {
        return targets;
    }
    if (request.ParseResult() <= 0 || !IsNamed(*request.FRoot, TEXT("update"))) return targets;
    for (int i = 0; i < request.FRoot->ChildCount(); ++i)
        AddTargets(*request.FRoot->GetChild(i), targets);
    return targets;
}

void Answer(TMemoryStream& request, TMemoryStream& response, bool strict) {
    if (strict && !CheckXmlRequest(&request, &response)) return;
    request.SetPosition(0);
    DoXML(&request, &response);
}

void RunXml(const XmlOptions& options) {
    const std::string bytes = ReadAll(options.request);
    if (bytes.size() > std::numeric_limits<int>::max())
        throw Failure("the request is too long", ExitCode::kCannotOpen);
    // Stays open until the end, so that the response cannot overwrite the request. A pipe has been
    // read to its end.
    std::unique_ptr<TFileStream> held;
    if (FindFile(FromUtf8(options.request)).kind == FileKind::kFile)
        held = std::make_unique<TFileStream>(FromUtf8(options.request), TFileStream::kRead);
    const std::unique_ptr<TFileStream> file = MakeResponse(options.response);
    TMemoryStream request;
    request.WriteBuffer(bytes.data(), static_cast<int>(bytes.size()));
    request.SetPosition(0);
    TMemoryStream response;
    RecordCall(TargetsOf(bytes), options.record,
               [&] { Answer(request, response, options.strict); });
    const int size = static_cast<int>(response.GetSize());
    WriteResponse(file.get(), response, size);
    FailOnErrors(options.request, response, size);
}

}  // namespace

void AddXmlCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("xml", "Answer an XML request");
    command->footer(
        "Exit codes: 1 when the response holds errors, 3 when the request is not well-formed XML, "
        "4 when a file\ncannot be opened.");
    auto options = std::make_shared<XmlOptions>();
    command->add_option("REQUEST", options->request, "Request file; - is standard input")
        ->required();
    command->add_option("RESPONSE", options->response,
                        "Response file; - is standard output, the default");
    command->add_flag("--strict", options->strict,
                      "Refuse a request with names or values that would be skipped; name each with "
                      "its line");
    AddRecordOptions(*command, options->record);
    command->callback([options] { RunXml(*options); });
}

}  // namespace qv
