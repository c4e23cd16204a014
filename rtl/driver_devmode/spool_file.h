// The names of spool files.
#pragma once

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// A fresh spool file name in the temporary folder; nothing is created. No two calls of a process
// give the same one.
QV_API UnicodeString MakeSpoolFilename();
