// The user's name in the forms that name services give it.
#pragma once

#include "securitybaseapi.h"

enum EXTENDED_NAME_FORMAT { NameUnknown = 0, NameSamCompatible = 2, NameDisplay = 3 };

QV_HOST_API BOOLEAN GetUserNameExW(EXTENDED_NAME_FORMAT format, LPWSTR buffer, PULONG size);
