#include "registry/reg_calls.h"

#include <new>
#include <optional>

namespace host {

namespace {

constexpr REGSAM kMaximumAllowed = 0x02000000;

// A predefined root or a pinned handle.
class Target {
  public:
    explicit Target(HKEY handle) : root_(FindHive(handle)) {
        if (root_ == nullptr) {
            pin_.emplace(reinterpret_cast<HANDLE>(handle));
        }
    }
    explicit operator bool() const { return root_ != nullptr || *pin_; }
    RegHive& Hive() const { return root_ != nullptr ? *root_ : (*pin_)->Hive(); }
    bool Allows(REGSAM needed) const {
        return root_ != nullptr || ((*pin_)->Access() & needed) == needed;
    }
    const RegPath& Path() const {
        static const RegPath& none = *new RegPath;
        return root_ != nullptr ? none : (*pin_)->State().path;
    }
    RegKey* Find() const {
        return root_ != nullptr ? &root_->Root() : (*pin_)->Hive().Find((*pin_)->State());
    }

  private:
    RegHive* const root_;
    std::optional<HandlePin<OpenKey>> pin_;
};

// The lock is given up before the pin, whose end may destroy the handle's object.
LSTATUS OnKey(HKEY handle, REGSAM needed, const CallRef<LSTATUS(const Target&)>& run) {
    try {
        const Target target(handle);
        if (!target) return ERROR_INVALID_HANDLE;
        if (!target.Allows(needed)) return ERROR_ACCESS_DENIED;
        const std::scoped_lock lock(RegistryMutex());
        return run(target);
    } catch (const std::bad_alloc&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    } catch (const std::exception&) {
        return ERROR_GEN_FAILURE;
    }
}

REGSAM MapGenericRights(REGSAM access) {
    REGSAM rights = access & KEY_ALL_ACCESS;
    if ((access & GENERIC_READ) != 0) rights |= KEY_READ;
    if ((access & GENERIC_WRITE) != 0) rights |= KEY_WRITE;
    if ((access & GENERIC_EXECUTE) != 0) rights |= KEY_READ;
    if ((access & (GENERIC_ALL | kMaximumAllowed)) != 0) rights = KEY_ALL_ACCESS;
    return rights;
}

}  // namespace

LSTATUS ReadKey(HKEY handle, REGSAM needed, const KeyReader& read) {
    return OnKey(handle, needed, [&](const Target& target) {
        const LSTATUS code = target.Hive().Refresh();
        if (code != ERROR_SUCCESS) return code;
        RegKey* const key = target.Find();
        if (key == nullptr) return LSTATUS{ERROR_KEY_DELETED};
        return read({target.Hive(), target.Path(), *key});
    });
}

LSTATUS ChangeKey(HKEY handle, REGSAM needed, const KeyChanger& change) {
    return OnKey(handle, needed, [&](const Target& target) {
        return target.Hive().Change([&](bool& changed) {
            RegKey* const key = target.Find();
            if (key == nullptr) return LSTATUS{ERROR_KEY_DELETED};
            return change({target.Hive(), target.Path(), *key}, changed);
        });
    });
}

LSTATUS OpenKeyHandle(RegHive& hive, RegPath path, REGSAM access, PHKEY result) {
    const HANDLE handle = OpenHandle(
        std::make_unique<OpenKey>(hive, hive.Open(std::move(path)), MapGenericRights(access)));
    if (handle == nullptr) return ERROR_TOO_MANY_OPEN_FILES;
    *result = reinterpret_cast<HKEY>(handle);
    return ERROR_SUCCESS;
}

}  // namespace host
