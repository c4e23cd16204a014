#include "xml/xml_doc.h"

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "mox_classes/containers/streams.h"
#include "xml/xml_file.h"

TXmlDoc::TXmlDoc() {
    _Init();
}

TXmlDoc::TXmlDoc(const UnicodeString& text) : TXmlDoc() {
    LoadFromString(text, UnicodeString());
}

TXmlDoc::TXmlDoc(const UnicodeString& text, const UnicodeString& root_name) : TXmlDoc() {
    LoadFromString(text, root_name);
}

void TXmlDoc::_Init() {
    auto prolog = std::make_unique<TXmlNode>();
    FRoot = new TXmlNode;
    FProlog = prolog.release();
}

TXmlDoc::~TXmlDoc() {
    delete FProlog;
    delete FRoot;
}

void TXmlDoc::Clear() {
    FProlog->Clear();
    FRoot->Clear();
    // The element that was being filled is gone.
    FCurrent = FRootSeen ? FRoot : nullptr;
}

bool TXmlDoc::OpenFile(UnicodeString file_name) {
    FFile.Reset(CreateFileW(file_name.t_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return static_cast<bool>(FFile);
}

int TXmlDoc::ReadFile() {
    if (!FFile) return -1;
    if (!IsDocEmpty()) return 0;
    DWORD high = 0;
    const DWORD size = GetFileSize(FFile.Get(), &high);
    if (high != 0 || size > static_cast<DWORD>(std::numeric_limits<int>::max())) return -1;
    // The file may have changed its size meanwhile: what counts is what the read brings.
    std::vector<unsigned char> bytes(size);
    DWORD done = 0;
    if (!::ReadFile(FFile.Get(), bytes.data(), size, &done, nullptr)) return -1;
    return Parse(bytes.data(), static_cast<int>(done));
}

void TXmlDoc::LoadFromStream(Classes::TStream* stream) {
    const std::vector<unsigned char> bytes = ReadWhole(*stream);
    Parse(bytes.data(), static_cast<int>(bytes.size()));
}

void TXmlDoc::LoadFromFile(UnicodeString file_name) {
    Classes::TFileStream stream(file_name, 0);
    LoadFromStream(&stream);
}

bool TXmlDoc::LoadFromString(const UnicodeString& text, const UnicodeString& root_name) {
    std::basic_string<WCHAR> wrapped;
    const auto append = [&](const UnicodeString& piece) {
        wrapped.append(piece.t_str(), static_cast<std::size_t>(piece.Length()));
    };
    if (root_name.Length() > 0) {
        append(TEXT("<") + root_name + TEXT(">"));
        append(text);
        append(TEXT("</") + root_name + TEXT(">"));
    } else {
        append(text);
    }
    CodePage = System::kCodePageUtf8;
    if (wrapped.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        throw UnicodeString("Out of length");
    }
    const int units = static_cast<int>(wrapped.size());
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, wrapped.data(), units, nullptr, 0, nullptr, nullptr);
    if (size <= 0 && units > 0) throw UnicodeString("Out of length");
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wrapped.data(), units, bytes.data(), size, nullptr, nullptr);
    return Parse(bytes.data(), size) > 0;
}

void TXmlDoc::SaveToFile(UnicodeString file_name) {
    const UnicodeString why_not = WhyNotSaved();
    if (!why_not.IsEmpty()) throw UnicodeString(why_not);
    TXmlFile stream(file_name);
    SaveTo(&stream, nullptr);
}
