// The export macro of the library: on every class and function that other modules use, and on
// nothing else.
#pragma once

#if defined(_WIN32)
#if defined(QV_RTL_BUILD)
#define QV_API __declspec(dllexport)
#else
#define QV_API __declspec(dllimport)
#endif
#else
#define QV_API __attribute__((visibility("default")))
#endif
