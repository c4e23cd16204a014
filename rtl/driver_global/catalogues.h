// The fax papers and resolutions that the product's resource file lists for a set of options and a
// language.
#pragma once

#include <windows.h>

#include <memory>
#include <vector>

#include "mox_classes/containers/string_list.h"
#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// One resolution: its name in the resource file, its text for the user, dots per inch.
struct TQVSizeData {
    UnicodeString Name;
    UnicodeString Text;
    short X = 0;
    short Y = 0;
};

// One paper; X and Y are its width and height in the resource file's units (tenths of a
// millimetre).
struct TQVPaperData : TQVSizeData {
    short Id = 0;  // DMPAPER_ value
    UnicodeString Reserved;
};

class TXmlNode;

// What both catalogues share: the entries, their order and the default. A new catalogue is closed.
// Open selects the entries, and the first access reads their data. A failed read closes the
// catalogue. One thread at a time.
class QV_API TQVSizes {
  public:
    TQVSizes() = default;
    TQVSizes(const TQVSizes&) = delete;
    TQVSizes& operator=(const TQVSizes&) = delete;

    // Loads the entries' data; false, and the catalogue closed, when the resource file lacks the
    // list or an entry.
    virtual bool ReadData() = 0;
    virtual ~TQVSizes();
    virtual void Close();

    // Takes the entries of `list_name` for the option set ("standard" when empty or unknown); texts
    // in `language` ("en" when empty). False when it is open already or there are no entries.
    bool Open(UnicodeString list_name, UnicodeString language, UnicodeString set_name);
    int GetCount() const { return Count; }
    // -1 when there is no default.
    int GetDefaultIndex() const {
        return DefaultIndex >= 0 && DefaultIndex < Count ? DefaultIndex : -1;
    }

  protected:
    // The element that holds the entries, or null.
    TXmlNode* ListNode() const;
    // The texts and sizes that both kinds of entry have.
    void FillSize(TQVSizeData& entry, const TXmlNode& node) const;

    int Count = 0;
    UnicodeString Language = TEXT("en");
    UnicodeString SetName = TEXT("standard");
    UnicodeString ListName;
    std::unique_ptr<Classes::TStringList> Items;
    int DefaultIndex = -1;

  private:
    bool TakeItems(const UnicodeString& names);
    bool TakeAllOfList();
};

// The papers. Entries are the catalogue's; a pointer is valid until Close.
class QV_API TQVPapers : public TQVSizes {
  public:
    bool ReadData() override;
    ~TQVPapers() override;
    void Close() override;

    // Null outside the catalogue, or when its data cannot be read.
    TQVPaperData* Get(int index);
    TQVPaperData* GetDefault() { return GetDefaultIndex() < 0 ? nullptr : Get(DefaultIndex); }
    int IndexOf(short id);
    // The smallest paper that holds the page, or the largest paper when no paper holds it. Of equal
    // papers it is the first. -1 without papers.
    int IndexOfBestFit(int width, int height);

  private:
    std::vector<TQVPaperData> data_;
};

class QV_API TQVResolutions : public TQVSizes {
  public:
    bool ReadData() override;
    ~TQVResolutions() override;
    void Close() override;

    TQVSizeData* Get(int index);
    TQVSizeData* GetDefault() { return GetDefaultIndex() < 0 ? nullptr : Get(DefaultIndex); }
    int IndexOf(int x, int y);

  private:
    std::vector<TQVSizeData> data_;
};
