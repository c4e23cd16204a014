// What differs between the tool's hosts: host_linux.cpp and host_windows.cpp each hold all of it.
#pragma once

#include <windows.h>

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "mox_classes/text/unicode_string.h"

#ifdef _WIN32
#define QV_PROGRAM_EXPORT __declspec(dllexport)
#else
#define QV_PROGRAM_EXPORT __attribute__((visibility("default")))
#endif

namespace qv {

enum class Stream { kInput, kOutput, kError };
// Whether the stream is a terminal.
bool IsTerminal(Stream stream);

// Whether the last failed write to standard output failed because nobody reads it.
bool OutputHasNoReader();

// The first arguments behind the program's name, for code that runs before main. Needs no object of
// the program and no memory. The words end with the object.
class EarlyArguments {
  public:
    EarlyArguments();
    EarlyArguments(const EarlyArguments&) = delete;
    EarlyArguments& operator=(const EarlyArguments&) = delete;
    std::span<const std::string_view> Words() const { return {words_.data(), count_}; }

  private:
    static constexpr std::size_t kBytes = 4096;
    void Add(std::string_view word) {
        if (count_ < words_.size()) words_[count_++] = word;
    }

    std::array<char, kBytes> text_;
    std::array<std::string_view, 64> words_;
    std::size_t count_ = 0;
};

// The program's arguments in UTF-8, and the streams made ready for bytes.
std::vector<std::string> PrepareConsole(int argc, char** argv);

// The command line that this process was started with, the program first; UTF-8.
std::vector<std::string> CommandWords();

// Catches requests to end the program (Ctrl-C and the like) while an object lives, so that the
// program can end between two steps. A second request ends it at once. One object at a time.
class StopRequest {
  public:
    StopRequest();
    ~StopRequest();
    StopRequest(const StopRequest&) = delete;
    StopRequest& operator=(const StopRequest&) = delete;
    bool IsMade() const;
};

// Writes the open file through to the disk. Returns 0 or the Win32 error code.
DWORD FlushToDisk(const UnicodeString& name, HANDLE file);

// Renames the file `from` to `to` in one step and replaces a file of that name. Returns 0 or the
// Win32 error code.
DWORD MoveInPlace(const UnicodeString& from, const UnicodeString& to);

// The processes that hold a lock at the start of the file, as "4711 (name)", as far as this user
// may know; or where else to look.
std::string LockHolders(const UnicodeString& file);

// Seconds that local time is ahead of UTC at a moment, in seconds since 1970.
std::int64_t LocalOffset(std::int64_t utc);

struct HostFacts {
    std::string library;  // file of the library that is loaded
    std::string machine;
    std::string root;  // the folder that stands in for a Windows machine; empty on Windows
};
HostFacts GetHostFacts();

// What stands in for the registry, read from its first to its last byte; all empty on Windows.
struct RegistryState {
    std::string damage;                  // empty when it is whole
    std::vector<std::string> old_files;  // of an earlier version, which mean nothing now
};
RegistryState ExamineRegistryStore();

// What the program changes in the registry while the object lives is one change there: all of it or
// nothing, whatever becomes of the program, at the cost of one. Who else wants to change something
// waits meanwhile. Taken back unless it is kept. On Windows every change stands by itself.
class ChangeGroup {
  public:
    ChangeGroup();
    ~ChangeGroup();
    ChangeGroup(const ChangeGroup&) = delete;
    ChangeGroup& operator=(const ChangeGroup&) = delete;
    // Returns the Win32 error code, 0 when it is done.
    DWORD Keep();

  private:
    bool is_open_ = true;
};

// What the host has to say of the call on the registry that failed last; empty when it has nothing.
std::string HostProblem();

// The folder for the user's own data of this program, which may not exist yet; UTF-8. Throws
// Failure (kCannotOpen) when it is not known.
std::string UserDataFolder();

}  // namespace qv
