/* A program of another compiler and linker, without a C run-time library: the import library is all
 * that it needs. Ends with 0 when the library answers. */
#include <qv_rtl_c.h>

enum { kLength = 64 };

__declspec(dllimport) void __stdcall ExitProcess(unsigned int status);

void start(void) {
    QV_WCHAR answer[kLength + 1];
    int right = QVRtlVersion() == QV_RTL_VERSION &&
                DoCommandW(L"no such word", answer, kLength) == 15 && answer[0] == L'I';
    ExitProcess(right ? 0 : 1);
}
