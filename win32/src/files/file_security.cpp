// What the user may do with a file. The security descriptor of a file holds the rights that the
// kernel gives to the user who asks: modes, access lists, capabilities and read-only file systems
// all count. An access check compares with these rights.
#include <windows.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "base/os_error.h"
#include "root/host_path.h"
#include "security/token.h"

using namespace host;

namespace {

constexpr DWORD kGenericRights = GENERIC_READ | GENERIC_WRITE | GENERIC_EXECUTE | GENERIC_ALL;
constexpr DWORD kFileSecurity =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;

struct FileRights {
    BYTE revision = 1;
    BYTE unused = 0;
    WORD mark = kMark;
    uid_t user = 0;
    ACCESS_MASK rights = 0;

    static constexpr WORD kMark = 0x5146;
};

bool Allows(const std::string& path, int mode) {
    return faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0;
}

// The right to delete a file is a right to its folder. In a sticky folder only the owners have it.
bool MayRemove(const std::string& path, const struct stat& file) {
    const std::size_t end = path.find_last_of('/');
    const std::string folder = end == std::string::npos ? "." : path.substr(0, end + 1);
    struct stat info;
    if (!Allows(folder, W_OK | X_OK) || stat(folder.c_str(), &info) != 0) return false;
    const uid_t user = geteuid();
    return (info.st_mode & S_ISVTX) == 0 || user == 0 || user == file.st_uid || user == info.st_uid;
}

ACCESS_MASK RightsTo(const std::string& path, const struct stat& info) {
    ACCESS_MASK rights = FILE_READ_ATTRIBUTES | READ_CONTROL | SYNCHRONIZE;
    if (Allows(path, R_OK)) rights |= FILE_GENERIC_READ;
    if (Allows(path, W_OK)) rights |= FILE_GENERIC_WRITE | FILE_DELETE_CHILD;
    if (Allows(path, X_OK)) rights |= FILE_GENERIC_EXECUTE;
    if (MayRemove(path, info)) rights |= DELETE;
    if (geteuid() == 0) rights |= WRITE_DAC | WRITE_OWNER;
    if (geteuid() == info.st_uid) rights |= WRITE_DAC;
    return rights;
}

// The rights that the descriptor gives to the token's user. False when it is no descriptor of a
// file.
bool Read(PSECURITY_DESCRIPTOR descriptor, const Token& token, ACCESS_MASK& rights) {
    FileRights content;
    std::memcpy(&content, descriptor, sizeof content);
    if (content.revision != 1 || content.mark != FileRights::kMark) return false;
    rights = content.user == token.User() ? content.rights : 0;
    return true;
}

// NO_ERROR when a check accepts the token, else the code with which it refuses.
DWORD TokenError(const Token& token) {
    if (token.Level() == kPrimaryToken) return ERROR_NO_IMPERSONATION_TOKEN;
    if (token.Level() < SecurityIdentification) return ERROR_BAD_IMPERSONATION_LEVEL;
    return token.May(TOKEN_QUERY) ? DWORD{NO_ERROR} : DWORD{ERROR_ACCESS_DENIED};
}

}  // namespace

BOOL GetFileSecurityW(LPCWSTR name, SECURITY_INFORMATION wanted, PSECURITY_DESCRIPTOR descriptor,
                      DWORD bytes, LPDWORD needed) {
    if (needed == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    if ((wanted & ~kFileSecurity) != 0) return Fail(ERROR_NOT_SUPPORTED);
    const HostPath target = ToHostPath(name);
    struct stat info;
    if (target.error != NO_ERROR) return Fail(target.error);
    if (stat(target.path.c_str(), &info) != 0) return Fail(PathError(errno, target.path));
    *needed = sizeof(FileRights);
    if (descriptor == nullptr || bytes < sizeof(FileRights)) return Fail(ERROR_INSUFFICIENT_BUFFER);
    FileRights content;
    content.user = geteuid();
    content.rights = RightsTo(target.path, info);
    std::memcpy(descriptor, &content, sizeof content);
    return TRUE;
}

void MapGenericMask(PDWORD access, PGENERIC_MAPPING mapping) {
    DWORD mapped = *access & ~kGenericRights;
    if ((*access & GENERIC_READ) != 0) mapped |= mapping->GenericRead;
    if ((*access & GENERIC_WRITE) != 0) mapped |= mapping->GenericWrite;
    if ((*access & GENERIC_EXECUTE) != 0) mapped |= mapping->GenericExecute;
    if ((*access & GENERIC_ALL) != 0) mapped |= mapping->GenericAll;
    *access = mapped;
}

BOOL AccessCheck(PSECURITY_DESCRIPTOR descriptor, HANDLE handle, DWORD desired,
                 PGENERIC_MAPPING mapping, PPRIVILEGE_SET privileges, LPDWORD bytes,
                 LPDWORD granted, LPBOOL status) {
    if (descriptor == nullptr || mapping == nullptr || privileges == nullptr || bytes == nullptr ||
        granted == nullptr || status == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const HandlePin<Token> token(handle);
    if (!token) return FALSE;
    if (const DWORD error = TokenError(*token)) return Fail(error);
    if ((desired & kGenericRights) != 0) return Fail(ERROR_GENERIC_NOT_MAPPED);
    ACCESS_MASK rights = 0;
    if (!Read(descriptor, *token, rights)) return Fail(ERROR_INVALID_SECURITY_DESCR);
    const bool fits = *bytes >= sizeof(PRIVILEGE_SET);
    *bytes = sizeof(PRIVILEGE_SET);
    if (!fits) return Fail(ERROR_INSUFFICIENT_BUFFER);
    *privileges = {};

    // MAXIMUM_ALLOWED grants all rights that there are; otherwise exactly the desired rights are
    // granted.
    const bool everything = (desired & MAXIMUM_ALLOWED) != 0;
    const DWORD asked = desired & ~DWORD{MAXIMUM_ALLOWED};
    *status = (asked & ~rights) == 0 && (everything ? rights : asked) != 0;
    *granted = !*status ? 0 : everything ? rights : asked;
    if (!*status) SetLastError(ERROR_ACCESS_DENIED);
    return TRUE;
}
