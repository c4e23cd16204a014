#include "root/host_path.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <memory>
#include <mutex>
#include <vector>

#include "base/fork_lock.h"
#include "base/os_error.h"
#include "root/host_root.h"
#include "root/open_folder.h"
#include "text/case_fold.h"
#include "text/host_text.h"
#include "text/utf8.h"

namespace host {
namespace {

constexpr char kDriveFolder[] = "/drive_c";

bool IsSeparator(char16_t unit) {
    return unit == u'\\' || unit == u'/';
}

bool IsDriveLetter(char16_t unit) {
    return (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z');
}

// Characters that no part of a Windows name may hold. A colon behind the drive would name a stream
// of the file; this host has none.
bool IsForbidden(char16_t unit) {
    return unit < 32 || std::u16string_view(u"<>:\"|?*").find(unit) != std::u16string_view::npos;
}

std::string DriveC() {
    return HostRoot() + kDriveFolder;
}

// Where a name starts: the folder that ".." does not leave, and the parts below it.
struct Base {
    std::string root;
    std::vector<std::string> parts;
};

void AddParts(std::string_view path, std::vector<std::string>& parts) {
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        if (end > 0) parts.emplace_back(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
}

// The part of `path` below `root`, or null when it is not below.
const char* Below(const std::string& path, const std::string& root) {
    if (path.compare(0, root.size(), root) != 0) return nullptr;
    const char next = path[root.size()];
    return next == '\0' || next == '/' ? path.c_str() + root.size() : nullptr;
}

std::string CurrentFolder() {
    char buffer[PATH_MAX];
    const char* const folder = getcwd(buffer, sizeof buffer);
    return folder == nullptr ? "/" : folder;
}

// The folder of drive C without symbolic links, so that it can be compared with paths that the
// system gives. Looked for once: a link that is laid while this process runs does not count for it.
std::string ResolvedDriveC() {
    static constinit ForkLock lock;
    static HostRootKey& root = *new HostRootKey;
    static std::string& resolved = *new std::string;
    const std::lock_guard guard(lock);
    if (root.StillHolds() && !resolved.empty()) return resolved;
    char buffer[PATH_MAX];
    const std::string drive = DriveC();
    const bool is_there = realpath(drive.c_str(), buffer) != nullptr;
    resolved = is_there ? buffer : "";
    return is_there ? resolved : drive;
}

Base CurrentBase() {
    const std::string folder = CurrentFolder();
    Base base{DriveC(), {}};
    const char* rest = Below(folder, ResolvedDriveC());
    if (rest == nullptr) {
        base.root.clear();
        rest = folder.c_str();
    }
    AddParts(rest, base.parts);
    return base;
}

// Takes the drive off the front of `name`, when there is one, and sets the base.
DWORD TakeBase(std::u16string_view& name, Base& base) {
    if (name.starts_with(u"\\\\?\\")) name.remove_prefix(4);
    if (name.starts_with(u"\\\\")) return ERROR_PATH_NOT_FOUND;
    if (name.size() < 2 || name[1] != u':' || !IsDriveLetter(name[0])) {
        base = CurrentBase();
        if (IsSeparator(name[0])) base.parts.clear();
        return NO_ERROR;
    }
    const bool is_c = name[0] == u'C' || name[0] == u'c';
    if (!is_c && name[0] != u'Z' && name[0] != u'z') return ERROR_PATH_NOT_FOUND;
    name.remove_prefix(2);
    base = Base{is_c ? DriveC() : std::string(), {}};
    if (name.empty() || !IsSeparator(name[0])) {
        Base current = CurrentBase();
        if (current.root == base.root) base = std::move(current);
    }
    return NO_ERROR;
}

DWORD AddComponent(std::u16string_view text, bool is_last, std::vector<std::string>& parts) {
    if (text.empty() || text == u".") return NO_ERROR;
    if (text == u"..") {
        if (!parts.empty()) parts.pop_back();
        return NO_ERROR;
    }
    while (is_last && !text.empty() && (text.back() == u'.' || text.back() == u' ')) {
        text.remove_suffix(1);
    }
    if (text.empty()) return NO_ERROR;
    for (const char16_t unit : text) {
        if (IsForbidden(unit)) return ERROR_INVALID_NAME;
    }
    return NameToUtf8(text, parts.emplace_back()) ? NO_ERROR : ERROR_INVALID_NAME;
}

DWORD AddName(std::u16string_view name, std::vector<std::string>& parts) {
    while (!name.empty()) {
        std::size_t end = 0;
        while (end < name.size() && !IsSeparator(name[end])) ++end;
        const DWORD error = AddComponent(name.substr(0, end), end == name.size(), parts);
        if (error != NO_ERROR) return error;
        name.remove_prefix(std::min(end + 1, name.size()));
    }
    return NO_ERROR;
}

bool Exists(const std::string& path) {
    struct stat info;
    return lstat(path.c_str(), &info) == 0;
}

// The entry of `folder` that differs from `name` in case only; `name` when there is none.
std::string FindIgnoringCase(const std::string& folder, const std::string& name) {
    const OpenFolder open(opendir(folder.empty() ? "/" : folder.c_str()));
    std::u16string wanted, entry_name;
    if (open == nullptr || !NameFromUtf8(name, wanted)) return name;
    while (const dirent* const entry = NextEntry(open)) {
        if (NameFromUtf8(entry->d_name, entry_name) && SameFileName(entry_name, wanted)) {
            return entry->d_name;
        }
    }
    return name;
}

// How many of the parts are there as they are spelled. Asked from the end, since nearly always all
// of them are, or all but the last one.
std::size_t CountThere(const std::string& root, const std::vector<std::string>& parts) {
    std::string path = root;
    for (const std::string& part : parts) path += '/' + part;
    std::size_t count = parts.size();
    for (; count > 0 && !Exists(path); --count) path.resize(path.rfind('/'));
    return count;
}

// The path of the parts, of which the first `there` are as they are spelled and the next one is
// not.
std::string Locate(const std::string& root, const std::vector<std::string>& parts,
                   std::size_t there) {
    std::string path = root;
    bool is_there = true;  // nothing is below a folder that is missing
    for (std::size_t i = 0; i < parts.size(); ++i) {
        std::string next = path + '/' + parts[i];
        if (is_there && i >= there && (i == there || !Exists(next))) {
            const std::string found = FindIgnoringCase(path, parts[i]);
            is_there = found != parts[i];
            next.replace(path.size() + 1, std::string::npos, found);
        }
        path = std::move(next);
    }
    return path.empty() ? "/" : path;
}

// On Windows the root of a drive always exists, so it is made here.
DWORD MakeDriveC() {
    const std::string drive = DriveC();
    int error = 0;
    for (std::size_t end = drive.find('/', 1);; end = drive.find('/', end + 1)) {
        const bool made = mkdir(drive.substr(0, end).c_str(), 0700) == 0 || errno == EEXIST;
        if (!made && errno != ENOENT) error = errno;
        if (end != std::string::npos) continue;
        return made ? DWORD{NO_ERROR} : ErrorFromErrno(error == 0 ? ENOENT : error);
    }
}

DWORD SplitNative(std::u16string_view name, std::vector<std::string>& parts) {
    std::string path;
    if (!NameToUtf8(name, path)) return ERROR_INVALID_NAME;
    for (char& byte : path) {
        if (byte == '\\') byte = '/';
    }
    AddParts(path, parts);
    return NO_ERROR;
}

}  // namespace

HostPath ToHostPath(LPCWSTR text) {
    HostPath result;
    std::u16string_view name = text == nullptr ? std::u16string_view() : text;
    if (name.empty()) {
        result.error = ERROR_PATH_NOT_FOUND;
        return result;
    }
    result.ends_in_separator = IsSeparator(name.back());
    Base base;
    if (name.front() == u'/') {
        result.error = SplitNative(name, base.parts);
    } else {
        result.error = TakeBase(name, base);
        if (result.error == NO_ERROR) result.error = AddName(name, base.parts);
    }
    if (result.error != NO_ERROR) return result;
    result.is_drive_root = base.parts.empty();
    const std::size_t there = CountThere(base.root, base.parts);
    if (there == 0 && !base.root.empty() && !Exists(base.root)) result.error = MakeDriveC();
    if (result.error == NO_ERROR) result.path = Locate(base.root, base.parts, there);
    return result;
}

std::u16string FromHostPath(std::string_view path) {
    const std::string whole(path);
    const char* rest = Below(whole, DriveC());
    if (rest == nullptr) rest = Below(whole, ResolvedDriveC());
    std::u16string name = rest == nullptr ? u"Z:" : u"C:";
    if (rest == nullptr) rest = whole == "/" ? "" : whole.c_str();
    name += FromUtf8(rest);
    for (char16_t& unit : name) {
        if (unit == u'/') unit = u'\\';
    }
    return name.size() == 2 ? name + u'\\' : name;
}

bool NameToUtf8(std::u16string_view name, std::string& utf8) {
    utf8.resize(name.size() * 3);
    const Conversion done = WideToUtf8(name, utf8.data(), utf8.size(), true);
    utf8.resize(done.error == NO_ERROR ? done.length : 0);
    return done.error == NO_ERROR;
}

bool NameFromUtf8(std::string_view utf8, std::u16string& name) {
    name.resize(utf8.size());
    const Conversion done = Utf8ToWide(utf8, name.data(), name.size(), true);
    name.resize(done.error == NO_ERROR ? done.length : 0);
    return done.error == NO_ERROR;
}

DWORD PathError(int code, const std::string& path) {
    if (code != ENOENT) return ErrorFromErrno(code);
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    struct stat info;
    const bool there = stat(folder.empty() ? "." : folder.c_str(), &info) == 0;
    return there && S_ISDIR(info.st_mode) ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
}

}  // namespace host
