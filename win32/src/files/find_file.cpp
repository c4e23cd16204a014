// FindFirstFileW: the first entry of a folder, in the order of folded names, that matches.
#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/handles.h"
#include "base/os_error.h"
#include "files/file_object.h"
#include "root/host_path.h"
#include "root/open_folder.h"
#include "text/case_fold.h"

namespace host {

FILETIME FileTimeOf(const timespec& time) {
    constexpr std::int64_t kSecondsFrom1601 = 11'644'473'600;
    const std::int64_t units = (time.tv_sec + kSecondsFrom1601) * 10'000'000 + time.tv_nsec / 100;
    return {static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
}

FILETIME CreationTimeOf(const struct stat& info) {
    return FileTimeOf(
        std::min(info.st_ctim, info.st_mtim,
                 [](const timespec& a, const timespec& b) { return a.tv_sec < b.tv_sec; }));
}

namespace {

// A search ends with its first entry. The handle only waits for FindClose.
class SearchObject final : public HandleObject {
  public:
    static constexpr HandleKind kKind = HandleKind::kSearch;
    SearchObject() : HandleObject(kKind) {}
};

struct Found {
    std::u16string name;
    struct stat info = {};
};

// '*' matches any run of units, '?' matches one. The time is linear: only the last '*' is tried
// again.
bool Matches(std::u16string_view pattern, std::u16string_view name) {
    std::size_t p = 0, n = 0, star = pattern.size(), resume = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == u'*') {
            star = p++;
            resume = n;
        } else if (p < pattern.size() && (pattern[p] == u'?' || FoldFileNameUnit(pattern[p]) ==
                                                                    FoldFileNameUnit(name[n]))) {
            ++p, ++n;
        } else if (star != pattern.size()) {
            p = star + 1;
            n = ++resume;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(u'*', p) == std::u16string_view::npos;
}

bool Before(std::u16string_view a, std::u16string_view b) {
    return std::lexicographical_compare(
        a.begin(), a.end(), b.begin(), b.end(),
        [](char16_t x, char16_t y) { return FoldFileNameUnit(x) < FoldFileNameUnit(y); });
}

// An entry whose name is too long or not UTF-8 has no Windows name and is skipped.
DWORD FindIn(const std::string& folder, std::u16string_view pattern, Found& found) {
    const OpenFolder open(opendir(folder.c_str()));
    if (open == nullptr) return errno == ENOENT ? ERROR_PATH_NOT_FOUND : ErrorFromErrno(errno);
    std::u16string name;
    while (const dirent* const entry = NextEntry(open)) {
        if (!NameFromUtf8(entry->d_name, name) || name.size() >= MAX_PATH) continue;
        if (!Matches(pattern, name) || (!found.name.empty() && !Before(name, found.name))) continue;
        struct stat info;
        const int at = dirfd(open.get());
        if (fstatat(at, entry->d_name, &info, 0) != 0 &&
            fstatat(at, entry->d_name, &info, AT_SYMLINK_NOFOLLOW) != 0) {
            continue;
        }
        found = {name, info};
    }
    return found.name.empty() ? ERROR_FILE_NOT_FOUND : NO_ERROR;
}

DWORD FindPlain(const std::string& path, Found& found) {
    if (stat(path.c_str(), &found.info) != 0) return PathError(errno, path);
    const bool fits = NameFromUtf8(path.substr(path.rfind('/') + 1), found.name) &&
                      !found.name.empty() && found.name.size() < MAX_PATH;
    return fits ? NO_ERROR : ERROR_FILE_NOT_FOUND;
}

DWORD Find(LPCWSTR name, Found& found) {
    const std::u16string_view whole = name == nullptr ? std::u16string_view() : name;
    const std::size_t separator = whole.find_last_of(u"\\/");
    const std::size_t start = separator == std::u16string_view::npos ? 0 : separator + 1;
    const std::size_t drive = start == 0 && whole.size() > 1 && whole[1] == u':' ? 2 : start;
    std::u16string_view pattern = whole.substr(drive);
    if (pattern.empty() && !whole.empty()) return ERROR_FILE_NOT_FOUND;
    if (pattern.find_first_of(u"*?") == std::u16string_view::npos) {
        const HostPath target = ToHostPath(name);
        return target.error != NO_ERROR ? target.error : FindPlain(target.path, found);
    }
    std::u16string folder(whole.substr(0, drive));
    if (folder.empty()) folder = u".";
    const HostPath target = ToHostPath(folder.c_str());
    if (target.error != NO_ERROR) return target.error;
    if (pattern.find_first_of(u"<>:\"|") != std::u16string_view::npos) return ERROR_INVALID_NAME;
    return FindIn(target.path, pattern == u"*.*" ? u"*" : pattern, found);
}

void Fill(const Found& found, WIN32_FIND_DATAW& data) {
    data = {};
    data.dwFileAttributes = AttributesOf(found.info);
    data.ftCreationTime = CreationTimeOf(found.info);
    data.ftLastAccessTime = FileTimeOf(found.info.st_atim);
    data.ftLastWriteTime = FileTimeOf(found.info.st_mtim);
    if (!S_ISDIR(found.info.st_mode)) {
        data.nFileSizeHigh = static_cast<DWORD>(found.info.st_size >> 32);
        data.nFileSizeLow = static_cast<DWORD>(found.info.st_size);
    }
    std::memcpy(data.cFileName, found.name.data(), found.name.size() * sizeof(WCHAR));
}

}  // namespace
}  // namespace host

HANDLE FindFirstFileW(LPCWSTR name, LPWIN32_FIND_DATAW data) {
    host::Found found;
    const DWORD error = data == nullptr ? ERROR_INVALID_PARAMETER : host::Find(name, found);
    if (error != NO_ERROR) {
        SetLastError(error);
        return INVALID_HANDLE_VALUE;
    }
    const HANDLE search = host::OpenHandle(std::make_unique<host::SearchObject>());
    if (search == nullptr) return INVALID_HANDLE_VALUE;
    host::Fill(found, *data);
    return search;
}

BOOL FindClose(HANDLE search) {
    const host::HandlePin<host::SearchObject> object(search);
    return object && host::CloseOpenHandle(search);
}
