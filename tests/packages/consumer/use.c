/* A C program that includes and links an installed copy of the library. */
#include <qv_rtl_c.h>
#include <stdio.h>

enum { kLength = 64 };

int main(void) {
    const char* word = "no such word";
    QV_WCHAR command[kLength];
    QV_WCHAR result[kLength + 1];
    int i = 0;
    if (QVRtlVersion() != QV_RTL_VERSION) {
        fprintf(stderr, "built with %d, runs with %d\n", QV_RTL_VERSION, QVRtlVersion());
        return 1;
    }
    for (; word[i] != '\0'; ++i) command[i] = (QV_WCHAR)word[i];
    command[i] = 0;
    if (DoCommandW(command, result, kLength) != 15 || result[0] != 'I') return 1;
    printf("C %s\n", QV_RTL_VERSION_TEXT);
    return 0;
}
