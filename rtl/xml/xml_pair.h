// What XML attributes and elements share: a name and a value, in blocks of the process heap.
#pragma once

#include <windows.h>

#include <cstddef>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// What the tree is made of comes from the process heap: a module may hand an element that it made
// to a list of another module.
class QV_API TXmlBlock {
  public:
    static void* operator new(std::size_t size);
    static void operator delete(void* block) noexcept;

  protected:
    // What derives from it is deleted as what it is.
    ~TXmlBlock() = default;
};

// A name and a value: an attribute, and what an element shares with it. Plain value. The destructor
// is not virtual: delete an element as a TXmlNode, never through a pointer to its pair, or its
// subtree stays behind.
class QV_API TXmlPair : public TXmlBlock {
  public:
    UnicodeString FName;
    UnicodeString FValue;
};

// Deletes an element with its subtree. `node` is a TXmlNode; the node's own file defines it, so
// that lists can delete what they hold without knowing more of it.
void DeleteXmlNode(TXmlPair* node) noexcept;
