// The system calls below the host layer that can fail: files, folders, sockets, memory, programs.
#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "faults/fault_call.h"

using namespace faults;
constexpr Answer Errno = Answer::Errno;
constexpr Answer NullErrno = Answer::NullErrno;
constexpr Answer Status = Answer::Status;

namespace {
constexpr Kind kKind = Kind::System;
}

// Files
QV_TRANSFERS(3, read, Errno, EIO, EINTR, kHalf, kOneByte, kNothing)
QV_TRANSFERS(4, pread, Errno, EIO, EINTR, kHalf, kNothing)
QV_TRANSFERS(3, write, Errno, ENOSPC, EIO, EINTR, kHalf, kOneByte)
QV_TRANSFERS(4, pwrite, Errno, ENOSPC, EIO, EINTR, kHalf)
QV_RELEASES(1, close, Errno, EIO)
QV_FAILS(3, lseek, Errno, EINVAL)
QV_FAILS(1, fsync, Errno, EIO, ENOSPC)
QV_FAILS(2, ftruncate, Errno, ENOSPC, EIO)
QV_FAILS(3, posix_fallocate, Status, ENOSPC)
QV_FAILS(2, flock, Errno, ENOLCK, EINTR)
QV_FAILS(2, rename, Errno, ENOSPC, EACCES, EIO)
QV_FAILS(4, renameat, Errno, ENOSPC, EACCES)
QV_FAILS(1, unlink, Errno, EACCES)
QV_FAILS(3, unlinkat, Errno, EACCES)
QV_FAILS(2, stat, Errno, EACCES, ENOENT, EIO)
QV_FAILS(2, lstat, Errno, EACCES, ENOENT)
QV_FAILS(2, fstat, Errno, EIO)
QV_FAILS(4, fstatat, Errno, EACCES, ENOENT)
QV_FAILS(2, access, Errno, EACCES)
QV_FAILS(4, faccessat, Errno, EACCES)

// Folders
QV_FAILS(2, mkdir, Errno, ENOSPC, EACCES)
QV_FAILS(1, opendir, NullErrno, EMFILE, EACCES)
QV_FAILS(1, fdopendir, NullErrno, ENOMEM)
QV_FAILS(1, readdir, NullErrno, EIO)
QV_FAILS(2, getcwd, NullErrno, ENOENT)
QV_FAILS(2, realpath, NullErrno, ENOENT)

// Memory
QV_FAILS(6, mmap, Errno, ENOMEM, EACCES)
QV_FAILS(3, shm_open, Errno, EMFILE, EACCES)
QV_FAILS(2, memfd_create, Errno, EMFILE)

// Sockets and programs
QV_FAILS(3, socket, Errno, EMFILE)
QV_FAILS(3, connect, Errno, ECONNREFUSED, EAGAIN)
QV_FAILS(4, send, Errno, EPIPE, EAGAIN)
QV_FAILS(4, recv, Errno, ECONNRESET)
QV_FAILS(3, sendmsg, Errno, EPIPE, EAGAIN)
QV_FAILS(3, recvmsg, Errno, ECONNRESET)
QV_FAILS(3, poll, Errno, ENOMEM, EINTR)
QV_FAILS(2, pipe2, Errno, EMFILE)
QV_FAILS(6, posix_spawnp, Status, ENOMEM, EACCES)

// Variable parameters
extern "C" int open(const char* path, int flags, ...) {
    QV_SITE(open, Errno, false, EMFILE, EACCES, ENOSPC, EINTR);
    std::va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return Call(site, [&] { return next(path, flags, mode); });
}

extern "C" int openat(int folder, const char* path, int flags, ...) {
    QV_SITE(openat, Errno, false, EMFILE, EACCES, ENOSPC);
    std::va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return Call(site, [&] { return next(folder, path, flags, mode); });
}

// Giving a lock back does its work, even when it reports a failure.
extern "C" int fcntl(int file, int command, ...) {
    static constexpr int kCodes[] = {ENOLCK, EACCES, EAGAIN};
    static constinit Site lock{"fcntl", kKind, Errno, kCodes};
    static constinit Site unlock{"fcntl, unlocking", kKind, Errno, kCodes, true};
    static const auto next = Next<decltype(::fcntl)>("fcntl");
    std::va_list rest;
    va_start(rest, command);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    const bool locks = command == F_SETLK || command == F_OFD_SETLK;
    const bool unlocks = locks && static_cast<const struct flock*>(argument)->l_type == F_UNLCK;
    return Call(unlocks ? unlock : lock, [&] { return next(file, command, argument); });
}
