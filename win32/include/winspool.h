// Print spooler calls and records. The spooler's state lies in the same registry keys as on
// Windows.
#pragma once

#include "minwindef.h"
#include "wingdi.h"

#define PRINTER_ENUM_LOCAL 0x00000002
#define PRINTER_ENUM_CONNECTIONS 0x00000004
#define PRINTER_ACCESS_ADMINISTER 0x00000004
#define PRINTER_ACCESS_USE 0x00000008
#define PRINTER_ALL_ACCESS 0x000F000C

struct PRINTER_DEFAULTSW {
    LPWSTR pDatatype;
    LPDEVMODEW pDevMode;
    ACCESS_MASK DesiredAccess;
};
using LPPRINTER_DEFAULTSW = PRINTER_DEFAULTSW*;

struct PRINTER_INFO_2W {
    LPWSTR pServerName;
    LPWSTR pPrinterName;
    LPWSTR pShareName;
    LPWSTR pPortName;
    LPWSTR pDriverName;
    LPWSTR pComment;
    LPWSTR pLocation;
    LPDEVMODEW pDevMode;
    LPWSTR pSepFile;
    LPWSTR pPrintProcessor;
    LPWSTR pDatatype;
    LPWSTR pParameters;
    PVOID pSecurityDescriptor;
    DWORD Attributes;
    DWORD Priority;
    DWORD DefaultPriority;
    DWORD StartTime;
    DWORD UntilTime;
    DWORD Status;
    DWORD cJobs;
    DWORD AveragePPM;
};
static_assert(sizeof(PRINTER_INFO_2W) == 136);

struct PRINTER_INFO_9W {
    LPDEVMODEW pDevMode;
};

struct DRIVER_INFO_3W {
    DWORD cVersion;
    LPWSTR pName;
    LPWSTR pEnvironment;
    LPWSTR pDriverPath;
    LPWSTR pDataFile;
    LPWSTR pConfigFile;
    LPWSTR pHelpFile;
    LPWSTR pDependentFiles;
    LPWSTR pMonitorName;
    LPWSTR pDefaultDataType;
};
static_assert(sizeof(DRIVER_INFO_3W) == 80);

struct MONITOR_INFO_2W {
    LPWSTR pName;
    LPWSTR pEnvironment;
    LPWSTR pDLLName;
};
static_assert(sizeof(MONITOR_INFO_2W) == 24);

struct JOB_INFO_1W {
    DWORD JobId;
    LPWSTR pPrinterName;
    LPWSTR pMachineName;
    LPWSTR pUserName;
    LPWSTR pDocument;
    LPWSTR pDatatype;
    LPWSTR pStatus;
    DWORD Status;
    DWORD Priority;
    DWORD Position;
    DWORD TotalPages;
    DWORD PagesPrinted;
    SYSTEMTIME Submitted;
};
static_assert(sizeof(JOB_INFO_1W) == 96);

struct JOB_INFO_2W {
    DWORD JobId;
    LPWSTR pPrinterName;
    LPWSTR pMachineName;
    LPWSTR pUserName;
    LPWSTR pDocument;
    LPWSTR pNotifyName;
    LPWSTR pDatatype;
    LPWSTR pPrintProcessor;
    LPWSTR pParameters;
    LPWSTR pDriverName;
    LPDEVMODEW pDevMode;
    LPWSTR pStatus;
    PVOID pSecurityDescriptor;
    DWORD Status;
    DWORD Priority;
    DWORD Position;
    DWORD StartTime;
    DWORD UntilTime;
    DWORD TotalPages;
    DWORD Size;
    SYSTEMTIME Submitted;
    DWORD Time;
    DWORD PagesPrinted;
};
static_assert(sizeof(JOB_INFO_2W) == 160);

QV_HOST_API BOOL OpenPrinterW(LPWSTR name, LPHANDLE printer, LPPRINTER_DEFAULTSW defaults);
QV_HOST_API BOOL ClosePrinter(HANDLE printer);
QV_HOST_API BOOL GetPrinterW(HANDLE printer, DWORD level, LPBYTE buffer, DWORD size,
                             LPDWORD needed);
QV_HOST_API BOOL SetPrinterW(HANDLE printer, DWORD level, LPBYTE record, DWORD command);
QV_HOST_API BOOL EnumPrintersW(DWORD flags, LPWSTR name, DWORD level, LPBYTE buffer, DWORD size,
                               LPDWORD needed, LPDWORD count);
QV_HOST_API BOOL EnumPrinterDriversW(LPWSTR server, LPWSTR environment, DWORD level, LPBYTE buffer,
                                     DWORD size, LPDWORD needed, LPDWORD count);
QV_HOST_API BOOL EnumMonitorsW(LPWSTR server, DWORD level, LPBYTE buffer, DWORD size,
                               LPDWORD needed, LPDWORD count);
QV_HOST_API BOOL EnumJobsW(HANDLE printer, DWORD first, DWORD limit, DWORD level, LPBYTE buffer,
                           DWORD size, LPDWORD needed, LPDWORD count);
QV_HOST_API BOOL GetJobW(HANDLE printer, DWORD job, DWORD level, LPBYTE buffer, DWORD size,
                         LPDWORD needed);
QV_HOST_API DWORD GetPrinterDataW(HANDLE printer, LPWSTR name, LPDWORD type, LPBYTE data,
                                  DWORD size, LPDWORD needed);
QV_HOST_API BOOL GetPrinterDriverDirectoryW(LPWSTR server, LPWSTR environment, DWORD level,
                                            LPBYTE buffer, DWORD size, LPDWORD needed);
QV_HOST_API LONG DocumentPropertiesW(HWND owner, HANDLE printer, LPWSTR name, LPDEVMODEW output,
                                     LPDEVMODEW input, DWORD mode);
