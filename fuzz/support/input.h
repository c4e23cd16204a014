// What every fuzz target uses: the input cut into values, requirements, and a folder for files.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "mox_classes/text/unicode_string.h"

namespace fuzz {

using Bytes = std::span<const std::uint8_t>;
using Buffer = std::vector<std::uint8_t>;

// Ends the process with a report when a promise of the library does not hold.
void Require(bool holds, const char* promise);

// The input from front to back; behind its end everything is zero or empty.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

    std::uint8_t Byte() { return Number<std::uint8_t>(); }
    template <class T>
    T Number() {
        T value{};
        const Bytes bytes = Take(sizeof(value));
        if (!bytes.empty()) std::memcpy(&value, bytes.data(), bytes.size());
        return value;
    }
    // The bytes up to the next `end`, which is passed over, or all that are left.
    Bytes Until(char end);
    Bytes Rest() { return Take(rest_.size()); }
    bool Empty() const { return rest_.empty(); }

  private:
    Bytes Take(std::size_t count);

    Bytes rest_;
};

// Each byte is a code unit; 0x80 stands before the two bytes of any other one.
UnicodeString Text(Bytes bytes);
// The code units and the length are equal.
bool Same(const UnicodeString& a, const UnicodeString& b);
std::string Narrow(Bytes bytes);
// A UTF-8 lead byte takes the bytes behind it along, be they a '<': only of an input without broken
// sequences can names be told to be names. Of other encodings no byte has that power.
bool HasWholeCharacters(Bytes bytes, System::TCodePage code_page);

// Makes the next eight bytes the tag table of the string encoding; its defaults when they do not
// make one.
void TakeTagTable(Input& input);

// A file of that name in drive C of this process's host root, as the library is told of it.
UnicodeString FileName(const char* name);
// The same as a path of the system.
std::string FilePath(const char* name);
void WriteFile(const char* name, Bytes bytes);
std::string ReadFile(const char* name);

}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
