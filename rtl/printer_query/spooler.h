// The print spooler's queries and updates: printers, drivers, jobs, monitors, printer data, and the
// settings blocks of a printer and of its user.
//
// Nothing here throws for a failure of the spooler: it is logged and carried in the result, as a
// code in the holder or as an empty string. An empty holder is a success with nothing in it. Any
// thread.
#pragma once

#include <windows.h>

#include <winspool.h>

#include "mox_classes/containers/struct_data.h"
#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// The driver folder of this machine for its own environment.
QV_API UnicodeString GetPrinterDriverDir();
QV_API TW32StructData<PRINTER_INFO_2W> GetPrinterInfo2(HANDLE printer);
QV_API TW32StructData<PRINTER_INFO_2W> GetPrinterInfo2(UnicodeString name);
// Local printers and connections.
QV_API TW32StructData<PRINTER_INFO_2W> GetInstalledPrintersInfo2();
QV_API TW32StructData<DRIVER_INFO_3W> GetInstalledPrinterDrivers();
QV_API TW32StructData<JOB_INFO_2W> GetJobInfo2(HANDLE printer, DWORD jobId);
// The first `count` jobs.
QV_API TW32StructData<JOB_INFO_1W> GetPrintersJobs(HANDLE printer, DWORD count);
// One self-contained record when a monitor bears that very name, else all monitors.
QV_API TW32StructData<MONITOR_INFO_2W> GetMonitors(const UnicodeString& name);
// The value's bytes as UTF-16 text, whatever its type.
QV_API UnicodeString ReadPrinterData(HANDLE printer, UnicodeString valueName);

// Settings blocks: dmSize plus dmDriverExtra bytes, which may be fewer than DEVMODEW has; empty
// when the printer has none. A block whose stated size does not fit what the spooler returned is
// refused with code 13.
QV_API TW32StructData<DEVMODEW> GetPrinterDevMode(UnicodeString name);
// Those of the current user.
QV_API TW32StructData<DEVMODEW> GetGlobalDevMode(const UnicodeString& name);
// Stores the settings after the driver has merged `devmode`, and tells all windows; with null the
// driver asks the user first and the call blocks meanwhile. Returns what was stored. `owner` has no
// effect.
QV_API TW32StructData<DEVMODEW> SetGlobalDevMode(const UnicodeString& name, DEVMODEW* devmode,
                                                 HWND owner);
