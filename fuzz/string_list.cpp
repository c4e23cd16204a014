// Delimited texts, quoted texts and lines of a string list, with any delimiter and quote.
#include "mox_classes/containers/string_list.h"

#include "mox_classes/text/sysutils_text.h"
#include "support/input.h"

static bool SameItems(TStrings& a, TStrings& b) {
    bool same = a.GetCount() == b.GetCount();
    for (int i = 0; same && i < a.GetCount(); ++i) same = fuzz::Same(a.Get(i), b.Get(i));
    return same;
}

static UnicodeString Quoted(TStrings& items, TStringList quoted) {
    quoted.Clear();
    for (int i = 0; i < items.GetCount(); ++i) {
        quoted.Add(Sysutils::AnsiQuotedStr(items.Get(i), items.GetQuoteChar()));
    }
    return quoted.GetDelimitedText();
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    TStringList list, lines;
    fuzz::Input input(data, size);
    list.SetStrictDelimiter(input.Byte() % 2 != 0);
    const WCHAR quote = input.Byte(), delimiter = input.Byte();
    list.SetQuoteChar(quote), list.SetDelimiter(delimiter);
    const UnicodeString text = fuzz::Text(input.Rest());
    list.SetDelimitedText(text);
    fuzz::Require(list.GetCount() <= text.Length() + 1, "no more items than units");
    TStringList copy = list;
    copy.SetStrictDelimiter(true);
    const bool distinct = quote != 0 && delimiter != 0 && quote != delimiter;
    if (distinct) copy.SetDelimitedText(Quoted(list, list));
    fuzz::Require(SameItems(list, copy), "quoted items come back");
    lines.SetTextStr(text);
    copy.SetTextStr(lines.GetTextStr());
    lines.Add(UnicodeString());  // behind the last line break
    fuzz::Require(text.Pos(TEXT("\r")) != 0 || SameItems(lines, copy), "lines come back");
    return 0;
}
