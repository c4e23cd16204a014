// What happens around a fork, step by step.
//
// The child has one thread, the one that forked, and copies of all memory and descriptors. It must
// not wait for the parent's other threads, hold the parent's locks of files, or keep the parent's
// windows alive. docs/hosts.md has the promises to users. A unit with state of one process compares
// ForkCount (base/fork_count.h), or adds its step here.
#include <pthread.h>
#include <unistd.h>

#include <new>
#include <vector>

#include "base/fork_count.h"
#include "base/fork_lock.h"
#include "base/handles.h"
#include "base/owned_fds.h"
#include "windows/name_table.h"

namespace {

void InChild() {
    host::CountFork();
    try {
        const std::vector<int> inherited = host::TakeInheritedFds();
        host::HandlesEnterChild();
        host::NameTable::Atoms().EnterChild();
        host::NameTable::Messages().EnterChild();
        for (const int fd : inherited) close(fd);
    } catch (const std::bad_alloc&) {
        // Without memory the handles are refused from now on, and their descriptors stay open.
    }
    host::ReleaseAllLocksInChild();
}

// A program that is started needs none of this: the host uses posix_spawn or _Fork for these.
__attribute__((constructor)) void WatchForks() {
    pthread_atfork(host::TakeAllLocks, host::ReleaseAllLocks, InChild);
}

}  // namespace
