// text_sizes TEXT_UNITS LIST_ITEMS FOLDER: does the library's work on texts and lists of a quarter
// of these sizes, then of these sizes, and prints the processor time of each. Fails when four times
// the size takes more than nine times as long: linear work takes four times, quadratic work
// sixteen. Then asks for sizes beyond the limits of strings, lists and streams.
#include <qv_rtl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>
#include <string>

#include "growth.h"
#include "mox_classes/containers/memory_stream.h"
#include "mox_classes/containers/string_list.h"
#include "mox_classes/format/format_fields.h"
#include "mox_classes/format/string_encoding.h"
#include "mox_classes/format/template_string.h"
#include "mox_classes/text/sysutils.h"

using namespace stress;

namespace {

// Lines of 64 units with words, a quote, a comma, a tag and a letter that is not ASCII.
UnicodeString MakeText(int units) {
    static const UnicodeString line =
        TEXT("the quick \"brown\" fox, {one} and <two> jump over \x00E4 lazy dog; \r\n");
    UnicodeString text;
    text.SetLength(units);
    for (int i = 0; i < units; ++i) text.data()[i] = line.t_str()[i % line.Length()];
    return text;
}

template <class Work>
void CompareText(const char* what, int units, const Work& work) {
    Compare(what, units, [&](int size) {
        const UnicodeString text = MakeText(size);
        const double began = Seconds();
        work(text);
        return Seconds() - began;
    });
}

void CompareList(const char* what, int items, void (*work)(TStringList& list)) {
    Compare(what, items, [&](int size) {
        TStringList list;
        const UnicodeString item = TEXT("item");
        for (int i = 0; i < size; ++i) list.Add(item);
        const double began = Seconds();
        work(list);
        return Seconds() - began;
    });
}

bool FillTag(const UnicodeString&, const UnicodeString&, UnicodeString& out, void*) {
    out = TEXT("1");
    return true;
}

bool ReplaceTag(const UnicodeString&, UnicodeString& value, void*) {
    value = TEXT("2");
    return true;
}

void Texts(int units) {
    CompareText("append, front, middle", units, [](const UnicodeString& text) {
        UnicodeString copy(text);
        copy += TEXT("x");
        copy.Insert(TEXT("y"), 1);
        copy.Delete(copy.Length() / 2, 1);
    });
    CompareText("compare, search, hash", units, [](const UnicodeString& text) {
        UnicodeString copy(text);
        copy.Unique();
        Expect(copy == text && text.Pos(TEXT("no such text")) == 0, "equal texts");
        Sysutils::StringHash(text);
        Sysutils::LastDelimiter(TEXT("~"), text);
    });
    CompareText("Compare by locale", units, [](const UnicodeString& text) {
        UnicodeString copy(text);
        copy[copy.Length()] = 'x';
        text.Compare(copy);
    });
    CompareText("UpperCase, Trim", units, [](const UnicodeString& text) {
        static_cast<void>(text.UpperCase());
        static_cast<void>(Sysutils::LowerCase(text));
        static_cast<void>(text.Trim());
    });
    CompareText("printf", units, [](const UnicodeString& text) {
        UnicodeString out;
        Expect(out.printf(TEXT("%s %d"), text, 7) == text.Length() + 2, "the length of printf");
    });
    CompareText("quote and unquote", units, [](const UnicodeString& text) {
        const UnicodeString quoted = Sysutils::AnsiQuotedStr(text, '"');
        const WCHAR* p = quoted.t_str();
        Expect(Sysutils::AnsiExtractQuotedStr(p, '"') == text, "a quoted text");
    });
    CompareText("lines and back", units, [](const UnicodeString& text) {
        TStringList list;
        list.SetTextStr(text);
        list.GetTextStr();
    });
    CompareText("SetCommaText", units, [](const UnicodeString& text) {
        TStringList list;
        list.SetCommaText(text);
    });
    CompareText("templates and tags", units, [](const UnicodeString& text) {
        FillFormat(text.t_str(), FillTag, nullptr);
        ReplaceTags(text, ReplaceTag, nullptr, false, TEXT("<"), TEXT(">"));
        TFormatFields(text.t_str()).Count();
    });
    CompareText("string to bytes and back", units, [](const UnicodeString& text) {
        ULONG needed = 0;
        ULONG used = 0;
        TCodePage code_page = System::kCodePageAnsi;
        System::StrToBin(nullptr, 0, needed, code_page, text);
        const std::unique_ptr<char[]> bytes(new char[needed]);
        UnicodeString back;
        Expect(System::StrToBin(bytes.get(), needed, needed, code_page, text) &&
                   System::BinToStr(bytes.get(), needed, used, back) && back == text,
               "a text as bytes");
    });
    CompareText("ANSI to string", units, [](const UnicodeString& text) {
        const std::string narrow(static_cast<std::size_t>(text.Length()), 'a');
        Expect(UnicodeString(narrow.data(), text.Length()).Length() == text.Length(), "ANSI text");
    });
    CompareText("file names", units, [](const UnicodeString& text) {
        static_cast<void>(Sysutils::FixFileName(text, '_'));
        Sysutils::ExtractFileName(text);
    });
    CompareText("memory stream, 1,000 bytes a write", units, [](const UnicodeString& text) {
        Classes::TMemoryStream stream;
        const int pieces = text.Length() / 500;
        for (int i = 0; i < pieces; ++i) stream.WriteBuffer(text.t_str() + i * 500, 1000);
        Expect(stream.GetSize() == std::int64_t{pieces} * 1000, "the stream's size");
    });
}

void Lists(int items) {
    Compare("list: Add", items, [](int size) {
        const UnicodeString item = TEXT("item");
        const double began = Seconds();
        TStringList list;
        for (int i = 0; i < size; ++i) list.Add(item);
        return Seconds() - began;
    });
    CompareList("list: GetTextStr, SetTextStr", items, [](TStringList& list) {
        const int count = list.GetCount();
        list.SetTextStr(list.GetTextStr());
        Expect(list.GetCount() == count + 1, "the lines of a text");
    });
    CompareList("list: comma text and back", items, [](TStringList& list) {
        const int count = list.GetCount();
        list.SetCommaText(list.GetCommaText());
        Expect(list.GetCount() == count, "the items of a comma text");
    });
    CompareList("list: copy, IndexOf, names", items, [](TStringList& list) {
        TStringList copy(list);
        Expect(copy.IndexOf(TEXT("none")) == -1 && copy.GetValue(TEXT("none")).IsEmpty(),
               "a name that is not there");
    });
    CompareList("list: BuildNameValueString", items,
                [](TStringList& list) { BuildNameValueString(&list, TEXT(" "), TEXT("=")); });
}

template <class Run>
bool Throws(const WCHAR* message, const Run& run) {
    try {
        run();
    } catch (const UnicodeString& text) {
        return text == message;
    } catch (const std::bad_alloc&) {
        return message == nullptr;
    }
    return false;
}

// A null message stands for an exhausted heap.
void Limits(const std::filesystem::path& folder) {
    UnicodeString text = TEXT("kept");
    Expect(Throws(TEXT("Out of length"), [&] { text.SetLength(1LL << 31); }) &&
               Throws(nullptr, [&] { text.SetLength(INT_MAX); }) && text == TEXT("kept"),
           "a string beyond 2 GiB");
    TStringList list;
    list.Add(TEXT("kept"));
    Expect(Throws(nullptr, [&] { list.SetCapacity(INT_MAX / 16 + 1); }) && list.GetCount() == 1,
           "a list beyond 2 GiB");

    Classes::TMemoryStream stream;
    stream.SetSize(INT_MAX);
    stream.SetPosition(INT_MAX - 1);
    Expect(stream.Write("ab", 2) == 0 && stream.Write("a", 1) == 1 && stream.Write("b", 1) == 0 &&
               stream.GetSize() == INT_MAX,
           "a memory stream of 2 GiB less a byte, and a byte more");
    Expect(Throws(TEXT("Out of range"), [&] { stream.SetSize64(1LL << 31); }) &&
               Throws(TEXT("Stream write failed"), [&] { stream.WriteBuffer("b", 1); }),
           "a memory stream beyond 2 GiB");

    const std::string name = folder / "sparse";
    const std::u16string wide(name.begin(), name.end());
    Classes::TFileStream file(wide.c_str(), Classes::TFileStream::kCreate);
    constexpr std::int64_t kLarge = 5LL << 30;
    file.SetSize64(kLarge);
    file.SetPosition(kLarge);
    Expect(file.Write("end", 3) == 3 && file.GetSize() == kLarge + 3 &&
               file.Classes::TStream::Seek(0, 2) == -1,
           "a file of 5 GiB");
    Classes::TMemoryStream small;
    small.WriteBuffer("kept", 4);
    Expect(
        Throws(TEXT("Out of range"), [&] { small.LoadFromStream(&file); }) && small.GetSize() == 4,
        "a file of 5 GiB in memory");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: text_sizes TEXT_UNITS LIST_ITEMS FOLDER\n", stderr);
        return 2;
    }
    const int units = std::atoi(argv[1]);
    const int items = std::atoi(argv[2]);
    std::printf("texts of %d and %d units, lists of %d and %d items, processor time\n", units / 4,
                units, items / 4, items);
    Lists(items);
    Texts(units);
    Limits(argv[3]);
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("most memory: %ld MiB; failures: %d\n", usage.ru_maxrss / 1024, failures);
    return failures == 0 ? 0 : 1;
}
