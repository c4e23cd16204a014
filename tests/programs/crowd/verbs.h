// The verbs of the program `crowd`: processes that use the library beside each other, are stopped,
// killed and ended, and what must hold afterwards. Each takes its arguments without the verb and
// returns the exit status.
#pragma once

#include <string>
#include <vector>

namespace stress {

using TArguments = std::vector<std::string>;

int Write(const TArguments& arguments);         // write.cpp
int Texts(const TArguments& arguments);         // texts.cpp
int End(const TArguments& arguments);           // exit.cpp
int Check(const TArguments& arguments);         // check_linux.cpp
int KillLog(const TArguments& arguments);       // kill_log_linux.cpp
int KillRegistry(const TArguments& arguments);  // kill_registry_linux.cpp
int Hold(const TArguments& arguments);          // hold_linux.cpp
int Forks(const TArguments& arguments);         // forks_linux.cpp

}  // namespace stress
