/* Both command interfaces from plain C: the product's printers, and the answer to an XML request.
 *
 *     command REQUEST.xml RESPONSE.xml
 */
#include <stdio.h>
#include <string.h>

#include "qv_rtl_c.h"

enum { kResultLength = 4096, kNameLength = 512 };

/* ASCII is enough for this program's own texts; file names come as ASCII too. */
static void widen(const char* text, QV_WCHAR* wide, size_t length) {
    size_t i = 0;
    for (; i + 1 < length && text[i] != '\0'; ++i) wide[i] = (QV_WCHAR)(unsigned char)text[i];
    wide[i] = 0;
}

static void print_wide(const QV_WCHAR* wide) {
    for (; *wide != 0; ++wide) putchar(*wide < 0x80 ? (int)*wide : '?');
    putchar('\n');
}

int main(int argc, char** argv) {
    QV_WCHAR command[64];
    QV_WCHAR result[kResultLength + 1];
    QV_WCHAR request[kNameLength];
    QV_WCHAR response[kNameLength];
    int status;
    if (argc != 3) {
        fprintf(stderr, "usage: command REQUEST.xml RESPONSE.xml\n");
        return 2;
    }

    widen("getorloprinters", command, 64);
    status = DoCommandW(command, result, kResultLength);
    if (status < 0) {
        fprintf(stderr, "status %d: ", status);
        print_wide(result);
        return 1;
    }
    print_wide(result);

    widen(argv[1], request, kNameLength);
    widen(argv[2], response, kNameLength);
    return DoXMLW(request, response) == 1 ? 0 : 1;
}
