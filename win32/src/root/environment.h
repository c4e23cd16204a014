// The environment as the host layer itself reads it.
#pragma once

#include <string>

namespace host {

// The value of a variable, or an empty text when it is not set. Any thread, also while another one
// sets variables.
std::string EnvironmentText(const char* name);

}  // namespace host
