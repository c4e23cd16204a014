// An XML document: a prolog of processing instructions and one root element, with parsing, loading
// and saving.
//
// The dialect is small: elements, double-quoted attributes, six named and the numeric references,
// instructions before the root, comments. docs/xml.md describes it.
#pragma once

#include <windows.h>

#include "mox_classes/memory/handles.h"
#include "xml/xml_node.h"

class TAsciiCharFinder;
struct TXmlSearchSets;
class TXmlParser;

// What a parse tells beside the tree it makes: where elements and texts stand, and what is lost.
// Positions count bytes of the scanned text: of the input, or for UTF-16 and UTF-32 of its UTF-8
// form. They come in ascending order.
class TXmlParseObserver {
  public:
    // The '<' of the element's start tag.
    virtual void Opened(const TXmlNode& node, int position) = 0;
    // Behind the '>' of a start tag.
    virtual void TextBegins(const TXmlNode& node, int position) = 0;
    // Characters inside the root that belong to no text.
    virtual void Passed(int position) = 0;

  protected:
    TXmlParseObserver() = default;
    ~TXmlParseObserver() = default;
};

// Owns its tree. One thread at a time. The load operations do not clear the document first: they
// are meant for a fresh one.
class QV_API TXmlDoc {
  public:
    TXmlDoc();
    // As LoadFromString; whether it succeeded shows in ParseResult.
    explicit TXmlDoc(const UnicodeString& text);
    TXmlDoc(const UnicodeString& text, const UnicodeString& root_name);
    ~TXmlDoc();
    TXmlDoc(const TXmlDoc&) = delete;
    TXmlDoc& operator=(const TXmlDoc&) = delete;

    // Empties prolog and root; the root's name and text stay.
    void Clear();
    // The root element has no children.
    bool IsDocEmpty() const { return FRoot->ChildCount() == 0; }

    // Parses the bytes into the document. Above 0: the root was closed, the byte position behind
    // its end tag; 0: the input ended before that; below 0: the negated byte position of an error.
    // Positions count from the buffer's start, a byte-order mark included. UTF-16 and UTF-32 input
    // is converted first, its positions are those of the original bytes. A byte that cannot start a
    // character throws "Invalid char found"; the tree keeps what was read. CodePage, when set
    // before, is the encoding expected without a mark, and afterwards the one found.
    int Parse(const void* buffer, int size);
    // What the last Parse returned, or would have returned had it not thrown; 0 before the first.
    int ParseResult() const { return parse_result_; }
    // What was wrong, in words; null after a Parse whose result is above 0, or for want of memory.
    const UnicodeString& Fault() const { return fault_; }
    // The byte position of the start tag that a fault is about as well, -1 when there is none: of
    // the element whose end tag is missing.
    int FaultOpened() const { return fault_opened_; }
    void SetObserver(TXmlParseObserver* observer) { observer_ = observer; }

    // Opens a file for ReadFile in place of one that is open.
    bool OpenFile(UnicodeString file_name);
    // Parses the open file from its current position: Parse's result. -1 when no file is open, it
    // cannot be read, or it is larger than 2 GiB - 1; 0 without reading when the root has children.
    int ReadFile();
    void CloseFile() { FFile.Reset(); }
    // From the stream's current position, as many bytes as its size: a stream that is not at its
    // start throws "Stream read failed", one above 2 GiB - 1 bytes "Out of range".
    void LoadFromStream(Classes::TStream* stream);
    void LoadFromFile(UnicodeString file_name);
    // With a root name the text is wrapped into an element of that name. True when the root was
    // closed.
    bool LoadFromString(const UnicodeString& text, const UnicodeString& root_name);

    // Saving sets version and encoding of the declaration (the prolog's first child, added when
    // there is none). Nothing is written when that child is not named "xml", or CodePage is none of
    // 0, 65001 (UTF-8) and 1200 (UTF-16); a file without a mark is loaded as 20127. The encoding
    // that a loaded declaration names is not kept, nor are CDATA sections and texts behind
    // comments. A code unit 0 in a text is written as it is: LoadFromString and files with a mark
    // give it back, a file without one throws "Invalid char found" there.
    UnicodeString SaveToString();
    void SaveToStream(Classes::TStream* stream);
    // Throws a text that says why when nothing would be written; the file is then not touched. One
    // that does not take all of it ("Stream write failed") is left as far as it got.
    void SaveToFile(UnicodeString file_name);

  protected:
    UnicodeString ParseKey(char end);
    int ParseAttributes(char end);
    int ParseText(UnicodeString& text, bool in_attribute);
    // With a stream the bytes written, otherwise the length of `out` behind the root.
    int SaveTo(Classes::TStream* stream, UnicodeString* out);

    TXmlNode* FCurrent = nullptr;           // the element being filled; not owned
    bool FRootSeen = false;                 // the root's start tag has been read
    TAsciiCharFinder* FFinder = nullptr;    // set only during a parse
    const TXmlSearchSets* FSets = nullptr;  // set only during a parse
    System::TFileHandle FFile;

  public:
    TXmlNode* FProlog = nullptr;  // owned; its children are the instructions
    TXmlNode* FRoot = nullptr;    // owned
    TCodePage CodePage = System::kCodePageAnsi;
    UnicodeString LineBreak;
    UnicodeString Indentation;

  private:
    friend class TXmlParser;

    void _Init();
    UnicodeString WhyNotSaved() const;
    int ParseWith(TAsciiCharFinder& finder);

    TXmlParser* parser_ = nullptr;           // set only during a parse
    TXmlParseObserver* observer_ = nullptr;  // not owned
    int parse_result_ = 0;
    int fault_opened_ = -1;
    UnicodeString fault_;
};
