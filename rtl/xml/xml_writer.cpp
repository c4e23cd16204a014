#include "xml/xml_writer.h"

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "xml/xml_doc.h"
#include "xml/xml_output_buffer.h"

void TXmlFormatter::Set(const UnicodeString& unit, const UnicodeString& line_break, int level) {
    if (unit != FIndentUnit) {
        FIndentCache = UnicodeString();
        FIndentUnit = unit;
    }
    if (line_break != FLineBreak) FLineBreak = line_break;
    if (level >= -1) FLevel = level;
}

UnicodeString TXmlFormatter::Indent() {
    if (FIndentUnit.IsEmpty() || FLevel == -1) return UnicodeString();
    const long long unit = FIndentUnit.Length();
    const long long length = unit * FLevel;
    if (FIndentCache.Length() == length) return FIndentCache;
    FIndentCache = UnicodeString();
    if (length > 0) {
        FIndentCache.SetLength(length);
        WCHAR* text = FIndentCache.data();
        for (int i = 0; i < FLevel; ++i) text = std::copy_n(FIndentUnit.t_str(), unit, text);
    }
    return FIndentCache;
}

int TXmlFormatter::IncLevel(int delta) {
    const long long level = static_cast<long long>(FLevel) + delta;
    if (level >= -1 && level <= std::numeric_limits<int>::max()) FLevel = static_cast<int>(level);
    return FLevel;
}

namespace {

// An element whose start tag is written and whose end tag is still to come.
struct TOpenElement {
    const TXmlNode* node;
    int next_child;
    bool block;  // the end tag stands on a line of its own
};

bool IsAscii(const UnicodeString& text) {
    const WCHAR* const units = text.t_str();
    return std::all_of(units, units + text.Length(), [](WCHAR unit) { return unit < 0x80; });
}

// Writes one subtree. The layout is the formatter's; its level follows the element that is written.
template <class Unit>
class TXmlTreeWriter {
  public:
    TXmlTreeWriter(TXmlOutputBuffer<Unit>& output, TXmlFormatter& format, const UnicodeString& unit)
        : output_(output), format_(format), unit_(unit), line_break_(format.LineBreak()) {}

    // Whatever the stream throws, the formatter keeps its level.
    void Write(const TXmlNode* root) {
        const int level = format_.GetLevel();
        try {
            WriteTree(root);
        } catch (...) {
            format_.SetLevel(level);
            throw;
        }
    }

  private:
    void WriteTree(const TXmlNode* root) {
        std::vector<TOpenElement> open;
        TOpenElement element{root, 0, false};
        // The last element of `open` is the parent of the next element.
        while (true) {
            if (WriteStart(element)) {
                if (element.node->ChildCount() == 0) {
                    WriteEnd(element);
                } else {
                    open.push_back(element);
                    format_.IncLevel(1);
                }
            }
            while (!open.empty() && open.back().next_child == open.back().node->ChildCount()) {
                format_.IncLevel(-1);
                WriteEnd(open.back());
                open.pop_back();
            }
            if (open.empty()) return;
            TOpenElement& parent = open.back();
            element = {parent.node->GetChild(parent.next_child++), 0, false};
        }
    }

    // Writes the start tag and what stands on its line. True when an end tag must follow.
    bool WriteStart(TOpenElement& element) {
        const TXmlNode& node = *element.node;
        const bool instruction = format_.GetLevel() == -1;
        Indent();
        if (instruction) {
            output_.PutName("<?", node.FName, "");
        } else {
            output_.PutName("<", node.FName, "");
        }
        for (int i = 0; i < node.AttributeCount(); ++i) {
            const TXmlPair* attribute = node.GetAttribute(i);
            output_.PutName(" ", attribute->FName, "=\"");
            output_.PutEscaped(attribute->FValue);
            output_.PutMarkup("\"");
        }
        const bool empty = node.ChildCount() == 0 && node.FValue.IsEmpty();
        if (instruction || empty) {
            if (instruction) {
                output_.PutMarkup("?>");
            } else {
                output_.PutMarkup("/>");
            }
            BreakLine();
            return false;
        }
        output_.PutMarkup(">");
        const int lines = node.FValue.IsEmpty() ? 1 : output_.PutEscaped(node.FValue);
        element.block = lines > 1 || node.ChildCount() > 0;
        if (element.block) BreakLine();
        return true;
    }

    void WriteEnd(const TOpenElement& element) {
        if (element.block) Indent();
        output_.PutName("</", element.node->FName, ">");
        BreakLine();
        if (!element.node->FTail.IsEmpty()) output_.PutEscaped(element.node->FTail);
    }

    // The indentation of a level is the beginning of the indentation of a deeper level, so one
    // string serves all levels.
    void Indent() {
        const int level = format_.GetLevel();
        if (unit_.IsEmpty() || level <= 0) return;
        const long long length = static_cast<long long>(unit_.Length()) * level;
        if (length > indent_.Length()) {
            indent_ = format_.Indent();
            if (plain_layout_) encoded_indent_ = Encoded(indent_);
        }
        if (plain_layout_) {
            output_.PutEncoded(encoded_indent_.data(), static_cast<std::size_t>(length));
        } else {
            output_.Put(indent_, static_cast<int>(length));
        }
    }

    void BreakLine() {
        if (plain_layout_) {
            output_.PutEncoded(encoded_break_.data(), break_length_);
        } else {
            output_.Put(line_break_);
        }
    }

    // The encoded form of an ASCII text. The output may read one step of units behind it.
    static std::basic_string<Unit> Encoded(const UnicodeString& text) {
        const auto length = static_cast<std::size_t>(text.Length());
        std::basic_string<Unit> units(length + TXmlOutputBuffer<Unit>::kStep, Unit{0});
        std::transform(text.t_str(), text.t_str() + text.Length(), units.begin(),
                       [](WCHAR unit) { return static_cast<Unit>(unit); });
        return units;
    }

    TXmlOutputBuffer<Unit>& output_;
    TXmlFormatter& format_;
    UnicodeString unit_;
    UnicodeString line_break_;
    UnicodeString indent_;  // of the deepest level so far
    // A large part of an indented document is layout. When it is ASCII, it is encoded once.
    const bool plain_layout_ = IsAscii(unit_) && IsAscii(line_break_);
    std::basic_string<Unit> encoded_indent_;
    const std::basic_string<Unit> encoded_break_ =
        plain_layout_ ? Encoded(line_break_) : std::basic_string<Unit>();
    const std::size_t break_length_ = static_cast<std::size_t>(line_break_.Length());
};

const WCHAR* EncodingName(TCodePage code_page) {
    switch (code_page) {
        case System::kCodePageAnsi:
        case System::kCodePageUtf8:
            return TEXT("UTF-8");
        case System::kCodePageUtf16:
            return TEXT("UTF-16");
        default:
            return nullptr;
    }
}

}  // namespace

int TXmlNode::SaveTo(Classes::TStream* stream, UnicodeString* out, TXmlFormatter& format,
                     TCodePage code_page) const {
    if (stream == nullptr) {
        TXmlOutputBuffer<WCHAR> output;
        TXmlTreeWriter(output, format, format.FIndentUnit).Write(this);
        return output.FinishInto(*out);
    }
    if (code_page == System::kCodePageUtf16) {
        TXmlOutputBuffer<WCHAR> output(stream);
        TXmlTreeWriter(output, format, format.FIndentUnit).Write(this);
        return output.Finish();
    }
    if (EncodingName(code_page) == nullptr) return 0;
    TXmlOutputBuffer<char> output(stream);
    TXmlTreeWriter(output, format, format.FIndentUnit).Write(this);
    return output.Finish();
}

UnicodeString TXmlNode::SaveToString(TXmlFormatter& format) const {
    UnicodeString text;
    SaveTo(nullptr, &text, format, System::kCodePageUtf8);
    return text;
}

int TXmlNode::SaveToStream(Classes::TStream* stream, TXmlFormatter& format,
                           TCodePage code_page) const {
    return SaveTo(stream, nullptr, format, code_page);
}

UnicodeString TXmlDoc::WhyNotSaved() const {
    const TXmlNode* declaration = FProlog->GetChild(0);
    if (declaration != nullptr && !XmlNamesEqual(declaration->FName, TEXT("xml")))
        return TEXT("The document cannot be written: its first instruction is not \"xml\"");
    if (EncodingName(CodePage) == nullptr)
        return UnicodeString().sprintf(TEXT("The document cannot be written in the code page %u"),
                                       CodePage);
    return UnicodeString();
}

int TXmlDoc::SaveTo(Classes::TStream* stream, UnicodeString* out) {
    if (FProlog->ChildCount() == 0) FProlog->AddChild(TEXT("xml"));
    TXmlNode* declaration = FProlog->GetChild(0);
    if (!XmlNamesEqual(declaration->FName, TEXT("xml"))) return 0;
    declaration->SetAttribute(TEXT("version"), TEXT("1.0"), System::kCodePageUtf8);
    const WCHAR* encoding = EncodingName(CodePage);
    if (encoding == nullptr) return 0;
    declaration->SetAttribute(TEXT("encoding"), encoding, System::kCodePageUtf8);

    TXmlFormatter format(Indentation, LineBreak, -1);
    long long written = 0;
    for (int i = 0; i < FProlog->ChildCount(); ++i) {
        written += FProlog->GetChild(i)->SaveTo(stream, out, format, CodePage);
    }
    format.IncLevel(1);
    written += FRoot->SaveTo(stream, out, format, CodePage);
    if (stream == nullptr) return out->Length();
    return static_cast<int>(std::min<long long>(written, std::numeric_limits<int>::max()));
}

UnicodeString TXmlDoc::SaveToString() {
    UnicodeString text;
    SaveTo(nullptr, &text);
    return text;
}

void TXmlDoc::SaveToStream(Classes::TStream* stream) {
    SaveTo(stream, nullptr);
}

int UnicodeStringToStream(Classes::TStream* stream, const UnicodeString& text,
                          TCodePage code_page) {
    switch (code_page) {
        case System::kCodePageAnsi:
        case System::kCodePageUtf8: {
            TXmlOutputBuffer<char> output(stream);
            output.Put(text);
            return output.Finish();
        }
        case System::kCodePageUtf16: {
            TXmlOutputBuffer<WCHAR> output(stream);
            output.Put(text);
            return output.Finish();
        }
        default:
            return 0;
    }
}
