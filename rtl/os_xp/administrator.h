// Whether the user is an administrator: by membership and by what the system lets him do.
#pragma once

#include "qv_api.h"

// Whether the calling thread's user is in the Administrators group, also when the group only counts
// for denials (an administrator whose process is not elevated).
QV_API bool IsAdmin();
// Whether the process may do everything with the service manager.
QV_API bool IsAdmin2();
