// Numbers for names, 0xC000 to 0xFFFF: the atoms, and the registered messages.
//
// A table belongs to the session: the processes of one host root that use it at the same time. It
// is a file of run/names of which each of them holds a read lock, so that a killed process lets go
// as well. The names end with the last of them; who comes first afterwards finds an empty table.
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

    // Joins the session without a name: others may send one.
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
