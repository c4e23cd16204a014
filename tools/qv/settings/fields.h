// The names of the settings. This is the library's field table, with each stored value once.
#pragma once

#include <vector>

#include "base/console.h"
#include "driver_devmode/field_table.h"

namespace qv {

using Field = driver_devmode::TFieldInfo;

// Every named field of the block in layout order, then the strings of its pool. DeviceName and
// FormName are left out: they are second names of dmDeviceName and dmFormName.
const std::vector<const Field*>& AllFields();

// The field of that exact name, or null.
const Field* FindField(const UnicodeString& name);

// The name that sets and reads the field in a wrapper. The wrapper keeps dmDeviceName and
// dmFormName under its own names, DeviceName and FormName.
driver_devmode::TFieldName NameToSet(const Field& field);

std::string NameOf(const Field& field);

// A hint for an unknown name, with the closest field: "; did you mean 'dmCopies'?". Empty when no
// name is close.
std::string Hint(const UnicodeString& unknown);
// The field of that name; throws Failure when there is none.
const Field& RequireField(const std::string& name);

bool IsPublic(const Field& field);
// True for sizes and versions, which say where the other fields lie. They cannot be set.
bool IsLayout(const Field& field);

}  // namespace qv
