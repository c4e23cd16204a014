#include "os_xp/file_access.h"

#include <vector>

#include "os_xp/thread_token.h"

namespace {

constexpr SECURITY_INFORMATION kFileSecurity =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;

// The error code of the call that has just failed; never 0, because 0 means success.
LONG FailureCode() {
    const DWORD code = GetLastError();
    return static_cast<LONG>(code == NO_ERROR ? DWORD{ERROR_GEN_FAILURE} : code);
}

// Lets the thread impersonate its own user while it lives.
class TSelfImpersonation {
  public:
    TSelfImpersonation() : active_(ImpersonateSelf(SecurityImpersonation) != FALSE) {}
    TSelfImpersonation(const TSelfImpersonation&) = delete;
    TSelfImpersonation& operator=(const TSelfImpersonation&) = delete;
    ~TSelfImpersonation() {
        if (active_) RevertToSelf();
    }
    explicit operator bool() const { return active_; }

  private:
    const bool active_;
};

// Reads the security descriptor of a file. Empty, with the reason in the last error, when it cannot
// be read.
std::vector<BYTE> SecurityOf(const UnicodeString& file) {
    DWORD size = 0;
    GetFileSecurityW(file.t_str(), kFileSecurity, nullptr, 0, &size);
    std::vector<BYTE> descriptor(size);
    if (size != 0 &&
        !GetFileSecurityW(file.t_str(), kFileSecurity, descriptor.data(), size, &size)) {
        descriptor.clear();
    }
    return descriptor;
}

LONG Check(std::vector<BYTE>& descriptor, HANDLE token, DWORD desired, DWORD& granted_access) {
    GENERIC_MAPPING mapping = {FILE_GENERIC_READ, FILE_GENERIC_WRITE, FILE_GENERIC_EXECUTE,
                               FILE_ALL_ACCESS};
    MapGenericMask(&desired, &mapping);
    PRIVILEGE_SET privileges{};
    DWORD bytes = sizeof(privileges);
    DWORD granted = 0;
    BOOL status = FALSE;
    if (!AccessCheck(descriptor.data(), token, desired, &mapping, &privileges, &bytes, &granted,
                     &status)) {
        return FailureCode();
    }
    granted_access = granted;
    return NO_ERROR;
}

}  // namespace

LONG CheckFileAccess(const UnicodeString& fileName, DWORD& grantedAccess, DWORD desiredAccess) {
    const TSelfImpersonation impersonation;
    if (!impersonation) return NO_ERROR;
    const System::TKernelHandle token = os_xp::OpenThreadOrProcessToken(TOKEN_ALL_ACCESS);
    if (!token) return FailureCode();
    std::vector<BYTE> descriptor = SecurityOf(fileName);
    if (descriptor.empty()) return FailureCode();
    return Check(descriptor, token.Get(), desiredAccess, grantedAccess);
}
