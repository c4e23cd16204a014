// A token: a snapshot of the user that the process acts for.
#pragma once

#include <windows.h>

#include <sys/types.h>

#include "base/handles.h"

namespace host {

// The level of a token of the process: no thread impersonates with it.
inline constexpr int kPrimaryToken = -1;

// Does not change after its construction. Any thread.
class Token : public HandleObject {
  public:
    static constexpr HandleKind kKind = HandleKind::kToken;
    // `access`: TOKEN_... rights. `level`: a SECURITY_IMPERSONATION_LEVEL or kPrimaryToken.
    Token(DWORD access, int level);
    // Whether the token was opened with all these rights.
    bool May(DWORD access) const { return (access_ & access) == access; }
    int Level() const { return level_; }
    uid_t User() const { return user_; }
    bool IsAdministrator() const { return is_administrator_; }

  private:
    const DWORD access_;
    const int level_;
    const uid_t user_;
    const bool is_administrator_;
};

}  // namespace host
