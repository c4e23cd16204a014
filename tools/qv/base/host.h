// Everything that differs between Linux and Windows. host_linux.cpp and host_windows.cpp implement
// it.
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

// True when the last write to standard output failed because the reader has closed the pipe.
bool OutputHasNoReader();

// The first arguments behind the program's name, for code that runs before main. Needs no global
// object and no heap. The words are valid while the object lives.
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

// Returns the program's arguments in UTF-8, and switches the standard streams to bytes.
std::vector<std::string> PrepareConsole(int argc, char** argv);

// The files that a name with * or ? in its last part stands for, in the order of their names; the
// name itself when there is none, and where the shell has done that already.
std::vector<std::string> FilesNamed(const std::string& name);

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

enum class FileKind { kNone, kFile, kFolder, kStream };  // a stream: a pipe or a device
struct FilePlace {
    FileKind kind = FileKind::kNone;
    UnicodeString name;  // of a file: without the links that led to it
};
FilePlace FindFile(const UnicodeString& name);

// Gives the file the owner and the permissions of the file `model`, as far as this user may. Does
// nothing on Windows, where a file has those of its folder.
void TakeAccess(const UnicodeString& file, const UnicodeString& model);

// Renames the file `from` to `to`, in the same folder, in one step that is on the disk afterwards.
// A file of that name is replaced, or refused with ERROR_FILE_EXISTS or ERROR_ALREADY_EXISTS.
// Returns 0 or the Win32 error code.
DWORD MoveInPlace(const UnicodeString& from, const UnicodeString& to, bool replace);

// The processes that hold a lock at the start of the file, as "4711 (name)", as far as the system
// tells this user. Otherwise a text that says where to look.
std::string LockHolders(const UnicodeString& file);

// The seconds by which local time is ahead of UTC at the time `utc` (seconds since 1970).
std::int64_t LocalOffset(std::int64_t utc);

struct HostFacts {
    std::string library;  // file of the library that is loaded
    std::string machine;
    std::string root;  // the folder that stands in for a Windows machine; empty on Windows
};
HostFacts GetHostFacts();

// The state of the registry's file, which is read completely. All empty on Windows.
struct RegistryState {
    std::string damage;                  // empty when the file is sound
    std::vector<std::string> old_files;  // files of an earlier version that are no longer used
};
RegistryState ExamineRegistryStore();

// Groups all registry changes while the object lives into one transaction: all of them happen or
// none, even when the program is killed, and they cost as much as one. Other writers wait
// meanwhile. The destructor rolls back unless Keep was called. On Windows every change is its own.
class ChangeGroup {
  public:
    ChangeGroup();
    ~ChangeGroup();
    ChangeGroup(const ChangeGroup&) = delete;
    ChangeGroup& operator=(const ChangeGroup&) = delete;
    // Commits. Returns 0 or the Win32 error code.
    DWORD Keep();

  private:
    bool is_open_ = true;
};

// Details about the registry call that failed last, or an empty text.
std::string HostProblem();

// The folder for this program's data of the user, in UTF-8. It may not exist yet. Throws Failure
// (kCannotOpen) when the folder is not known.
std::string UserDataFolder();

}  // namespace qv
