// One registry root and its file, registry/NAME.reg under the host root.
//
// The file is the truth: it is reread when it changed, and every change is made under a lock that
// all processes share, on the file's current state, and replaces the file by a rename. So a reader
// sees the old state or the new one, never a mixture, and needs no lock. Whether it changed is one
// `stat` per call: the read version's file stays open, so that its inode number cannot come back
// with another content, however little time lies between two replacements; an edit in place shows
// by size and times.
//
// All members are guarded by RegistryMutex().
#pragma once

#include <sys/stat.h>
#include <windows.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "base/call_ref.h"
#include "base/unique_fd.h"
#include "registry/reg_tree.h"
#include "root/host_root.h"

namespace host {

// Guards everything of the registry within the process.
std::mutex& RegistryMutex();

// What the handles of one opened key share with its hive.
struct KeyState {
    RegPath path;  // below the root
    bool deleted = false;
    RegKey* key = nullptr;  // valid for `generation` of the hive only
    std::uint64_t generation = 0;
};

class RegHive {
  public:
    explicit RegHive(std::u16string_view name) : name_(name), root_(name) {}

    const std::u16string& Name() const { return name_; }
    RegKey& Root() { return root_; }
    // When the file was last changed; zero when there is none.
    FILETIME Written() const;

    // Rereads the file when it changed. ERROR_BADDB when it is malformed; Problem() then says
    // where.
    LSTATUS Refresh();
    const std::string& Problem() const { return problem_; }

    // Runs `change` on the file's current state, alone among all processes, and keeps the outcome
    // when it returns ERROR_SUCCESS and set its flag; else nothing has changed.
    LSTATUS Change(const CallRef<LSTATUS(bool& changed)>& change);

    std::shared_ptr<KeyState> Open(RegPath path);
    // The key of a state; null when it is gone. Only after a successful Refresh.
    RegKey* Find(KeyState& state);
    // Marks the states of a removed key and of all keys below it; with `itself` false only these.
    void MarkDeleted(const RegPath& path, bool itself);

  private:
    bool FindFileName();
    LSTATUS Load();
    LSTATUS Save();
    void Forget();

    const std::u16string name_;
    RegKey root_;
    std::uint64_t generation_ = 0;  // grows whenever keys of root_ may have been destroyed
    HostRootKey host_root_;         // what path_ was made of
    std::string path_;              // of the file
    bool is_read_ = false;          // root_ is what `file_` holds, or empty when there is no file
    UniqueFd file_;                 // that version of it, or none when there was no file
    struct stat stamp_ = {};
    LSTATUS status_ = ERROR_SUCCESS;
    std::string problem_;
    std::vector<std::weak_ptr<KeyState>> states_;
};

// The hives of all roots, in a fixed order.
const std::vector<std::unique_ptr<RegHive>>& RegHives();
// By a predefined handle, or null.
RegHive* FindHive(HKEY root);
// By the root's name, whole or short ("HKLM"), or null.
RegHive* FindHive(std::u16string_view name);

// The whole content of an open file.
LSTATUS ReadWholeFile(int fd, std::string& bytes);
LSTATUS WriteWholeFile(int fd, std::string_view bytes);

}  // namespace host
