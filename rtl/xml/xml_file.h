// What documents are loaded from and saved to.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "mox_classes/containers/streams.h"

// As many bytes as the stream's size, from its current position: a stream that is not at its start
// throws "Stream read failed", one above 2 GiB - 1 bytes "Out of range".
inline std::vector<unsigned char> ReadWhole(Classes::TStream& stream) {
    const std::int64_t size = stream.GetSize();
    if (size < 0 || size > std::numeric_limits<int>::max()) throw UnicodeString("Out of range");
    std::vector<unsigned char> bytes(static_cast<std::size_t>(size));
    stream.ReadBuffer(bytes.data(), static_cast<int>(size));
    return bytes;
}

// The writer passes on how much a stream took; a file that takes less than all of it, on a full
// disk, must not go unnoticed: "Stream write failed" is thrown.
class TXmlFile : public Classes::TFileStream {
  public:
    explicit TXmlFile(const UnicodeString& name) : TFileStream(name, kCreate) {}
    int Write(const void* buffer, int count) override {
        const int done = TFileStream::Write(buffer, count);
        if (done != count) throw UnicodeString(TEXT("Stream write failed"));
        return done;
    }
};
