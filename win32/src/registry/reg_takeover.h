// The text files, one for each root, in which earlier versions of this host kept the registry.
#pragma once

#include <string>

namespace host {

// Takes what the text files of the store's folder hold into the store that is being made. Throws
// RegError with file and line for one that is malformed: then no store is made.
void TakeOverTextFiles();

// What follows the name of a text file that was taken over; it is kept beside the store.
inline constexpr char kTakenOver[] = ".taken_over";

// Gives them these names, once the store is made, so that nobody takes them for the registry.
void SetTextFilesAside();

// The whole content of a file. Throws RegError.
std::string ReadWholeFile(const std::string& path);

}  // namespace host
