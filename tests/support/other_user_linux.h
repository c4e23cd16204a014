// A part of a test as another user, in a process of its own.
#pragma once

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <vector>

namespace test {

/// Whether `holds` answers true for a process of that user in that group. Only root may ask.
template <class Question>
bool HoldsForUser(uid_t user, gid_t group, Question holds) {
    const pid_t child = fork();
    if (child == 0) {
        const bool changed = setgroups(1, &group) == 0 && setgid(group) == 0 && setuid(user) == 0;
        _exit(changed && holds() ? 0 : 1);
    }
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

}  // namespace test
