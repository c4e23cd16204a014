// The file of a table of names: a hash table in which each name keeps its number as long as it is
// used. It is read and written by system calls, not mapped: so a file that somebody cuts gives an
// error and no crash.
#pragma once

#include <windows.h>

#include <array>
#include <cstdint>

#include "text/host_text.h"

namespace host {

// A system call failed, or the file changes while its lock is held.
struct NameFileFailure {
    DWORD code;
};

// One use of the file by a thread that holds its lock. All calls throw NameFileFailure.
//
// After an interrupted change, or when links are wrong, the tables are rebuilt from the records.
// Each record is checked by its own content only.
class NameFile {
  public:
    static constexpr std::uint32_t kNumbers = 0x4000;
    static constexpr std::size_t kLongest = 255;

    explicit NameFile(int fd);
    // Makes the file empty.
    static void Begin(int fd);

    // Indices are from 0 on; kNumbers means none.
    std::uint32_t Find(WideView name);
    // For a name that Find did not find; it has one use then. kNumbers when the table is full.
    std::uint32_t Insert(WideView name);
    std::uint32_t UsesOf(std::uint32_t index);
    void SetUses(std::uint32_t index, std::uint32_t uses);  // not 0
    void Remove(std::uint32_t index);
    WideString NameAt(std::uint32_t index);

  private:
    using Link = std::uint32_t;  // a record's index and one more; 0 for none
    struct Header {
        std::uint32_t magic;
        std::uint32_t changing;  // not 0 while links are changed
        std::uint32_t used;      // records from the first one on that were ever in use
        Link free;               // the first of those that are free again
    };
    struct RecordHead {
        std::uint32_t uses;  // 0: free
        Link next;           // in the bucket, or among the free ones
        std::uint32_t hash;
        std::uint32_t length;
    };
    struct Record {
        RecordHead head;
        std::array<char16_t, kLongest + 1> units;
    };
    struct Place {
        std::uint32_t index = kNumbers;
        Link before = 0;  // in the bucket; 0 when it is the first one
    };

    bool IsNamed(std::uint32_t index, const RecordHead& head) const;
    template <class Matches>
    Place Walk(std::uint32_t hash, const Matches& matches);
    void SetNext(std::uint32_t hash, Link before, Link next);
    Link TakeFree();
    void MakeAnew();

    Link BucketOf(std::uint32_t hash);
    RecordHead HeadAt(std::uint32_t index);
    Record RecordAt(std::uint32_t index);
    void WriteHead(std::uint32_t index, const RecordHead& head);
    void WriteHeader(std::uint32_t changing);
    void Read(off_t at, void* bytes, std::size_t size);
    void Write(off_t at, const void* bytes, std::size_t size);

    const int fd_;
    Header header_{};
};

}  // namespace host
