/* Stands before the library: writes each call of the command interfaces with its arguments to the
 * file that QV_CALLS names, and makes it in the library that QV_REAL_LIBRARY names. Two programs
 * that leave the same file made the same calls. */
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "qv_rtl_c.h"

static void* real(const char* name) {
    void* const library = dlopen(getenv("QV_REAL_LIBRARY"), RTLD_NOW | RTLD_LOCAL);
    void* const call = library == NULL ? NULL : dlsym(library, name);
    if (call == NULL) abort();
    return call;
}

static FILE* begin(const char* name) {
    FILE* const file = fopen(getenv("QV_CALLS"), "a");
    if (file == NULL) abort();
    fprintf(file, "%s", name);
    return file;
}

static void add_text(FILE* file, const QV_WCHAR* text) {
    fprintf(file, " '");
    for (; *text != 0; ++text) {
        if (*text >= 0x20 && *text < 0x7F) {
            fputc((int)*text, file);
        } else {
            fprintf(file, "\\%04x", (unsigned)*text);
        }
    }
    fprintf(file, "'");
}

/* Folders differ from program to program. */
static const QV_WCHAR* file_part(const QV_WCHAR* name) {
    const QV_WCHAR* part = name;
    for (; *name != 0; ++name) {
        if (*name == '/') part = name + 1;
    }
    return part;
}

static void add_content(FILE* file, const QV_WCHAR* name) {
    char narrow[1024];
    size_t i = 0;
    int byte;
    for (; name[i] != 0 && i + 1 < sizeof(narrow); ++i) narrow[i] = (char)name[i];
    narrow[i] = '\0';
    FILE* const content = fopen(narrow, "rb");
    if (content == NULL) return;
    fputc(' ', file);
    while ((byte = fgetc(content)) != EOF) fputc(byte, file);
    fclose(content);
}

__attribute__((visibility("default"))) int DoCommandW(const QV_WCHAR* command, QV_WCHAR* buffer,
                                                      int length) {
    int (*call)(const QV_WCHAR*, QV_WCHAR*, int);
    *(void**)&call = real("DoCommandW");
    /* Room for the text and its terminator is the caller's duty; a sanitizer or valgrind sees it.
     */
    const int status = call(command, buffer, length);
    FILE* const file = begin("DoCommandW");
    add_text(file, command);
    fprintf(file, " %d = %d\n", length, status);
    fclose(file);
    return status;
}

__attribute__((visibility("default"))) int DoXMLW(const QV_WCHAR* request,
                                                  const QV_WCHAR* response) {
    int (*call)(const QV_WCHAR*, const QV_WCHAR*);
    *(void**)&call = real("DoXMLW");
    FILE* const file = begin("DoXMLW");
    add_text(file, file_part(request));
    add_text(file, file_part(response));
    add_content(file, request);
    fprintf(file, "\n");
    fclose(file);
    return call(request, response);
}

__attribute__((visibility("default"))) int SetQVDefaultSetting(
    const QV_WCHAR* printer, unsigned char mode, unsigned char run, unsigned char serial,
    unsigned char document, const QV_WCHAR* directory, const QV_WCHAR* file_name,
    const QV_WCHAR* program, const QV_WCHAR* parameters, const QV_WCHAR* message,
    const QV_WCHAR* window_class, const QV_WCHAR* format) {
    int (*call)(const QV_WCHAR*, unsigned char, unsigned char, unsigned char, unsigned char,
                const QV_WCHAR*, const QV_WCHAR*, const QV_WCHAR*, const QV_WCHAR*, const QV_WCHAR*,
                const QV_WCHAR*, const QV_WCHAR*);
    *(void**)&call = real("SetQVDefaultSetting");
    FILE* const file = begin("SetQVDefaultSetting");
    const QV_WCHAR* const texts[] = {directory, file_name,    program, parameters,
                                     message,   window_class, format};
    add_text(file, printer);
    fprintf(file, " %d %d %d %d", mode, run, serial, document);
    for (size_t i = 0; i < sizeof(texts) / sizeof(texts[0]); ++i) add_text(file, texts[i]);
    fprintf(file, "\n");
    fclose(file);
    return call(printer, mode, run, serial, document, directory, file_name, program, parameters,
                message, window_class, format);
}
