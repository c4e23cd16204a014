/* A record of the log as the C interface gives it, in plain C11. */
#ifndef QV_RTL_MAIN_LOG_RECORD_C_H
#define QV_RTL_MAIN_LOG_RECORD_C_H

/* NOLINTBEGIN(modernize-use-using): C has typedef only. */

#if defined(_WIN32)
#include <stddef.h>
typedef wchar_t QV_WCHAR;
#else
#include <uchar.h>
typedef char16_t QV_WCHAR;
#endif

/* The texts are UTF-16 and may hold zero characters. They and the data belong to the log and are
 * valid until its next call. */
typedef struct QVLogRecord {
    unsigned long long time;   /* UTC, in 100 ns since the year 1601 */
    unsigned long long missed; /* records in front of it that were overwritten before this read */
    const QV_WCHAR* source;
    const QV_WCHAR* text;
    const QV_WCHAR* label;
    const unsigned char* data;
    int sourceLength; /* code units */
    int textLength;
    int labelLength;
    int dataSize; /* bytes */
    int level;    /* 'X' error, '*' warning, 'i' information, ' ' trace, '>' the log itself */
    int line;
    unsigned int processId;
    unsigned int threadId;
    unsigned int sessionId; /* 0xFFFFFFFF: not known */
    int madeAnew;           /* 1: the log was deleted or replaced since the record before, else 0 */
} QVLogRecord;

/* A log that is being read. */
typedef struct QVLog QVLog;
/* NOLINTEND(modernize-use-using) */

#endif
