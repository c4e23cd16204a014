// Text in and out of the tool: UTF-8 on every standard stream and for every argument, on both
// hosts.
#pragma once

#include <string>
#include <vector>

#include "exit_code.h"
#include "mox_classes/text/unicode_string.h"

namespace qv {

UnicodeString FromUtf8(const std::string& text);
std::string ToUtf8(const UnicodeString& text);

// The text on one line, with what makes a terminal act or turns the direction of writing made
// harmless: tab, line break and the like as \t, \n, \r, \xNN, \uNNNN.
std::string OneLine(const UnicodeString& text);
// The same for a text of several lines, whose line feeds and tabs stay.
std::string Lines(const UnicodeString& text);

// Writes to standard output, byte for byte; throws Failure when that fails, ClosedPipe when nobody
// reads it.
void Print(const std::string& text);
void PrintLine(const std::string& text);
void PrintError(const std::string& text);

enum class Stream { kInput, kOutput, kError };
// Host: whether a person sits at the stream's other end.
bool IsTerminal(Stream stream);

// Host: whether the write to standard output that failed last found no reader.
bool OutputHasNoReader();

// Host: the program's arguments in UTF-8, and the streams made ready for bytes.
std::vector<std::string> PrepareConsole(int argc, char** argv);

}  // namespace qv
