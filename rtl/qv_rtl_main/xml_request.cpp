#include "qv_rtl_main/xml_request.h"

#include <exception>
#include <memory>
#include <vector>

#include "mox_classes/containers/streams.h"
#include "mox_classes/text/log_here.h"
#include "mox_classes/text/sysutils_text.h"
#include "qv_rtl_main/request_vocabulary.h"
#include "qv_rtl_main/xml_request_handlers.h"
#include "qv_rtl_main/xml_request_load.h"
#include "xml/xml_doc.h"
#include "xml/xml_file.h"

namespace {

void SetForm(const TXmlNode& request, TXmlDoc& response, TXmlMessages& messages) {
    response.LineBreak = request.AttrGetString(TEXT("linebreak"), kUtf8);
    response.Indentation = request.AttrGetString(TEXT("indentation"), kUtf8);
    const UnicodeString encoding = request.AttrGetString(TEXT("encoding"), kUtf8);
    if (XmlNamesEqual(encoding, TEXT("UTF-16"))) {
        response.CodePage = System::kCodePageUtf16;
    } else if (encoding.Length() > 0 && !XmlNamesEqual(encoding, TEXT("UTF-8"))) {
        messages.Error(TEXT("Unsupported codepage for result: ") + encoding);
    }
}

struct TOperation {
    const WCHAR* name;
    void (*answer)(const TXmlNode& request, TXmlNode& response, TXmlMessages& messages);
};
constexpr TOperation kOperations[] = {
    {request::NameOf(TEXT("query")), AnswerQuery},
    {request::NameOf(TEXT("update")), AnswerUpdate},
};
static_assert(request::AreAllBelow({}, kOperations));

void Answer(const TXmlNode& request, TXmlNode& response, TXmlMessages& messages) {
    try {
        for (const TOperation& operation : kOperations) {
            if (XmlNamesEqual(request.FName, operation.name))
                operation.answer(request, response, messages);
        }
    } catch (const UnicodeString& text) {
        messages.Error(TEXT("The request was not answered to its end: ") + text);
    } catch (const std::exception& failure) {
        messages.Error(TEXT("The request was not answered to its end: ") +
                       UnicodeString(failure.what()));
    }
}

// Answers the stream, or says what kept it from being opened (`stream` is null then).
void AnswerStream(Classes::TStream* stream, TRequestFault fault, const UnicodeString& file,
                  Classes::TStream& response_stream) {
    TXmlDoc request;
    TXmlDoc response;
    std::vector<unsigned char> bytes;
    if (stream != nullptr) fault = LoadRequest(request, *stream, bytes);
    if (fault.text.IsEmpty()) {
        DoXML(&request, &response);
    } else {
        RejectRequest(request, response, file, fault);
    }
    response.SaveToStream(&response_stream);
}

// Null when the file cannot be opened; `fault` then says why.
std::unique_ptr<Classes::TFileStream> OpenRequest(const UnicodeString& file, UnicodeString& fault) {
    try {
        return std::make_unique<Classes::TFileStream>(file, Classes::TFileStream::kRead);
    } catch (const UnicodeString& text) {
        fault = TEXT("Cannot open the request file: ") + Sysutils::Trim(text);
        return nullptr;
    }
}

void AnswerFile(const UnicodeString& request_file, const UnicodeString& response_file) {
    TRequestFault fault;
    const auto request = OpenRequest(request_file, fault.text);
    // A request in the response's place is open now, so that it cannot be overwritten.
    TXmlFile response(response_file);
    AnswerStream(request.get(), fault, request_file, response);
}

void LogFailure(const UnicodeString& file, const UnicodeString& text) {
    Mox::LogHere('X',
                 TEXT("[DoXML] Cannot write the response file \"") + file + TEXT("\": ") + text);
}

template <class Name>
int AnswerFileAndReturn(Name request_file, Name response_file) {
    try {
        const UnicodeString response(response_file);
        try {
            AnswerFile(UnicodeString(request_file), response);
        } catch (const UnicodeString& text) {
            LogFailure(response, text);
        } catch (const std::exception& failure) {
            LogFailure(response, UnicodeString(failure.what()));
        }
    } catch (...) {
        // Not even the log could be written: there is no one left to tell.
    }
    return 1;
}

}  // namespace

int DoXMLW(const WCHAR* requestFile, const WCHAR* responseFile) {
    return AnswerFileAndReturn(requestFile, responseFile);
}

int DoXMLA(const char* requestFile, const char* responseFile) {
    return AnswerFileAndReturn(requestFile, responseFile);
}

int DoXML(Classes::TStream* request, Classes::TStream* response) {
    AnswerStream(request, {}, UnicodeString(), *response);
    return 1;
}

int DoXML(TXmlDoc* request, TXmlDoc* response) {
    BeginResponse(*request, *response);
    TXmlMessages messages;
    SetForm(*request->FRoot, *response, messages);
    Answer(*request->FRoot, *response->FRoot, messages);
    messages.AppendTo(*response->FRoot);
    return 1;
}
