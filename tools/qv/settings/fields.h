// The settings by name, as the tool shows and takes them: the library's field table with each
// stored value once.
#pragma once

#include <vector>

#include "base/console.h"
#include "driver_devmode/field_table.h"

namespace qv {

using Field = driver_devmode::TFieldInfo;

// Every named field of the block in layout order, then the strings of its pool. The wrapper's
// DeviceName and FormName are other names of dmDeviceName and dmFormName.
const std::vector<const Field*>& AllFields();

// The field of that exact name, or null.
const Field* FindField(const UnicodeString& name);

// The name under which a wrapper's field is set and read: dmDeviceName and dmFormName last under
// the wrapper's names only.
driver_devmode::TFieldName NameToSet(const Field& field);

std::string NameOf(const Field& field);

// The field whose name is closest, as a hint behind an unknown name: "; did you mean 'dmCopies'?",
// or nothing.
std::string Hint(const UnicodeString& unknown);
// The field of that name; throws Failure when there is none.
const Field& RequireField(const std::string& name);

bool IsPublic(const Field& field);
// What says where the other fields lie: a block with other values is another block.
bool IsLayout(const Field& field);

}  // namespace qv
