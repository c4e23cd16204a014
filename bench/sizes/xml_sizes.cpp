// xml_sizes ITEMS TEXT_BYTES: parses, saves and destroys XML of a quarter of these sizes and
// of these sizes - nesting, attributes, children, one text - and prints the processor time of each.
// Fails when the time grows faster than the size, or when a tree is wrong. Meant for a small stack.
#include <qv_rtl.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "growth.h"
#include "mox_classes/containers/memory_stream.h"

using namespace stress;

namespace {

constexpr TCodePage kUtf8 = System::kCodePageUtf8;

// Takes everything and keeps nothing.
class TBottomlessStream : public Classes::TStream {
  public:
    using TStream::Seek;
    int Read(void*, int) override { return 0; }
    int Write(const void*, int count) override {
        taken += count;
        return count;
    }
    int Seek(int, unsigned short) override { return 0; }

    long long taken = 0;
};

// Parses, saves as text and as bytes, parses what was saved, and destroys both.
double RoundTrip(const std::string& text, bool (*right)(const TXmlDoc&, int), int size) {
    const double began = Seconds();
    {
        TXmlDoc doc;
        doc.CodePage = kUtf8;
        Expect(doc.Parse(text.data(), static_cast<int>(text.size())) > 0, "a large document");
        Expect(right(doc, size), "the tree of a large document");
        Classes::TMemoryStream stream;
        doc.SaveToStream(&stream);
        TXmlDoc again;
        again.CodePage = kUtf8;
        again.Parse(stream.GetMemory(), static_cast<int>(stream.GetSize()));
        Expect(again.ParseResult() > 0 && right(again, size), "a large document read back");
        Expect(again.SaveToString() == doc.SaveToString(), "a large document saved again");
    }
    return Seconds() - began;
}

bool IsNested(const TXmlDoc& doc, int size) {
    const TXmlNode* node = doc.FRoot;
    int depth = 0;
    for (; node != nullptr; node = node->GetChild(0)) ++depth;
    return depth == size;
}

bool HasAttributes(const TXmlDoc& doc, int size) {
    TXmlNode* root = doc.FRoot;
    for (int i = 0; i < size; i += 97) {
        const TXmlPair* attribute = root->FindAttribute(TEXT("a") + UnicodeString(i), kUtf8);
        if (attribute == nullptr || attribute != root->GetAttribute(i)) return false;
        if (attribute->FValue != TEXT("1")) return false;
    }
    return root->AttributeCount() == size;
}

bool HasChildren(const TXmlDoc& doc, int size) {
    for (int i = 0; i < size; i += 97) {
        if (doc.FRoot->FindChild(TEXT("c") + UnicodeString(i), kUtf8) != doc.FRoot->GetChild(i)) {
            return false;
        }
    }
    return doc.FRoot->ChildCount() == size;
}

void Trees(int items) {
    Compare("nesting", items, [](int size) {
        std::string text;
        for (int i = 0; i < size; ++i) text += "<a>";
        for (int i = 0; i < size; ++i) text += "</a>";
        return RoundTrip(text, IsNested, size);
    });
    Compare("attributes, each once more", items, [](int size) {
        std::string text = "<r";
        for (const char* value : {"1", "2"}) {
            for (int i = 0; i < size; ++i) {
                text += " a" + std::to_string(i) + "=\"" + value + "\"";
            }
        }
        return RoundTrip(text + "/>", HasAttributes, size);
    });
    Compare("children", items, [](int size) {
        std::string text = "<r>";
        for (int i = 0; i < size; ++i) text += "<c" + std::to_string(i) + "/>";
        return RoundTrip(text + "</r>", HasChildren, size);
    });
}

void Texts(int bytes) {
    for (const char* line :
         {"plain words and nothing else    ", "B\xC3\xBCro &amp; &#70;ax &lt;1&gt; "}) {
        Compare("one text", bytes, [line](int size) {
            std::string text = "<r>.";
            while (text.size() < static_cast<std::size_t>(size)) text += line;
            return RoundTrip(
                text + ".</r>",
                [](const TXmlDoc& doc, int length) {
                    return doc.FRoot->FValue.Length() > length / 3 &&
                           doc.FRoot->FValue[doc.FRoot->FValue.Length()] == TEXT('.');
                },
                size);
        });
    }
}

// All bytes are written, also when they are more than the result can count.
void Limits() {
    TXmlNode root;
    root.FName = TEXT("r");
    const UnicodeString text = UnicodeString::StringOfChar(TEXT('x'), 1 << 20);
    constexpr int kChildren = 2100;
    for (int i = 0; i < kChildren; ++i) root.AddChild(TEXT("c"))->FValue = text;
    TBottomlessStream stream;
    TXmlFormatter format;
    const int written = root.SaveToStream(&stream, format, kUtf8);
    const long long expected = kChildren * (7LL + (1 << 20)) + 7;
    Expect(written == INT_MAX && stream.taken == expected, "more than 2 GiB of bytes");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: xml_sizes ITEMS TEXT_BYTES\n", stderr);
        return 2;
    }
    const int items = std::atoi(argv[1]);
    const int bytes = std::atoi(argv[2]);
    std::printf("%d and %d items, texts of %d and %d bytes, processor time\n", items / 4, items,
                bytes / 4, bytes);
    Trees(items);
    Texts(bytes);
    constexpr int kLarge = 1 << 28;
    if (bytes >= kLarge) Limits();
    return failures == 0 ? 0 : 1;
}
