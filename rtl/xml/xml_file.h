// What documents are loaded from and saved to.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "mox_classes/containers/streams.h"

// Reads as many bytes as the stream's size, from the current position. A stream that is not at its
// start throws "Stream read failed"; one above 2 GiB - 1 bytes throws "Out of range".
inline std::vector<unsigned char> ReadWhole(Classes::TStream& stream) {
    const std::int64_t size = stream.GetSize();
    if (size < 0 || size > std::numeric_limits<int>::max()) throw UnicodeString("Out of range");
    std::vector<unsigned char> bytes(static_cast<std::size_t>(size));
    stream.ReadBuffer(bytes.data(), static_cast<int>(size));
    return bytes;
}

// A file that takes less than what is written, for instance on a full disk, throws "Stream write
// failed". The writer alone would only return the number of bytes.
class TXmlFile : public Classes::TFileStream {
  public:
    explicit TXmlFile(const UnicodeString& name) : TFileStream(name, kCreate) {}
    int Write(const void* buffer, int count) override {
        const int done = TFileStream::Write(buffer, count);
        if (done != count) throw UnicodeString(TEXT("Stream write failed"));
        return done;
    }
};
