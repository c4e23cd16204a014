// The free utilities over strings, all of them.
#pragma once

#include "mox_classes/text/sysutils_code_page.h"
#include "mox_classes/text/sysutils_command_line.h"
#include "mox_classes/text/sysutils_numbers.h"
#include "mox_classes/text/sysutils_paths.h"
#include "mox_classes/text/sysutils_platform.h"
#include "mox_classes/text/sysutils_text.h"
