// The file that a document is saved to.
#pragma once

#include "mox_classes/streams.h"

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
