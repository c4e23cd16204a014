// A ZIP archive of compressed files, made in memory: the small part of the format that every reader
// takes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qv {

class ZipWriter {
  public:
    // `name` is UTF-8 with '/' between folders; all entries bear one time.
    void Add(const std::string& name, std::string_view bytes);
    // The archive. Throws Failure for one that the format's 32-bit numbers do not take.
    std::string Finish();

  private:
    struct Entry {
        std::string name;
        std::uint32_t crc, packed_size, size, offset;
    };
    void PutDescription(const Entry& entry);

    std::string bytes_;
    std::vector<Entry> entries_;
};

}  // namespace qv
