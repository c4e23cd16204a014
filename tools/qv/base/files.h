// Whole files and the standard streams as bytes.
#pragma once

#include <string>

#include "base/console.h"

namespace qv {

// Stands for standard input or standard output where a file is expected.
inline const std::string kStandardStream = "-";

// Every byte of the file, or of standard input. Throws Failure (kCannotOpen) with the name.
std::string ReadAll(const std::string& name);

// Replaces the file, or prints. Throws Failure (kCannotOpen) with the name.
void WriteAll(const std::string& name, const std::string& bytes);

// The same for a file that must be whole at every moment: the old content stays until the new one
// stands complete beside it and takes its place.
void WriteWhole(const std::string& name, const std::string& bytes);

}  // namespace qv
