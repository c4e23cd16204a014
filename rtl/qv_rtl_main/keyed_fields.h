// The fields that the text commands name by a keyword of their own. Which these are, and their
// order in an answer, stands in the rows (driver_devmode/field_rows.h).
#pragma once

#include <map>

#include "driver_devmode/field_info.h"
#include "driver_devmode/qvdm.h"

namespace qv_rtl_main {

// Appends keyword and value of each, all separated by tabs.
void AppendKeyedFields(TQVDM& wrapper, UnicodeString& result);

// Changes of one printer's settings. The wrapper must outlive them.
class TKeyedChanges {
  public:
    explicit TKeyedChanges(TQVDM& wrapper) : wrapper_(wrapper) {}
    // False for a keyword of no field. Throws for a text where a field wants a number.
    bool Take(const UnicodeString& keyword, const UnicodeString& value);
    // Sets the fields that make do with any text: of several texts the last one counts.
    void Finish();

  private:
    TQVDM& wrapper_;
    std::map<const driver_devmode::TFieldInfo*, UnicodeString> waiting_;
};

}  // namespace qv_rtl_main
