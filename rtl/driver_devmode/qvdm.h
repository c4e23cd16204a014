// TQVDM, the wrapper around one settings block: it keeps the block's strings as UnicodeStrings, so
// that callers read and change them without touching the string pool, and it reads and writes every
// field by name.
#pragma once

#include "driver_devmode/qv_devmode.h"
#include "mox_classes/containers/string_list.h"
#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"
#include "xml/xml_node.h"

// Decode fills the strings from the block, Encode writes them back; between a change of a string
// and the next Encode the block is stale. A wrapper owns the block it made itself; a borrowed block
// must outlive its use here and is never freed. A copy refers to the same block and never owns it.
// Not synchronised. Problems are logged ('X'), never thrown.
class QV_API TQVDM {
  public:
    // An owned block with all defaults; files go to the user's documents folder under the name
    // "fax.tif".
    TQVDM();
    // Borrows `dm` unchecked and decodes it, whatever that gives.
    explicit TQVDM(DEVMODEW* dm);
    TQVDM(const TQVDM& other);
    TQVDM& operator=(const TQVDM& other);
    virtual ~TQVDM();

    // Copies the other's block and strings over this object's own and encodes.
    void Assign(TQVDM* source);
    // Borrows a valid block (an owned one is freed, unless it is `dm` itself) and decodes it; keeps
    // the current block when `dm` is not valid.
    bool SetDEVMODE(DEVMODEW* dm);
    // The same for a block of `size` bytes that comes from outside.
    bool SetDEVMODE(DEVMODEW* dm, int size);
    // False without a valid block, or at the first string whose offset is wrong; strings not
    // reached keep their values.
    bool Decode();
    // False when a string does not fit into the pool: its offset and those of all later strings
    // become 0, so that the block holds none of them. pool_texts.h says which.
    bool Encode();
    // Offset in code units from the start of the pool. False outside the pool (text unchanged) or
    // without a terminator inside it (text empty).
    bool ReadString(UnicodeString& text, short offset);
    // Appends at `position`, which moves behind the terminator. False (offset 0) when the text does
    // not fit.
    bool WriteString(short& offset, short& position, UnicodeString text);
    // Copies the 4400 bytes of the block as it stands; `target` must have room for them.
    void CopyTo(DEVMODEW* target);
    QV_DEVMODE* GetDM() { return FDM; }
    // Whether dmSize + dmDriverExtra, which callers can set by name, still lie within the memory of
    // the block. A block for which this is false must not be handed to the spooler.
    bool StatedSizeFits() const;

    // Writes every listed field as a child of `node`, dotted names as group and leaf. Returns true.
    bool ToXmlNode(TXmlNode* node);
    // Sets fields from the children of `node`, then encodes. Unknown names and values that cannot
    // be set are skipped; the previous values of the fields that were set go into `result` when it
    // is given. Returns true.
    bool FromXmlNode(TXmlNode* node, TXmlNode* result);
    // FromXmlNode's worker: as if every name began with `prefix` and a dot. Does not encode.
    // Returns true.
    bool InternalFromXmlNode(UnicodeString prefix, TXmlNode* node, TXmlNode* result);
    // "name=value" pairs joined by `separator`: the block's rows from row `first` on, then the
    // wrapper's strings.
    UnicodeString ToString(const UnicodeString& separator, int first);
    // Sets fields from alternating names and values from index `first` on, then encodes. Returns
    // the previous values of the fields that were set, as ToString writes them.
    UnicodeString FromStrings(TStrings* items, int first, const UnicodeString& separator);
    // FromStrings for a text of name=value pairs separated by blanks; values with blanks or '=' in
    // double quotes.
    UnicodeString FromString(const UnicodeString& text, int first, const UnicodeString& separator);

  private:
    bool borrow(DEVMODEW* dm, int size);
    void release();

    bool FOwnDM;
    QV_DEVMODE* FDM;

  public:
    UnicodeString DeviceName;
    UnicodeString FormName;
    UnicodeString Directory;
    UnicodeString FileName;
    UnicodeString Target;

  private:
    int block_size_;  // bytes of memory behind FDM
};
