// The registry as text: the .reg format of the Windows registry editor, version 5.00.
//
// The reader takes UTF-16LE with a byte-order mark or UTF-8 with or without one, lines that end in
// LF or CR LF, and gives the file's statements in order, one at a time. The writer makes UTF-8 with
// LF, text values as quoted text wherever that keeps every byte. Reader and writer share no code.
#pragma once

#include <windows.h>

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "base/call_ref.h"

namespace host {

// One statement of a .reg file.
struct RegEntry {
    enum class Kind { Key, DeleteKey, Value, DeleteValue };
    Kind kind;
    std::size_t line;
    std::u16string name;  // a key's path from its root's name on, or a value's name
    DWORD type = REG_NONE;
    std::vector<BYTE> data;
};

// What is wrong with a .reg file, and in which line (from 1 on).
class RegTextError : public std::runtime_error {
  public:
    RegTextError(std::size_t line, const std::string& what)
        : std::runtime_error("line " + std::to_string(line) + ": " + what) {}
};

using RegEntryTaker = CallRef<void(const RegEntry&)>;

// Gives the statements in order; an entry lives until the next one is asked for. Throws
// RegTextError for bytes that are no text, before it gives any statement, else for the first line
// that is not understood.
void ReadRegText(std::string_view bytes, const RegEntryTaker& take);

// Makes the text, key by key. Names must be well-formed UTF-16, key names without line breaks.
class RegTextWriter {
  public:
    void Key(std::u16string_view path);
    void Value(std::u16string_view name, DWORD type, std::span<const BYTE> data);
    std::string Take() { return std::move(text_); }

  private:
    void Quoted(std::string_view utf8);
    void Hex(DWORD type, std::span<const BYTE> data);

    std::string text_ = "Windows Registry Editor Version 5.00\n";
    std::size_t line_start_ = 0;
};

}  // namespace host
