#include <qv_host.h>

#include <cerrno>
#include <cstdio>

#include "files.h"

namespace qv {

namespace {

std::string HostPath(const UnicodeString& name) {
    std::string path(QvHostPath(name.t_str(), nullptr, 0), '\0');
    path.resize(QvHostPath(name.t_str(), path.data(), static_cast<DWORD>(path.size())));
    return path;
}

}  // namespace

DWORD MoveInPlace(const UnicodeString& from, const UnicodeString& to) {
    if (std::rename(HostPath(from).c_str(), HostPath(to).c_str()) == 0) return NO_ERROR;
    return errno == ENOENT ? ERROR_PATH_NOT_FOUND : ERROR_ACCESS_DENIED;
}

}  // namespace qv
