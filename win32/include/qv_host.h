// What only this host has: where its state lies, and its registry as text. For tools and tests; the
// toolkit itself keeps to the Win32 names.
#pragma once

#include "minwindef.h"

// The host root's folder, a name of this host's file system. Returns the characters written without
// the terminator, or the size that is needed with it when `size` is too small; 0 with the last
// error when there is none.
QV_HOST_API DWORD QvHostRoot(LPWSTR buffer, DWORD size);

// The path of this host that a Windows file name means, whether or not it exists, in UTF-8. Returns
// the bytes written without the terminator, or the size that is needed with it when `size` is too
// small; 0 with the last error for what is no file name.
QV_HOST_API DWORD QvHostPath(LPCWSTR name, LPSTR buffer, DWORD size);

// Applies a .reg file (a name of this host's file system) to the registry: what the Windows
// registry editor exports, or UTF-8: all of it in one step. One that is malformed changes nothing.
// On failure `message` receives a text of at most `size` characters with terminator: file, line,
// reason; the last error is set.
QV_HOST_API BOOL QvHostImport(LPCWSTR file, LPWSTR message, DWORD size);

// Writes a key with all below it as UTF-8 .reg text to `file`, or to standard output when `file` is
// null. `key` begins with a root's name, whole or short ("HKLM\Software"); null means every root.
// Failure as in QvHostImport.
QV_HOST_API BOOL QvHostExport(LPCWSTR key, LPCWSTR file, LPWSTR message, DWORD size);

// What this process changes in the registry between the two calls is one change: others see all of
// it or nothing, and a process that is killed in between has changed nothing. Others go on reading;
// who wants to write meanwhile waits, five seconds at most. One thread of the process, which does
// not fork meanwhile. End keeps the changes or takes them back; it fails, with the last error, when
// they cannot be kept.
QV_HOST_API void QvHostBeginChanges(void);
QV_HOST_API BOOL QvHostEndChanges(BOOL keep);

// Reads the whole registry and looks for damage. False with a text when there is some, or when it
// cannot be read, as in QvHostImport.
QV_HOST_API BOOL QvHostCheckRegistry(LPWSTR message, DWORD size);

// What was wrong when a call on the registry failed last: the store's file and the reason, the
// process that holds it when the system tells. Empty when the last call went well; sizes as in
// QvHostRoot.
QV_HOST_API DWORD QvHostProblem(LPWSTR buffer, DWORD size);

// A string table, as a module of this host carries it: the exported array `qv_module_strings`, read
// by FindResourceW. A block named n holds the strings 16 * (n - 1) to 16 * n - 1: sixteen times a
// length and as many units, without terminators, in `bytes` bytes. A block named 0 ends the array.
//     extern "C" const QvStringBlock qv_module_strings[] = {QvStrings(7, u"\2OK" u"\6Cancel" ...),
//     {}};
struct QvStringBlock {
    WORD name;
    DWORD bytes;
    const WCHAR* text;
};

template <std::size_t N>
constexpr QvStringBlock QvStrings(WORD name, const WCHAR (&text)[N]) {
    return {name, static_cast<DWORD>((N - 1) * sizeof(WCHAR)), text};
}
