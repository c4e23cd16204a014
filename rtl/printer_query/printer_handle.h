// Opening printers, and printer handles in messages.
#pragma once

#include <windows.h>

#include <winspool.h>

#include "mox_classes/memory/handles.h"
#include "mox_classes/text/unicode_string.h"

namespace printer_query {

// The spooler's parameters are not const, but it does not write to them.
inline LPWSTR Writable(const UnicodeString& text) {
    return const_cast<LPWSTR>(text.t_str());
}

// None, with the reason in the last error, when the printer cannot be opened. Null `defaults` leave
// everything to the spooler.
inline System::TPrinterHandle OpenNamedPrinter(const UnicodeString& name,
                                               PRINTER_DEFAULTSW* defaults) {
    HANDLE printer = nullptr;
    if (!OpenPrinterW(Writable(name), &printer, defaults)) printer = nullptr;
    return System::TPrinterHandle(printer);
}

// A handle as messages show it ("x%X").
inline unsigned HandleNumber(HANDLE handle) {
    return static_cast<unsigned>(reinterpret_cast<UINT_PTR>(handle));
}

}  // namespace printer_query
