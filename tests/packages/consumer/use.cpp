// A C++ program that includes and links an installed copy of the library: inline code of the
// headers, exported classes, an exception that comes out of the library, the host's own names.
#include <qv_rtl.h>
#include <qv_rtl_c.h>

#include <cstdio>

namespace {

#if QV_RTL_VERSION < QV_RTL_VERSION_NUMBER(1, 0, 0)
#error the version does not count
#endif

UnicodeString RootText() {
    TXmlDoc document;
    if (!document.LoadFromString(TEXT("<a><b k=\"1\">text</b></a>"), UnicodeString())) return {};
    return document.FRoot->ChildGetText(TEXT("b"), System::kCodePageUtf8);
}

bool ThrowsItsText() {
    TStringList list;
    list.Add(TEXT("only"));
    try {
        list.Delete(7);
    } catch (const UnicodeString& message) {
        return message.Pos(TEXT("Invalid range of index 7")) > 0;
    }
    return false;
}

bool CopiesItsSettings() {
    TQVSettings settings;
    settings.Texts[4] = TEXT("text");
    settings.Data[51] = 7;
    settings.Last = -1;
    TQVSettings copy;
    copy = settings;
    const TQVSettings second(copy);
    return second.Texts[4] == settings.Texts[4] && second.Data[51] == 7 && second.Last == -1;
}

}  // namespace

int main() {
    SetLastError(ERROR_ACCESS_DENIED);
    if (GetLastError() != ERROR_ACCESS_DENIED) return 2;
    if (QVRtlVersion() != QV_RTL_VERSION) return 3;
    if (RootText() != UnicodeString("text")) return 4;
    if (!ThrowsItsText()) return 5;
    if (!QV_DEVMODE().IsValid()) return 6;
    if (!CopiesItsSettings()) return 7;
    std::printf("C++ %s\n", QV_RTL_VERSION_TEXT);
}
