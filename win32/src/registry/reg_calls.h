// The frame of every registry call: checks the handle and its rights, takes the store's mutex,
// opens a snapshot or a transaction, waits for other processes. Failures are returned as Win32
// codes, as the calls do.
#pragma once

#include <windows.h>

#include <functional>
#include <string>

#include "base/call_ref.h"
#include "base/handles.h"
#include "registry/reg_keys.h"
#include "registry/reg_store.h"
#include "text/host_text.h"

namespace host {

// A handle from RegOpenKeyExW or RegCreateKeyExW.
class OpenKey : public HandleObject {
  public:
    static constexpr HandleKind kKind = HandleKind::kRegistryKey;
    OpenKey(std::int64_t id, std::size_t depth, REGSAM access)
        : HandleObject(kKind), id_(id), depth_(depth), access_(access) {}
    std::int64_t Id() const { return id_; }
    std::size_t Depth() const { return depth_; }
    REGSAM Access() const { return access_; }

  private:
    const std::int64_t id_;
    const std::size_t depth_;  // levels below the root
    const REGSAM access_;
};

// What a call works on. Guarded by the store's mutex.
struct KeyContext {
    const RegKey key;
    const std::size_t depth;
};

using KeyUser = CallRef<LSTATUS(const KeyContext&)>;

// ERROR_INVALID_HANDLE, ERROR_ACCESS_DENIED when the handle lacks one of the `needed` rights,
// ERROR_KEY_DELETED, or the code of the store or of the function. Nothing is thrown. A lock of
// another process is waited for, five seconds at most; then the code is ERROR_BUSY.
// What was read before and nobody has changed is not read again. The function may run again as long
// as it has had no answer from RegKey::Keys, KeyAt and ValueAt, which are always read.
LSTATUS ReadKey(HKEY handle, REGSAM needed, const KeyUser& read);
// The same in a transaction, which is kept when the function returns ERROR_SUCCESS.
LSTATUS ChangeKey(HKEY handle, REGSAM needed, const KeyUser& change);

// The same for calls that work on the whole registry, in a snapshot or a transaction.
LSTATUS ReadRegistry(const CallRef<void()>& read);
LSTATUS ChangeRegistry(const CallRef<void()>& change);
// The end of a group of changes, RegStore::EndChanges.
LSTATUS EndGroup(bool keep);
// Keeps what tells other processes of a change until they can see it. False when no group is open:
// then nothing is kept, and it can be told now. What is told runs without the mutex.
bool RunAfterGroup(std::function<void()> run);

// What was wrong with the registry when a call of this process failed last, for a person: the file
// and the reason. Empty after one that went well.
std::string RegistryProblem();

// A new handle of a key. ERROR_ACCESS_DENIED when it is to change a registry that this user may not
// change.
LSTATUS OpenKeyHandle(std::int64_t id, std::size_t depth, REGSAM access, PHKEY result);

}  // namespace host
