// Reads ZIP archives from outside: stored and deflated entries, of up to 256 MiB each. Nothing that
// an archive says is used before it is checked.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qv {

class ZipReader {
  public:
    struct Entry {
        std::string name;   // as the archive has it: any bytes
        std::string fault;  // why it cannot be read; empty when it can
        std::uint16_t method = 0;
        std::uint32_t crc = 0, size = 0;
        std::string_view packed;  // its bytes in the archive
    };
    struct Content {
        std::string bytes;  // as far as they could be read
        std::string fault;  // what is wrong with them; empty when nothing is
    };

    // Whether an archive begins here.
    static bool IsZip(std::string_view bytes);

    // The bytes must stay as long as the reader. Throws Failure (kCannotOpen) when the archive's
    // directory cannot be believed, or has a form that is not read.
    explicit ZipReader(std::string_view bytes);

    // In the order of the directory, without folders. No two readable ones share bytes, and
    // together they hold at most 2 GiB.
    const std::vector<Entry>& Entries() const { return entries_; }
    static Content Read(const Entry& entry);

  private:
    void AddEntry(std::string_view archive, std::string_view& directory);
    void RefuseOverlaps();
    void RefuseTooMuch() const;

    std::vector<Entry> entries_;
};

}  // namespace qv
