// Tables of value names: numbers of an enumeration or a flag set as text and back.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// One row; 12 bytes, so that Name is not aligned: it is read with a copy, never by reference.
//
// A table is an array of rows. The first one holds the kind (0 enumeration, else flag set) and the
// prefix that all names share; then come the values, with upper-case names that lack the prefix; a
// row with a null name ends it.
#pragma pack(push, 4)
struct TDefineInfo {
    std::int32_t Value;
    UnicodeString Name;
};
#pragma pack(pop)
static_assert(sizeof(TDefineInfo) == 12);

// A row as it stands in the source.
struct TDefineConst {
    std::int32_t Value;
    const WCHAR* Name;
};

// Makes a table from constants: first row, value rows; the last row is added. Read-only, any
// thread.
class QV_API TDefineTable {
  public:
    explicit TDefineTable(std::span<const TDefineConst> rows);
    TDefineTable(const TDefineTable&) = delete;
    TDefineTable& operator=(const TDefineTable&) = delete;
    ~TDefineTable();

    const TDefineInfo* Rows() const { return reinterpret_cast<const TDefineInfo*>(rows_.get()); }

  private:
    explicit TDefineTable(std::size_t room);

    std::size_t count_ = 0;  // the last row not included
    std::unique_ptr<std::byte[]> rows_;
};

// The name, or the decimal number when no row has the value; of a flag set what FlagsToString
// gives.
QV_API UnicodeString DefineToString(const TDefineInfo* table, int value, bool withPrefix);
// Takes a name in any case, with or without the prefix, and any number. False for other texts. Of a
// flag set what TryStringToFlags gives.
[[nodiscard]] QV_API bool TryStringToDefine(const TDefineInfo* table, int& value,
                                            const UnicodeString& text);
// The names of all rows that `value` contains, joined with '|'; null when there is none.
QV_API UnicodeString FlagsToString(const TDefineInfo* table, int value, bool withPrefix);
// False at the first name that no row has; `value` then holds the flags before it.
[[nodiscard]] QV_API bool TryStringToFlags(const TDefineInfo* table, int& value,
                                           const UnicodeString& text);

// False for "0", "false", "off" in any case and between blanks; true for everything else.
QV_API bool StringToBool(const UnicodeString& text);
// "True" or "False".
QV_API UnicodeString BoolToString(bool b);
