// The free utilities over strings, all of them.
#pragma once

#include "mox_classes/sysutils_code_page.h"
#include "mox_classes/sysutils_command_line.h"
#include "mox_classes/sysutils_numbers.h"
#include "mox_classes/sysutils_paths.h"
#include "mox_classes/sysutils_platform.h"
#include "mox_classes/sysutils_text.h"
