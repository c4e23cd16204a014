// Calls that only this host has: the place of its state, and its registry as text. For tools and
// tests; the toolkit itself uses only Win32 names. Any thread, unless a call says otherwise.
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

// Applies a .reg file (a name of this host's file system) to the registry, all of it in one step.
// The file is UTF-8, or an export of the Windows registry editor. A malformed file changes nothing.
// On failure `message` receives a text of at most `size` characters with terminator: file, line,
// reason; the last error is set.
QV_HOST_API BOOL QvHostImport(LPCWSTR file, LPWSTR message, DWORD size);

// Writes a key with all below it as UTF-8 .reg text to `file`, or to standard output when `file` is
// null. `key` begins with a root's name, whole or short ("HKLM\Software"); null means every root.
// Failure as in QvHostImport.
QV_HOST_API BOOL QvHostExport(LPCWSTR key, LPCWSTR file, LPWSTR message, DWORD size);

// All changes of this process to the registry between the two calls are one change. Others see all
// of it or nothing; a process that is killed in between has changed nothing. Others can read
// meanwhile, and wait at most five seconds to write. Only one thread of the process may use these
// calls, and it must not fork in between. End keeps the changes or takes them back; it fails, with
// the last error, when they cannot be kept.
QV_HOST_API void QvHostBeginChanges(void);
QV_HOST_API BOOL QvHostEndChanges(BOOL keep);

// Reads the whole registry. False when it is damaged or cannot be read; `message` as in
// QvHostImport.
QV_HOST_API BOOL QvHostCheckRegistry(LPWSTR message, DWORD size);

// Why the last call on the registry failed: the store's file, the reason, and the process that
// holds the file when the system tells it. Empty when the call did not fail; sizes as in
// QvHostRoot.
QV_HOST_API DWORD QvHostProblem(LPWSTR buffer, DWORD size);

// The string table of a module: the exported array `qv_module_strings`, which FindResourceW reads.
// Block n holds the strings 16 * (n - 1) to 16 * n - 1 in `bytes` bytes: for each string its
// length, then as many units, without a terminator. A block with the name 0 ends the array.
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
