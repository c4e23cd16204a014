#include "qv_rtl_main/xml_request.h"

#include <exception>
#include <memory>

#include "mox_classes/streams.h"
#include "mox_classes/sysutils_text.h"
#include "qv_rtl_main/source_log.h"
#include "qv_rtl_main/xml_request_handlers.h"
#include "xml/xml_doc.h"
#include "xml/xml_file.h"

namespace {

constexpr TCodePage kUtf8 = System::kCodePageUtf8;

void BeginResponse(const TXmlDoc& request, TXmlDoc& response) {
    response.FRoot->FName = TEXT("response");
    SetText(response.FRoot, TEXT("to"), request.FRoot->FName);
    response.CodePage = kUtf8;
}

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

void Answer(const TXmlNode& request, TXmlNode& response, TXmlMessages& messages) {
    try {
        if (XmlNamesEqual(request.FName, TEXT("query"))) {
            AnswerQuery(request, response, messages);
        } else if (XmlNamesEqual(request.FName, TEXT("update"))) {
            AnswerUpdate(request, response, messages);
        }
    } catch (const UnicodeString& text) {
        messages.Error(TEXT("The request was not answered to its end: ") + text);
    } catch (const std::exception& failure) {
        messages.Error(TEXT("The request was not answered to its end: ") +
                       UnicodeString(failure.what()));
    }
}

// A response that holds nothing but what is wrong with the request.
void Reject(const TXmlDoc& request, TXmlDoc& response, const UnicodeString& file,
            const UnicodeString& text, int position) {
    BeginResponse(request, response);
    TXmlMessages messages;
    TXmlNode* error = messages.Error(text);
    if (file.Length() > 0) SetText(error, TEXT("file"), file);
    if (position >= 0) SetText(error, TEXT("position"), UnicodeString(position));
    messages.AppendTo(*response.FRoot);
}

// Parses the request; what is wrong with it, null when it is well-formed. `position` is that of the
// fault, -1 when it has none.
UnicodeString Load(TXmlDoc& request, Classes::TStream& stream, int& position) {
    position = -1;
    UnicodeString thrown;
    try {
        request.LoadFromStream(&stream);
    } catch (const UnicodeString& text) {
        thrown = text;
        if (request.ParseResult() == 0) return TEXT("Cannot read the request: ") + thrown;
    }
    const int result = request.ParseResult();
    if (result > 0) return UnicodeString();
    position = result < 0 ? -result : static_cast<int>(stream.GetSize());
    if (result == 0) return TEXT("The request ends before its root element is closed");
    return thrown.IsEmpty() ? TEXT("The request is not well-formed XML")
                            : TEXT("The request is not well-formed XML: ") + thrown;
}

void AnswerStream(Classes::TStream& request_stream, Classes::TStream& response_stream,
                  const UnicodeString& file) {
    TXmlDoc request;
    TXmlDoc response;
    int position = -1;
    const UnicodeString fault = Load(request, request_stream, position);
    if (fault.IsEmpty()) {
        DoXML(&request, &response);
    } else {
        Reject(request, response, file, fault, position);
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
    UnicodeString fault;
    const auto request = OpenRequest(request_file, fault);
    // A request in the response's place is open now, so that it cannot be overwritten.
    TXmlFile response(response_file);
    if (request != nullptr) {
        AnswerStream(*request, response, request_file);
        return;
    }
    TXmlDoc document;
    Reject(TXmlDoc(), document, request_file, fault, -1);
    document.SaveToStream(&response);
}

void LogFailure(const UnicodeString& file, const UnicodeString& text) {
    qv_rtl_main::Log(
        'X', TEXT("[DoXML] Cannot write the response file \"") + file + TEXT("\": ") + text);
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
    AnswerStream(*request, *response, UnicodeString());
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
