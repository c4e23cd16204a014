// The frame of every registry call: checks the handle and its rights, takes the lock, brings the
// hive up to date, finds the key. Failures are returned as Win32 codes, as the calls do.
#pragma once

#include <windows.h>

#include <memory>

#include "base/call_ref.h"
#include "base/handles.h"
#include "registry/reg_hive.h"
#include "text/host_text.h"

namespace host {

// A handle from RegOpenKeyExW or RegCreateKeyExW.
class OpenKey : public HandleObject {
  public:
    static constexpr HandleKind kKind = HandleKind::kRegistryKey;
    OpenKey(RegHive& hive, std::shared_ptr<KeyState> state, REGSAM access)
        : HandleObject(kKind), hive_(hive), state_(std::move(state)), access_(access) {}
    RegHive& Hive() const { return hive_; }
    KeyState& State() const { return *state_; }
    REGSAM Access() const { return access_; }

  private:
    RegHive& hive_;
    const std::shared_ptr<KeyState> state_;
    const REGSAM access_;
};

// What a call works on. Guarded by RegistryMutex().
struct KeyContext {
    RegHive& hive;
    const RegPath& path;  // of the key, below the root
    RegKey& key;
};

using KeyReader = CallRef<LSTATUS(const KeyContext&)>;
using KeyChanger = CallRef<LSTATUS(const KeyContext&, bool& changed)>;

// ERROR_INVALID_HANDLE, ERROR_ACCESS_DENIED when the handle lacks one of the `needed` rights,
// ERROR_KEY_DELETED, or the code of the hive or of the function. Nothing is thrown.
LSTATUS ReadKey(HKEY handle, REGSAM needed, const KeyReader& read);
// The same on the state that all processes see, kept as RegHive::Change says.
LSTATUS ChangeKey(HKEY handle, REGSAM needed, const KeyChanger& change);

// A new handle of a key. With RegistryMutex() held.
LSTATUS OpenKeyHandle(RegHive& hive, RegPath path, REGSAM access, PHKEY result);

}  // namespace host
