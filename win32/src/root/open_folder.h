// A folder whose entries are being listed.
#pragma once

#include <dirent.h>

#include <memory>

namespace host {

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

// The next entry, or null behind the last one; valid until the next call. One thread lists a
// folder.
inline const dirent* NextEntry(const OpenFolder& folder) {
    return readdir(folder.get());  // NOLINT(concurrency-mt-unsafe): the stream is this thread's own
}

}  // namespace host
