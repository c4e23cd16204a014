// XML: what could be parsed is saved and parsed again, and from the second save on nothing changes.
#include "xml/xml_doc.h"

#include "mox_classes/containers/memory_stream.h"
#include "support/input.h"

static std::string Saved(TXmlDoc& document) {
    if (document.CodePage != System::kCodePageUtf16) document.CodePage = System::kCodePageUtf8;
    Classes::TMemoryStream stream;
    document.SaveToStream(&stream);
    return std::string(static_cast<const char*>(stream.GetMemory()),
                       static_cast<std::size_t>(stream.GetSize()));
}

static std::string SavedAgain(const std::string& text, System::TCodePage code_page) {
    TXmlDoc document;
    document.CodePage = code_page;
    const int result = document.Parse(text.data(), static_cast<int>(text.size()));
    fuzz::Require(result == static_cast<int>(text.size()), "a saved document is read to its end");
    return Saved(document);
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    TXmlDoc document;
    try {
        if (document.Parse(data, static_cast<int>(size)) <= 0) return 0;
    } catch (const UnicodeString&) {
        return 0;
    }
    if (!fuzz::HasWholeCharacters({data, size}, document.CodePage)) return 0;
    const std::string first = Saved(document);
    if (first.empty()) return 0;  // an instruction in the declaration's place
    const std::string second = SavedAgain(first, document.CodePage);
    fuzz::Require(SavedAgain(second, document.CodePage) == second, "the second save is final");
    return 0;
}
