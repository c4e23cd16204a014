// Keeps the responses of the XML tests as files, for checks that look at all of them.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

namespace test {

// Puts the response into the folder that the environment variable QV_SAVE_RESPONSES names, once per
// content; without the variable it does nothing.
inline void SaveResponse(const std::string& bytes) {
    const char* const folder = std::getenv("QV_SAVE_RESPONSES");
    if (folder == nullptr) return;
    const std::string name = std::to_string(std::hash<std::string>()(bytes)) + ".xml";
    std::ofstream file(std::filesystem::path(folder) / name, std::ios::binary);
    file << bytes;
}

}  // namespace test
