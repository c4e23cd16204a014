// Calls from texts to a text, as the table tests/text_calls.txt has them.
#include <gtest/gtest.h>

#include <cstdarg>
#include <functional>
#include <map>
#include <sstream>
#include <vector>

#include "driver_devmode/qvdm.h"
#include "driver_global/diagnostic_text.h"
#include "driver_global/job_tags.h"
#include "driver_global/program_texts.h"
#include "mox_classes/containers/string_list.h"
#include "mox_classes/format/define_table.h"
#include "mox_classes/format/string_encoding.h"
#include "mox_classes/format/template_string.h"
#include "mox_classes/text/sysutils.h"
#include "mox_log/logger.h"
#include "mox_log/res_strings.h"
#include "support/page_text.h"
#include "support/thrown_text.h"
#include "xml/xml_test.h"

namespace {

using namespace Sysutils;
using Text = UnicodeString;

// The state that the calls share. Some calls change it, so the order of the lines matters.
struct World {
    World() {
        job.JobId = 17;
        job.TotalPages = 4000000000u;
        job.pParameters = spool.data();
        info.Job = &job;
        info.PageNo = 3;
        SetDocument(TEXT("Annual report"));
    }
    void SetDocument(const Text& name) {
        document = name.t_str();
        job.pDocument = document.data();
    }
    // The previous value of a field, "-" when none was recorded, and the value now.
    Text SetField(const Text& name, const Text& value) {
        Classes::TStringList items;
        items.Add(name);
        items.Add(value);
        const Text before = settings.FromStrings(&items, 0, TEXT(" "));
        const Text all = TEXT(" ") + settings.ToString(TEXT(" "), 0) + TEXT(" ");
        const Text now =
            all.SubString(all.Pos(TEXT(" ") + name + TEXT("=")) + name.Length() + 2, all.Length());
        return (before.IsEmpty() ? Text(TEXT("-")) : before) + TEXT(" ") +
               now.SubString(1, now.Pos(TEXT(" ")) - 1);
    }

    std::basic_string<WCHAR> document, spool = TEXT("C:\\t\\1.qvspl");
    JOB_INFO_2W job = {};
    TFillTagsInfo info;
    TQVDM settings;
};

// Knows the fields a (x) and number (by its conversion). `context`, if any, is the text that is
// filled; it is emptied.
bool FillKnown(const Text& name, const Text& spec, Text& out, void* context) {
    if (context != nullptr) *static_cast<Text*>(context) = Text();
    if (name == TEXT("a")) out = TEXT("x");
    if (name == TEXT("number")) return mox_format_field(out, TEXT("%d"), spec.t_str(), 42);
    return name == TEXT("a");
}

Text OnOwn(Text text, Text (*mark_or_fill)(const Text&, TFillField, void*)) {
    text.Unique();
    return mark_or_fill(text, FillKnown, &text);
}

Text ReplaceName(const Text& text, Text value, bool fix, const Text& open, const Text& close) {
    const auto fill = [](const Text& name, Text& out, void* context) {
        out = *static_cast<Text*>(context);
        return name == TEXT("name");
    };
    return ReplaceTags(text, fill, &value, fix, open, close);
}

Text Number(long long number) {
    return Text(number);
}
Text YesOrNo(bool yes) {
    return yes ? TEXT("yes") : TEXT("no");
}

// A number that was read, and whether it was the whole text.
template <class Value, class Reader>
Text Read(Reader read, const Text& text) {
    Value value{};
    const bool whole = read(text, value);
    std::ostringstream shown;
    shown << value << (whole ? "" : " and more");
    return shown.str().c_str();
}

Text Joined(Classes::TStrings& list) {
    Text joined;
    for (int i = 0; i < list.GetCount(); ++i) joined += TEXT("[") + list.Get(i) + TEXT("]");
    return joined;
}

Text Split(const Text& text, bool strict) {
    Classes::TStringList list;
    list.SetStrictDelimiter(strict);
    list.SetDelimitedText(text);
    return Joined(list);
}

constexpr TDefineConst kPapers[] = {
    {0, TEXT("DMPAPER_")}, {1, TEXT("LETTER")}, {9, TEXT("A4")}, {-4, TEXT("HIGH")}};
constexpr TDefineConst kFlags[] = {{1, TEXT("F_")}, {1, TEXT("A")}, {2, TEXT("B")}, {4, TEXT("C")}};
const TDefineTable paper_table(kPapers), flag_table(kFlags);

Text Define(const TDefineTable& table, const Text& text) {
    int value = 12345;
    const bool known = TryStringToDefine(table.Rows(), value, text);
    return Number(value) + (known ? TEXT("") : TEXT(" unknown"));
}

// Bytes as hexadecimal digits, two for each.
std::string BytesOf(const Text& hex) {
    std::string bytes;
    for (int i = 1; i < hex.Length(); i += 2)
        bytes += static_cast<char>(StrToInt(TEXT("0x") + hex.SubString(i, 2)));
    return bytes;
}
Text HexOf(const std::string& bytes) {
    Text hex;
    for (const char byte : bytes) hex += Text::IntToHex(static_cast<unsigned char>(byte), 2);
    return hex;
}

// A record of the byte encoding, read in both of its layouts; the code of a failure.
Text Decoded(const Text& hex) {
    std::string bytes = BytesOf(hex);
    Text text, unpacked;
    ULONG used = 0;
    const bool read = System::BinToStr(bytes.data(), static_cast<ULONG>(bytes.size()), used, text);
    const Text failed = TEXT("failed ") + Number(GetLastError());
    auto* head = reinterpret_cast<unsigned char*>(bytes.data());
    auto* tail = head + bytes.size();
    EXPECT_EQ(System::BufferToString(head, tail, unpacked), read);
    EXPECT_TRUE(!read || (unpacked == text && used == bytes.size() && head == tail));
    EXPECT_TRUE(read || tail - head == static_cast<std::ptrdiff_t>(bytes.size()));
    return read ? text : failed;
}

Text Encoded(const Text& text, System::TCodePage page) {
    std::string bytes(1000, '?');
    ULONG needed = 0;
    EXPECT_TRUE(System::StrToBin(bytes.data(), 1000, needed, page, text));
    return HexOf(bytes.substr(0, needed));
}

Text MarkOf(const std::string& bytes) {
    System::TCodePage page;
    const int length = CheckBOM(&page, bytes.data(), static_cast<int>(bytes.size()));
    return Number(page) + TEXT(" ") + Number(length);
}

Text SetTags(const Text& hex) {
    const std::string tags = BytesOf(hex);
    return Number(SetDefaultStringTags(reinterpret_cast<const BYTE*>(tags.data())));
}

// A text out of bytes of a code page; the code of a failure.
Text FromPage(const Text& hex, UINT page, DWORD flags) {
    const std::string bytes = BytesOf(hex);
    WCHAR wide[100];
    const int units =
        MultiByteToWideChar(page, flags, bytes.data(), static_cast<int>(bytes.size()), wide, 100);
    return units > 0 ? Text(wide, units) : TEXT("failed ") + Number(GetLastError());
}

Text ToPage(const Text& text, UINT page, DWORD flags) {
    char bytes[100];
    const int count =
        WideCharToMultiByte(page, flags, text.t_str(), text.Length(), bytes, 100, nullptr, nullptr);
    return count > 0 ? HexOf({bytes, static_cast<std::size_t>(count)})
                     : TEXT("failed ") + Number(GetLastError());
}

Text Printed(const WCHAR* format, ...) {
    WCHAR buffer[600];
    std::va_list arguments;
    va_start(arguments, format);
    const int count = _vsnwprintf(buffer, 600, format, arguments);
    va_end(arguments);
    return count < 0 ? TEXT("<negative>") : Text(buffer, count);
}

int IntOf(const Text& text) {
    return text.IsEmpty() ? 0 : StrToInt(text);
}
WCHAR UnitOf(const Text& text) {
    return text.IsEmpty() ? WCHAR{0} : text[1];
}

using Arguments = std::vector<Text>;
using Call = std::function<Text(World&, const Arguments&)>;
#define CALL(body)                                  \
    [](World& w, const Arguments& a) -> Text {      \
        static_cast<void>(w), static_cast<void>(a); \
        return body;                                \
    }

const std::map<std::string, Call> kCalls = {
    // Numbers
    {"TryStrToInt", CALL(Read<int>([](const Text& t, int& v) { return TryStrToInt(t, v); }, a[0]))},
    {"TryStrToFloat",
     CALL(Read<double>([](const Text& t, double& v) { return TryStrToFloat(t, v); }, a[0]))},
    {"TryStrToFloat32",
     CALL(Read<float>([](const Text& t, float& v) { return TryStrToFloat(t, v); }, a[0]))},
    {"StrToInt", CALL(Number(StrToInt(a[0])))},
    {"StrToInt64", CALL(Number(StrToInt64(a[0])))},
    {"StrToIntDef", CALL(Number(StrToIntDef(a[0], IntOf(a[1]))))},
    {"StrToFloat", CALL(FloatToStr(StrToFloat(a[0])))},
    {"StrToFloatDef", CALL(FloatToStr(StrToFloatDef(a[0], IntOf(a[1]))))},
    {"IntToHex", CALL(Text::IntToHex(IntOf(a[0]), IntOf(a[1])))},
    // Names and paths
    {"ExtractFileName", CALL(ExtractFileName(a[0]))},
    {"ExtractFilePath", CALL(ExtractFilePath(a[0]))},
    {"ExtractFileExt", CALL(ExtractFileExt(a[0]))},
    {"ChangeFileExt", CALL(ChangeFileExt(a[0], a[1], a[2] == TEXT("strict")))},
    {"FixFileName", CALL(FixFileName(a[0], UnitOf(a[1])))},
    {"FixDirName", CALL(FixDirName(a[0], UnitOf(a[1])))},
    {"GetFullpath", CALL(GetFullpath(a[0], a[1]))},
    {"ConfirmPathString", CALL(ConfirmPathString(a[0]))},
    {"BuildCommandLine", CALL(BuildCommandLine(a[0], a[1]))},
    {"BuildNamespace", CALL(Mox::BuildNamespace(a[0]))},
    // Texts
    {"IsDelimiter", CALL(YesOrNo(IsDelimiter(a[0], a[1], IntOf(a[2]))))},
    {"LastDelimiter", CALL(Number(LastDelimiter(a[0], a[1])))},
    {"ByteType", CALL(Number(ByteType(a[0], IntOf(a[1]))))},
    {"IsAlphaNumericString", CALL(YesOrNo(IsAlphaNumericString(a[0])))},
    {"StringHash", CALL(Text::IntToHex(static_cast<int>(StringHash(a[0])), 0))},
    {"QuotedStr", CALL(QuotedStr(a[0]))},
    {"AnsiExtractQuotedStr", CALL([&] {
         const WCHAR* p = a[0].t_str();
         const Text value = AnsiExtractQuotedStr(p, '\'');
         return value + TEXT(" ") + Number(p - a[0].t_str());
     }())},
    {"Insert", CALL(Text(a[0]).Insert(a[1], IntOf(a[2])))},
    {"Delete", CALL(Text(a[0]).Delete(IntOf(a[1]), IntOf(a[2])))},
    {"SubString", CALL(a[0].SubString(IntOf(a[1]), IntOf(a[2])))},
    {"Pos", CALL(Number(a[0].Pos(a[1])))},
    {"Compare", CALL(Number(a[0].Compare(a[1])))},
    {"CompareIC", CALL(Number(a[0].CompareIC(a[1])))},
    {"Trim", CALL(a[0].Trim() + TEXT("|") + a[0].TrimLeft() + TEXT("|") + a[0].TrimRight())},
    {"TrimAnyString", CALL(Trim(a[0]) + TEXT("|") + TrimLeft(a[0]) + TEXT("|") + TrimRight(a[0]))},
    {"UpperCase", CALL(a[0].UpperCase())},
    {"StringToBool", CALL(YesOrNo(StringToBool(a[0])))},
    // Lists
    {"Split", CALL(Split(a[0], false))},
    {"SplitStrict", CALL(Split(a[0], true))},
    {"Lines", CALL([&] {
         Classes::TStringList list;
         list.SetTextStr(a[0]);
         return Joined(list);
     }())},
    {"NameValues", CALL([&] {
         Classes::TStringList list;
         if (!a[0].IsEmpty()) list.SetTextStr(a[0]);
         const Text text = BuildNameValueString(&list, TEXT(";"), TEXT("="));
         return Joined(list) + text;
     }())},
    // Formats
    {"DetectArgumentType", CALL(Number(DetectArgumentType(a[0].t_str())))},
    {"ExtractFormatStrings", CALL(Mox::ExtractFormatStrings(a[0].t_str()))},
    {"FormatFits", CALL(YesOrNo(System::FormatFits(a[0].t_str(), 1, TEXT("a"), 2.0)))},
    {"FindFormatField", CALL(Number(FindFormatField(a[0].t_str(), a[1])))},
    {"FillFormat", CALL(FillFormat(a[0].t_str(), FillKnown, nullptr))},
    {"TemplateString", CALL(OnOwn(a[0], TemplateString))},
    {"TemplateStringFormat", CALL(OnOwn(a[0], TemplateStringFormat))},
    {"TemplateStringSafeFormat", CALL(TemplateStringSafeFormat(a[0], FillKnown, nullptr))},
    {"TemplateStringFindField", CALL(Number(TemplateStringFindField(a[0], a[1])))},
    {"ReplaceTags", CALL(ReplaceName(a[0], a[1], false, a[2], a[3]))},
    {"ReplaceTagsSafely", CALL(ReplaceName(a[0], a[1], true, a[2], a[3]))},
    {"PaperOf", CALL(Define(paper_table, a[0]))},
    {"FlagsOf", CALL(Define(flag_table, a[0]))},
    {"PaperName", CALL(DefineToString(paper_table.Rows(), IntOf(a[0]), a[1] == TEXT("prefix")))},
    {"FlagNames", CALL(FlagsToString(flag_table.Rows(), IntOf(a[0]), a[1] == TEXT("prefix")))},
    {"DefineToString", CALL(DefineToString(nullptr, IntOf(a[0]), true))},
    // A job, its tags and the parameters of a program
    {"Document", CALL((w.SetDocument(a[0]), Text()))},
    {"FileNameSafe", CALL((w.info.FileNameSafe = a[0] == TEXT("yes"), Text()))},
    {"WithoutJob", CALL((w.info.Job = nullptr, Text()))},
    {"Template", CALL(FillFormat(a[0].t_str(), QVFillField, &w.info))},
    {"Tags", CALL(ReplaceTags(a[0], FillTags, &w.info, false, TEXT("["), TEXT("]")))},
    {"Parameters", CALL(driver_global::FilledParameters(a[0], w.info))},
    // Bytes
    {"Decoded", CALL(Decoded(a[0]))},
    {"Encoded", CALL(Encoded(a[0], static_cast<System::TCodePage>(IntOf(a[1]))))},
    {"SetTags", CALL(SetTags(a[0]))},
    {"CheckBOM", CALL(MarkOf(BytesOf(a[0])))},
    // The host
    {"FromPage", CALL(FromPage(a[0], static_cast<UINT>(IntOf(a[1])), 0))},
    {"FromPageStrictly",
     CALL(FromPage(a[0], static_cast<UINT>(IntOf(a[1])), MB_ERR_INVALID_CHARS))},
    {"ToPage", CALL(ToPage(a[0], static_cast<UINT>(IntOf(a[1])), 0))},
    {"ToPageStrictly", CALL(ToPage(a[0], static_cast<UINT>(IntOf(a[1])), WC_ERR_INVALID_CHARS))},
    {"GetEnvExpanded", CALL(GetEnvExpanded(a[0]))},
    {"PrintInts", CALL(Printed(a[0].t_str(), IntOf(a[1]), IntOf(a[2]), IntOf(a[3])))},
    {"PrintInt64", CALL(Printed(a[0].t_str(), StrToInt64(a[1])))},
    {"PrintText", CALL(Printed(a[0].t_str(), a[1].t_str()))},
    {"PrintNarrow", CALL(Printed(a[0].t_str(), BytesOf(a[1]).c_str()))},
    {"PrintReal", CALL(Printed(a[0].t_str(), static_cast<double>(StrToFloat(a[1]))))},
    // Settings by name, and codes
    {"SetField", CALL(w.SetField(a[0], a[1]))},
    {"DeviceCap", CALL(DrvDeviceCapabilities_DeviceCap(static_cast<WORD>(IntOf(a[0]))))},
    {"DocumentEvent", CALL(DrvDocumentEvent_iEsc(IntOf(a[0])))},
    {"ConvertMode", CALL(DrvConvertDevMode_fMode(static_cast<DWORD>(IntOf(a[0]))))},
};

// "<U+00E9>" is a unit that is not plain ASCII.
Text FromShown(const std::string& shown) {
    Text text;
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const bool code = shown.compare(i, 3, "<U+") == 0;
        text += Text(static_cast<WCHAR>(code ? std::stoul(shown.substr(i + 3, 4), nullptr, 16)
                                             : static_cast<unsigned long>(shown[i])));
        if (code) i += 7;
    }
    return text;
}

std::string Shown(const Text& text) {
    std::ostringstream shown;
    for (int i = 1; i <= text.Length(); ++i) {
        const unsigned unit = text[i];
        if (unit >= 0x20 && unit < 0x7F)
            shown << static_cast<char>(unit);
        else
            shown << "<U+" << test::Utf8(Text::IntToHex(static_cast<int>(unit), 4)) << '>';
    }
    return text.IsEmpty() ? "null" : shown.str();
}

Arguments SplitArguments(const std::string& text) {
    Arguments arguments;
    for (std::size_t from = 0, to = 0; to != std::string::npos; from = to + 1) {
        to = text.find('|', from);
        arguments.push_back(FromShown(text.substr(from, to - from)));
    }
    arguments.resize(5);
    return arguments;
}

TEST(TextCalls, AnswerAsTheTableSays) {
    SetEnvironmentVariableW(TEXT("QV_EVENT"), TEXT("v w"));
    std::istringstream lines(test::PageText("../tests/text_calls.txt"));
    World world;
    int calls = 0;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t open = line.find('('), close = line.rfind(") = ");
        const auto call = kCalls.find(line.substr(0, open));
        if (open == std::string::npos || close == std::string::npos || call == kCalls.end()) {
            EXPECT_TRUE(line.empty() || line[0] == '#') << "no such call: " << line;
            continue;
        }
        const Arguments arguments = SplitArguments(line.substr(open + 1, close - open - 1));
        Text result;
        const Text thrown = test::ThrownText([&] { result = call->second(world, arguments); });
        const bool threw = thrown != TEXT("(nothing thrown)");
        EXPECT_EQ(threw ? "threw " + Shown(thrown) : Shown(result), line.substr(close + 4)) << line;
        ++calls;
    }
    EXPECT_GT(calls, 250);
    SetEnvironmentVariableW(TEXT("QV_EVENT"), nullptr);
}

}  // namespace
