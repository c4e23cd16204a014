// One call that sets a printer's default behaviour, for installation and configuration tools.
#pragma once

#include <windows.h>

#include "qv_api.h"

// Reads the printer's own DEVMODE, changes what the parameters name and stores it as the current
// user's DEVMODE of the printer. Strings are zero-terminated; null counts as empty. `dialog_mode`
// is 0 (interactive) or 1 (silent), the next three are booleans. Without the three message values
// the program and its parameters become the target that runs after a job; with any of them the
// target is an event. Returns 1, or 0 when the printer, its DEVMODE or the spooler does not allow
// it, or the texts do not fit; nothing is written then. Any thread; nothing is thrown.
extern "C" QV_API int SetQVDefaultSetting(const WCHAR* printer_name, BYTE dialog_mode,
                                          BYTE run_enabled, BYTE use_serial, BYTE use_document_name,
                                          const WCHAR* save_directory, const WCHAR* save_file_name,
                                          const WCHAR* program, const WCHAR* program_parameters,
                                          const WCHAR* message_name,
                                          const WCHAR* message_window_class,
                                          const WCHAR* message_format);
