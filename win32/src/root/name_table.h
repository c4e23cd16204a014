// Numbers for names, one table per kind and host root: atoms and registered messages. Names compare
// without case; the first spelling is kept. Numbers run from 0xC000 to 0xFFFF.
#pragma once

#include <windows.h>

#include <functional>
#include <map>

#include "text/host_text.h"

namespace host {

struct NamedNumber {
    DWORD count = 0;
    WideString name;
};
using NameTable = std::map<ATOM, NamedNumber>;

constexpr ATOM kFirstNamed = 0xC000;
constexpr std::size_t kLongestAtomName = 255;

// Runs `change` on the table `kind` of this host root while no other process can use it. The table
// is stored when `change` returns true. Returns the Win32 code of reading and storing.
DWORD WithNameTable(const char* kind, const std::function<bool(NameTable&)>& change);

// The number of `name`, or 0.
ATOM FindName(const NameTable& table, WideView name);
// Gives `name` a free number when it is new, raises its count by one, and returns the number. 0
// when no number is left.
ATOM AddName(NameTable& table, WideView name);

}  // namespace host
