// A tool in C++: lists all printers, sets the number of copies of one, and shows what it was
// before.
//
//     settings_tool PRINTER COPIES
#include <qv_rtl.h>

#include <cstdio>

namespace {

constexpr TCodePage kUtf8 = System::kCodePageUtf8;

// In the system's code page, as printf wants it.
void Print(const UnicodeString& text) {
    char narrow[512];
    const int size = WideCharToMultiByte(CP_ACP, 0, text.t_str(), text.Length(), narrow,
                                         sizeof(narrow), nullptr, nullptr);
    std::printf("%.*s\n", size, narrow);
}

void ListPrinters() {
    TXmlDoc request, response;
    request.FRoot->FName = TEXT("query");
    request.FRoot->AddChild(TEXT("printer"));
    DoXML(&request, &response);
    for (int i = 0; i < response.FRoot->ChildCount(); ++i) {
        const TXmlNode& child = *response.FRoot->GetChild(i);
        if (child.FName == TEXT("printer")) Print(child.ChildGetText(TEXT("name"), kUtf8));
    }
}

bool SetCopies(const UnicodeString& name, const UnicodeString& copies) {
    TXmlDoc request, response;
    request.FRoot->FName = TEXT("update");
    TXmlNode* printer = request.FRoot->AddChild(TEXT("printer"));
    printer->SetChild(TEXT("name"), name, kUtf8);
    printer->AddChild(TEXT("devmode"))->SetChild(TEXT("dmCopies"), copies, kUtf8);
    DoXML(&request, &response);
    if (const TXmlNode* error = response.FRoot->Find(TEXT("message\\error"), kUtf8)) {
        Print(error->FValue + TEXT(" ") + error->AttrGetString(TEXT("W32Msg"), kUtf8));
        return false;
    }
    const TXmlNode* before = response.FRoot->Find(TEXT("printer\\devmode\\dmCopies"), kUtf8);
    Print(before != nullptr ? TEXT("dmCopies was ") + before->FValue
                            : UnicodeString(TEXT("dmCopies cannot be that")));
    return before != nullptr;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: settings_tool PRINTER COPIES\n");
        return 2;
    }
    ListPrinters();
    return SetCopies(argv[1], argv[2]) ? 0 : 1;
}
