// Tells a process from the one that it was forked from.
//
// A child of fork must not use some state of its parent: a descriptor, a connection to a database,
// a lock. Such state keeps the fork count of the moment when it was made. A different count means
// that the state belongs to another process. Reading the count costs no system call.
#pragma once

namespace host {

// How many forks lie between this process and the first one that loaded the host.
unsigned ForkCount();

// Only for the handler of fork, in the child, before anything else of the host runs there.
void CountFork();

namespace detail {
// Needs no constructor and no destructor at run time. Written only while the process has one
// thread.
inline constinit unsigned fork_count = 0;
}  // namespace detail

inline unsigned ForkCount() {
    return detail::fork_count;
}
inline void CountFork() {
    ++detail::fork_count;
}

}  // namespace host
