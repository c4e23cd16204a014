/* The exported calls that C and other languages use, in plain C11. Each call's contract stands in
 * the C++ header named beside it. No call lets an exception escape; any thread may call. */
#ifndef QV_RTL_C_H
#define QV_RTL_C_H

/* A text is zero-terminated UTF-16: one QV_WCHAR is one code unit. */
#if defined(_WIN32)
#define QV_C_API __declspec(dllimport)
#else
#define QV_C_API
#endif

#include "qv_rtl_main/log_record_c.h"
#include "qv_rtl_version.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The version of the library that is loaded, counted as QV_RTL_VERSION is:
 * qv_rtl_main/runtime_version.h. */
QV_C_API int QVRtlVersion(void);

/* Text commands: qv_rtl_main/command_entry.h, docs/commands.md. */
QV_C_API int DoCommandW(const QV_WCHAR* command, QV_WCHAR* buffer, int length);
QV_C_API int DoCommand(const QV_WCHAR* command, QV_WCHAR* buffer, int length);
QV_C_API int DoCommandA(const char* command, char* buffer, int length);

/* XML requests: qv_rtl_main/xml_request.h, docs/xml.md. */
QV_C_API int DoXMLW(const QV_WCHAR* requestFile, const QV_WCHAR* responseFile);
QV_C_API int DoXMLA(const char* requestFile, const char* responseFile);

/* The default settings of a printer: driver_devmode/default_settings.h. */
QV_C_API int SetQVDefaultSetting(const QV_WCHAR* printerName, unsigned char dialogMode,
                                 unsigned char runEnabled, unsigned char useSerial,
                                 unsigned char useDocumentName, const QV_WCHAR* saveDirectory,
                                 const QV_WCHAR* saveFileName, const QV_WCHAR* program,
                                 const QV_WCHAR* programParameters, const QV_WCHAR* messageName,
                                 const QV_WCHAR* messageWindowClass, const QV_WCHAR* messageFormat);

/* The shared log: qv_rtl_main/log_calls.h. */
QV_C_API int QVWriteLog(int level, const QV_WCHAR* source, int line, const QV_WCHAR* text);
QV_C_API int QVOpenLog(const QV_WCHAR* file, int onlyNew, QVLog** log);
QV_C_API int QVReadLog(QVLog* log, QVLogRecord* record);
QV_C_API void QVCloseLog(QVLog* log);

/* Tags of the string byte encoding: mox_classes/format/string_encoding.h. */
QV_C_API int SetDefaultStringTags(const unsigned char tags[8]);

#ifdef __cplusplus
}
#endif

#endif
