#include "mox_classes/text/sysutils_command_line.h"

#include "mox_classes/text/sysutils_paths.h"
#include "mox_classes/text/sysutils_platform.h"
#include "mox_classes/text/sysutils_text.h"

namespace Sysutils {

namespace {

bool IsProgram(const UnicodeString& name) {
    return FileExists(GetEnvExpanded(name));
}

// `text` starts with a double quote.
bool SplitQuoted(const UnicodeString& text, UnicodeString& program, UnicodeString& params) {
    const UnicodeString rest = text.SubString(2, text.Length());
    const int quote = rest.Pos(TEXT("\""));
    if (quote == 0) {
        program = rest;
    } else {
        program = rest.SubString(1, quote - 1);
        params = rest.SubString(quote + 1, rest.Length()).Trim();
    }
    return IsProgram(program);
}

}  // namespace

bool ParseCommandLine(const UnicodeString& line, UnicodeString& program, UnicodeString& params) {
    const UnicodeString text = Trim(line);
    program = UnicodeString();
    params = UnicodeString();
    if (text.Length() > 0 && text[1] == '"') return SplitQuoted(text, program, params);
    for (int i = 1; i <= text.Length(); ++i) {
        if (text[i] != ' ') continue;
        program = text.SubString(1, i - 1);
        if (IsProgram(program)) {
            params = text.SubString(i + 1, text.Length());
            return true;
        }
    }
    program = text;
    return IsProgram(program);
}

UnicodeString BuildCommandLine(const UnicodeString& program, const UnicodeString& params) {
    const bool quoted = program.Pos(TEXT(" ")) != 0;
    const UnicodeString first = quoted ? TEXT("\"") + program + TEXT("\"") : program;
    return params.Length() == 0 ? first : first + TEXT(" ") + params;
}

}  // namespace Sysutils
