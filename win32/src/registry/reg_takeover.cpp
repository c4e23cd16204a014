#include "registry/reg_takeover.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "base/unique_fd.h"
#include "registry/reg_entries.h"
#include "registry/reg_store.h"

namespace host {

namespace {

constexpr off_t kMaxFileBytes = off_t{4} << 30;

std::string FileOf(const RegRoot& root) {
    const std::string& store = RegStore::Get().Path();
    return store.substr(0, store.rfind('/') + 1) + root.text_file;
}

}  // namespace

std::string ReadWholeFile(const std::string& path) {
    const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat info;
    if (!file || fstat(file.get(), &info) != 0) ThrowErrno(path);
    if (!S_ISREG(info.st_mode)) throw RegError{ERROR_CANTREAD, path + ": not a file"};
    if (info.st_size > kMaxFileBytes) throw RegError{ERROR_NOT_ENOUGH_MEMORY, path + ": too large"};
    std::string bytes(static_cast<std::size_t>(info.st_size), '\0');
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t got = read(file.get(), bytes.data() + done, bytes.size() - done);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) ThrowErrno(path);
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    bytes.resize(done);
    return bytes;
}

void TakeOverTextFiles() {
    for (const RegRoot& root : RegRoots()) {
        const std::string path = FileOf(root);
        if (access(path.c_str(), F_OK) != 0) continue;
        RegEntryRunner runner(FindRoot(root.handle));
        try {
            ReadRegText(ReadWholeFile(path), [&](const RegEntry& entry) { runner.Run(entry); });
        } catch (const RegTextError& error) {
            throw RegError{ERROR_BADDB, path + ", " + error.what()};
        }
    }
}

void SetTextFilesAside() {
    for (const RegRoot& root : RegRoots()) {
        const std::string path = FileOf(root);
        if (access(path.c_str(), F_OK) == 0) rename(path.c_str(), (path + kTakenOver).c_str());
    }
}

}  // namespace host
