/* The calls that the C#, PowerShell and Python bindings make, from C: the same order, argument
 * types and buffer sizes. Prints one line per step; the programs beside this one print the same.
 *
 *     managed_calls PRINTER      (plain ASCII)
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "qv_rtl_c.h"

enum { kFirstLength = 4096, kLongName = 4096, kUnknownKeywords = 100, kMostUnits = 16384 };

/* A character outside the Basic Multilingual Plane, one whose low byte is 0, an accent. */
#define FANCY u"\U0001F4E0 \u0100 \u00E9"

/* A text under construction. */
typedef struct {
    QV_WCHAR units[kMostUnits];
    int length;
} Text;

static void add_units(Text* text, const void* units, int count) {
    if (text->length + count >= kMostUnits) abort();
    memcpy(text->units + text->length, units, (size_t)count * 2);
    text->length += count;
    text->units[text->length] = 0;
}

static void add(Text* text, const char* ascii) {
    for (; *ascii != '\0'; ++ascii) {
        const QV_WCHAR unit = (QV_WCHAR)*ascii;
        add_units(text, &unit, 1);
    }
}

static void add_fancy(Text* text) {
    add_units(text, FANCY, (int)(sizeof(FANCY) / 2) - 1);
}

static Text* begin(Text* text, const char* ascii) {
    text->length = 0;
    add(text, ascii);
    return text;
}

static int length_of(const QV_WCHAR* text) {
    int length = 0;
    while (text[length] != 0) ++length;
    return length;
}

/* Makes a command call, again with more room while the answer may have been cut; the caller frees
 * the answer. */
static QV_WCHAR* command(const Text* line, int* status) {
    int length = kFirstLength;
    for (;;) {
        QV_WCHAR* const buffer = calloc((size_t)length + 1, sizeof(QV_WCHAR));
        if (buffer == NULL) abort();
        *status = DoCommandW(line->units, buffer, length);
        if (*status < 0 ? length_of(buffer) < length : *status <= length) return buffer;
        free(buffer);
        length = *status > length * 2 ? *status : length * 2;
    }
}

static void print_ascii(const QV_WCHAR* text) {
    for (; *text != 0; ++text) putchar(*text == '\t' ? '|' : *text < 0x80 ? (int)*text : '?');
    putchar('\n');
}

static void show_answer(const Text* line) {
    int status;
    QV_WCHAR* const answer = command(line, &status);
    if (status < 0) {
        printf("%d %d\n", status, length_of(answer));
    } else {
        print_ascii(answer);
    }
    free(answer);
}

static void show_length(const Text* line) {
    int status;
    QV_WCHAR* const answer = command(line, &status);
    printf("%d\n", status < 0 ? status : length_of(answer));
    free(answer);
}

/* The value of "Mode", which every answer begins with. */
static void show_mode(const Text* line) {
    int status;
    QV_WCHAR* const answer = command(line, &status);
    if (status < 0) {
        printf("%d %d\n", status, length_of(answer));
    } else {
        printf("%c\n", (int)answer[sizeof("Mode")]);
    }
    free(answer);
}

/* Writes the request file, makes the call, reads the response. */
static void request(const char* utf8, char* response, size_t size) {
    Text names[2];
    FILE* file = fopen("request.xml", "wb");
    if (file == NULL) abort();
    fprintf(file, "\xEF\xBB\xBF%s", utf8);
    fclose(file);
    DoXMLW(begin(&names[0], "request.xml")->units, begin(&names[1], "response.xml")->units);
    response[0] = '\0';
    file = fopen("response.xml", "rb");
    if (file == NULL) return;
    response[fread(response, 1, size - 1, file)] = '\0';
    fclose(file);
    remove("request.xml");
    remove("response.xml");
}

/* What stands between `before` and the next character of `ends`. */
static void print_between(const char* response, const char* before, const char* ends) {
    const char* const found = strstr(response, before);
    if (found == NULL) {
        printf("?");
    } else {
        printf("%.*s", (int)strcspn(found + strlen(before), ends), found + strlen(before));
    }
}

static void update(const char* printer_utf8, char* response, size_t size) {
    char text[512];
    snprintf(text, sizeof(text),
             "<update><printer><name>%s</name><devmode><dmCopies>3</dmCopies>"
             "<exOut><UseSerial>False</UseSerial></exOut></devmode></printer></update>",
             printer_utf8);
    request(text, response, size);
}

static void show_defaults(const Text* printer) {
    Text directory;
    Text file;
    Text empty;
    const QV_WCHAR* const none = begin(&empty, "")->units;
    begin(&directory, "");
    add_fancy(&directory);
    const int set = SetQVDefaultSetting(printer->units, 1, 0, 1, 0, directory.units,
                                        begin(&file, "a.tif")->units, none, none, none, none, none);
    printf("%s\n", set == 1 ? "set" : "refused");
}

static void run_commands(const char* printer) {
    static Text line;
    int i;
    show_answer(begin(&line, "getorloprinters"));
    begin(&line, "getdevmode\tprintername\t");
    add(&line, printer);
    show_mode(&line);
    begin(&line, "setdevmode\tprintername\t");
    add(&line, printer);
    add(&line, "\tmode\t1\tdefaultsavedir\t\"");
    add_fancy(&line);
    add(&line, "\t\"\"\"");
    show_answer(&line);
    begin(&line, "setdevmode\tprintername\t");
    add(&line, printer);
    for (i = 0; i < kUnknownKeywords; ++i) {
        char keyword[32];
        snprintf(keyword, sizeof(keyword), "\tnothing%04d", i);
        add(&line, keyword);
        add_fancy(&line);
        add(&line, "\t1");
    }
    show_length(&line);
    begin(&line, "getdevmode\tprintername\t");
    add_fancy(&line);
    show_answer(&line);
    begin(&line, "getdevmode\tprintername\t");
    for (i = 0; i < kLongName; ++i) add(&line, "x");
    show_answer(&line);
}

static void run_requests(const char* printer) {
    static char response[65536];
    request("<query><global/></query>", response, sizeof(response));
    printf("%s\n", strstr(response, "<response to=\"query\">") != NULL ? "answered" : response);
    update(printer, response, sizeof(response));
    print_between(response, "<dmCopies>", "<");
    printf(" ");
    print_between(response, "<UseSerial>", "<");
    printf("\n");
    update("\xF0\x9F\x93\xA0 \xC4\x80 \xC3\xA9", response, sizeof(response));
    print_between(response, "W32Code=\"", "\"");
    printf("\n");
}

int main(int argc, char** argv) {
    static Text printer;
    if (argc != 2) {
        fprintf(stderr, "usage: managed_calls PRINTER\n");
        return 2;
    }
    run_commands(argv[1]);
    run_requests(argv[1]);
    show_defaults(begin(&printer, argv[1]));
    begin(&printer, "");
    add_fancy(&printer);
    show_defaults(&printer);
    return 0;
}
