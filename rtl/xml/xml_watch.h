// What a parse tells beside the tree it makes: where elements and texts stand, and what is lost.
#pragma once

class TXmlNode;

// Positions count bytes of the scanned text: of the input, or for UTF-16 and UTF-32 of its UTF-8
// form. They come in ascending order.
class TXmlWatch {
  public:
    // The '<' of the element's start tag.
    virtual void Opened(const TXmlNode& node, int position) = 0;
    // Behind the '>' of a start tag.
    virtual void TextBegins(const TXmlNode& node, int position) = 0;
    // Characters inside the root that belong to no text.
    virtual void Passed(int position) = 0;

  protected:
    TXmlWatch() = default;
    ~TXmlWatch() = default;
};
