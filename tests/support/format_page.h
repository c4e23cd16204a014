// Takes the worked examples out of the pages in docs/formats.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/source_folder.h"

namespace test {

/// The bytes of the `block`-th fenced block (from 0) of a page. A line of a dump is its offset and
/// its bytes, all hexadecimal; what follows two blanks behind them is a remark.
inline std::vector<unsigned char> PageDump(const std::string& page, int block) {
    std::ifstream file(SourceFolder() + "/docs/formats/" + page);
    EXPECT_TRUE(file.is_open()) << page;
    std::vector<unsigned char> bytes;
    int fences = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("```")) {
            ++fences;
        } else if (fences == 2 * block + 1) {
            const std::size_t first = line.find("  ") + 2;
            EXPECT_EQ(std::stoul(line, nullptr, 16), bytes.size()) << line;
            std::istringstream numbers(line.substr(first, line.find("  ", first) - first));
            for (unsigned int byte; numbers >> std::hex >> byte;) {
                bytes.push_back(static_cast<unsigned char>(byte));
            }
        }
    }
    return bytes;
}

}  // namespace test
