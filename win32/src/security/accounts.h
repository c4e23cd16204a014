// The accounts of this host: who the process acts for.
#pragma once

#include <sys/types.h>

#include <string>

namespace host {

// The name of a user; its number as text when the host has no name for it.
std::string NameOfUser(uid_t user);

// Whether the process acts as root or is in one of the groups root, sudo, admin, wheel.
bool IsAdministrator();

}  // namespace host
