// A tour of the library for authors of modules: start and end, log, strings, lists, XML, settings.
//
//     module_tour PRINTER
#include <qv_rtl.h>

#include <cstdio>

namespace {

constexpr TCodePage kUtf8 = System::kCodePageUtf8;

// Connects this module to the logger as long as it lives.
class TUnit {
  public:
    explicit TUnit(const UnicodeString& name) : name_(name) {
        QVInitApp(name_, UnicodeString(), UnicodeString());
    }
    ~TUnit() { QVUninitApp(name_); }
    TUnit(const TUnit&) = delete;
    TUnit& operator=(const TUnit&) = delete;

  private:
    UnicodeString name_;
};

// The one place that names the module; the line is that of the call.
void Log(int level, const UnicodeString& text, int line = __builtin_LINE()) {
    static const UnicodeString source = TEXT("module_tour");
    Mox::GetLogger()->Log(level, source, line, text, UnicodeString(), nullptr, 0);
}

void ShowStrings(const UnicodeString& printer) {
    UnicodeString text = printer;           // shares the buffer
    text += TEXT(" on ");                   // has its own now
    text.cat_printf(TEXT("page %d"), 3);    // checked against its arguments when compiled
    const int at = text.Pos(TEXT("page"));  // positions begin at 1, 0 means absent
    Log('i', text.SubString(at, text.Length()) + TEXT(" of ") + printer);
}

void ShowLists() {
    Classes::TStringList list;
    Classes::TStrings& items = list;  // the text forms belong to the base
    items.SetStrictDelimiter(true);   // blanks stay inside items
    items.SetDelimiter('|');
    items.SetDelimitedText(TEXT("from=Anna Lee|to=Bo|\"a|b\""));
    for (int i = 0; i < items.GetCount(); ++i) Log(' ', items.Get(i));
    Log('i', TEXT("to ") + items.GetValue(TEXT("to")));
}

void ShowXml() {
    TXmlDoc document;
    if (!document.LoadFromString(TEXT("<jobs><job id=\"7\"><to>Bo</to></job></jobs>"),
                                 UnicodeString())) {
        Log('X', TEXT("Not well-formed: ") + document.Fault());
        return;
    }
    TXmlNode* to = document.FRoot->Find(TEXT("job\\to"), kUtf8);  // null when a step is missing
    if (to != nullptr) Log('i', TEXT("The job goes to ") + to->FValue);
    document.FRoot->AddChild(TEXT("job"))->SetAttribute(TEXT("id"), TEXT("8"), kUtf8);
    document.CodePage = kUtf8;
    Log('i', document.SaveToString());
}

// The settings of the current user for the printer; false when the system refuses.
bool ShowSettings(const UnicodeString& printer) {
    TW32StructData<DEVMODEW> block = GetGlobalDevMode(printer);
    if (!block.IsSuccess()) {
        Log('X', TEXT("No settings: ") + Mox::GetSysError(block.GetErrorCode(), true));
        return false;
    }
    TQVDM settings;  // the defaults, until a valid block is borrowed
    if (block.Count() > 0) settings.SetDEVMODE(&block[0], block.Size());
    settings.GetDM()->dmCopies = 2;
    settings.FileName = TEXT("C:\\out\\fax.tif");
    if (!settings.Encode()) return false;  // the strings do not fit into the block
    return SetGlobalDevMode(printer, settings.GetDM(), nullptr).IsSuccess();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: module_tour PRINTER\n");
        return 2;
    }
    try {
        const TUnit unit(TEXT("module_tour"));
        const UnicodeString printer(argv[1]);
        ShowStrings(printer);
        ShowLists();
        ShowXml();
        return ShowSettings(printer) ? 0 : 1;
    } catch (const UnicodeString& text) {
        Log('X', TEXT("Failed: ") + text);
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "module_tour: out of memory\n");
    }
    return 1;
}
