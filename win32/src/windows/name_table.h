// Numbers for names, 0xC000 to 0xFFFF: the atoms, and the registered messages.
//
// A table belongs to the session: the processes of one host root that use it at the same time. It
// is a file in run/names, and each process holds a read lock on it; the lock ends with a killed
// process too. The names end with the last process. The next process begins with an empty table.
// All calls take the same time, however many names there are.
#pragma once

#include <windows.h>

#include "base/fork_lock.h"
#include "base/unique_fd.h"
#include "root/host_root.h"
#include "text/host_text.h"
#include "windows/name_file.h"

namespace host {

constexpr ATOM kFirstNamed = 0xC000;
constexpr std::size_t kLongestAtomName = NameFile::kLongest;

// Names compare without case; the first spelling is kept. Any thread. The results are Win32 codes;
// ERROR_BUSY when another process keeps the table for five seconds.
class NameTable {
  public:
    static NameTable& Atoms();
    static NameTable& Messages();

    // Joins the session without a name of its own, because others may send one.
    DWORD Join();
    // In the handler of fork: the child takes over the parent's place in the session.
    void EnterChild();

    // Gives `name` (1 to 255 units) a number when it has none, and counts one use more.
    // ERROR_NOT_ENOUGH_MEMORY when all numbers are taken.
    DWORD Add(WideView name, ATOM& number);
    // Takes one use back; the name ends with the last one. ERROR_INVALID_HANDLE for a number
    // without a name.
    DWORD Release(ATOM number);
    DWORD NameOf(ATOM number, WideString& name);

  private:
    explicit NameTable(const char* file) : file_(file) {}
    template <class Operation>
    DWORD Run(const Operation& operation);
    DWORD Open();

    const char* const file_;
    ForkLock lock_;  // guards what follows, and the file between the threads
    UniqueFd fd_;
    HostRootKey root_;
};

}  // namespace host
