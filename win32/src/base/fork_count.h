// Tells a process from the one that it was forked from.
//
// State that a child of fork must not use (a descriptor, a connection to a database, a lock) keeps
// the number that was in force when it was made. When the number has changed, it is another
// process's. Reading the number costs no system call.
#pragma once

namespace host {

// How many forks lie between this process and the first one that loaded the host.
unsigned ForkCount();

// Only for the handler of fork, in the child, before anything else of the host runs there.
void CountFork();

namespace detail {
// Has no constructor that runs and no destructor. Written only while the process has one thread.
inline constinit unsigned fork_count = 0;
}  // namespace detail

inline unsigned ForkCount() {
    return detail::fork_count;
}
inline void CountFork() {
    ++detail::fork_count;
}

}  // namespace host
