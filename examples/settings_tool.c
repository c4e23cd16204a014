/* A tool in plain C: lists the product's printers, makes one print silently and shows what was set
 * before, then carries out an XML request.
 *
 *     settings_tool_c PRINTER REQUEST.xml RESPONSE.xml      (plain ASCII)
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "qv_rtl_c.h"

enum { kLineLength = 1024, kFirstLength = 4096 };

/* Puts ASCII into UTF-16, cut to the room there is. */
static void widen(const char* text, QV_WCHAR* wide, size_t room) {
    size_t i = 0;
    for (; i + 1 < room && text[i] != '\0'; ++i) wide[i] = (QV_WCHAR)(unsigned char)text[i];
    wide[i] = 0;
}

/* Items are separated by tabs; other characters than ASCII show as '?'. */
static void print_items(const QV_WCHAR* text) {
    for (; *text != 0; ++text) putchar(*text == '\t' ? '\n' : *text < 0x80 ? (int)*text : '?');
    putchar('\n');
}

/* Makes the call with a buffer that takes the whole answer and prints it; the status or length. */
static int run(const char* ascii) {
    QV_WCHAR line[kLineLength];
    int length = kFirstLength;
    int status = length + 1;
    QV_WCHAR* answer = NULL;
    widen(ascii, line, kLineLength);
    while (status > length) {
        if (answer != NULL) length = status;
        free(answer);
        answer = malloc(((size_t)length + 1) * sizeof(QV_WCHAR));
        if (answer == NULL) return -1;
        status = DoCommandW(line, answer, length);
    }
    if (status < 0) printf("status %d: ", status);
    print_items(answer);
    free(answer);
    return status;
}

int main(int argc, char** argv) {
    char line[kLineLength];
    QV_WCHAR request[kLineLength];
    QV_WCHAR response[kLineLength];
    if (argc != 4) {
        fprintf(stderr, "usage: settings_tool_c PRINTER REQUEST.xml RESPONSE.xml\n");
        return 2;
    }
    if (run("getorloprinters") < 0) return 1;
    snprintf(line, sizeof(line), "getdevmode\tprintername\t%s", argv[1]);
    if (run(line) < 0) return 1;
    snprintf(line, sizeof(line), "setdevmode\tprintername\t%s\tmode\t1", argv[1]);
    if (run(line) < 0) return 1;

    widen(argv[2], request, kLineLength);
    widen(argv[3], response, kLineLength);
    DoXMLW(request, response); /* always 1: errors stand in the response */
    return 0;
}
