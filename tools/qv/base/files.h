// Whole files and the standard streams as bytes.
#pragma once

#include <string>

#include "base/console.h"

namespace CLI {
class App;
}

namespace qv {

// Stands for standard input or standard output where a file is expected.
inline const std::string kStandardStream = "-";

// Of a TFileStream that reads: others may write the file meanwhile.
inline constexpr unsigned short kSharedRead = 0x40;

// Throws Failure (kCannotOpen).
[[noreturn]] void CannotOpen(const std::string& name, const UnicodeString& reason);

// Throws Failure (kCannotOpen) for a name under which no file can be opened: that of a folder, to
// which the system would only deny access, and one that is not UTF-8, which would become another.
void CheckFileName(const std::string& name);

// Every byte up to the end of the file, the pipe, or standard input. Throws Failure (kCannotOpen)
// with the name.
std::string ReadAll(const std::string& name);

// Replaces the file, or prints. Throws Failure (kCannotOpen) with the name.
void WriteAll(const std::string& name, const std::string& bytes);

// The same for a file that must be whole at every moment, a power failure included: the old content
// stays until the new one stands complete beside it on the disk, and takes its place. Links are
// followed; a device or a pipe is written to as it is.
void WriteWhole(const std::string& name, const std::string& bytes);

// A file that a command makes, as its command line names it.
struct Output {
    std::string name;
    bool force = false;  // a file that exists is replaced
};
// --force.
void AddForceOption(CLI::App& command, Output& output);
// Throws Failure for a folder, and for a file that exists and is not to be replaced: to be called
// before long work.
void RefuseExisting(const Output& output);
// As WriteWhole. A file that somebody made since then is refused as well.
void WriteOutput(const Output& output, const std::string& bytes);

}  // namespace qv
