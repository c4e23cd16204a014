// The service manager, as far as the product asks whether it may use it.
#pragma once

#include "minwindef.h"

#define SC_MANAGER_CONNECT 0x0001
DECLARE_HANDLE(SC_HANDLE);

QV_HOST_API SC_HANDLE OpenSCManagerW(LPCWSTR machine, LPCWSTR database, DWORD access);
QV_HOST_API BOOL CloseServiceHandle(SC_HANDLE object);
