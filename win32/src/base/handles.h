// The process's handles: numbers that name kernel objects of this host.
//
// A handle is checked on every use: a null, closed or foreign one is refused with
// ERROR_INVALID_HANDLE, also when its slot has been given to another object since. Handles fit 31
// bits and are multiples of 4. Any thread may use, open and close handles at once; an object that
// is in use while its handle is closed lives until that use ends. To add a kind of object, add its
// enumerator, derive from HandleObject and give the class a `static constexpr HandleKind kKind`.
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>

namespace host {

enum class HandleKind : std::uint8_t {
    kFile,
    kMapping,
    kSearch,
    kRegistryKey,
    kPrinter,
    kToken,
    kServiceManager
};

class HandleObject {
  public:
    explicit HandleObject(HandleKind kind) : kind_(kind) {}
    HandleObject(const HandleObject&) = delete;
    HandleObject& operator=(const HandleObject&) = delete;
    virtual ~HandleObject() = default;
    HandleKind kind() const { return kind_; }
    // In the child of a fork, which has one thread: takes over what the parent's object holds of
    // the system (descriptors, marks), or is without it from then on. A handle names the same thing
    // in both processes; what its locks exclude is the other one too.
    virtual void EnterChild() {}

  private:
    const HandleKind kind_;
};

// Gives the object a handle. Null with ERROR_TOO_MANY_OPEN_FILES when the table is full; the object
// is destroyed then.
HANDLE OpenHandle(std::unique_ptr<HandleObject> object);

// Ends the handle. The object is destroyed with its last pin.
bool CloseOpenHandle(HANDLE handle);

// In the child of a fork: every open object enters it. Calls of the parent's other threads hold no
// object any more; one that such a call was just closing is never destroyed.
void HandlesEnterChild();

// Low level of HandlePin: the object, kept alive until UnpinHandle, or null.
HandleObject* PinHandle(HANDLE handle);
void UnpinHandle(HANDLE handle);

// Access to the object of a handle, for the length of a call. Empty, with the last error
// ERROR_INVALID_HANDLE, when the handle does not name an object of the kind.
template <class T>
class HandlePin {
  public:
    explicit HandlePin(HANDLE handle) : handle_(handle), object_(PinHandle(handle)) {
        if (object_ == nullptr || object_->kind() != T::kKind) SetLastError(ERROR_INVALID_HANDLE);
    }
    HandlePin(const HandlePin&) = delete;
    HandlePin& operator=(const HandlePin&) = delete;
    ~HandlePin() {
        if (object_ != nullptr) UnpinHandle(handle_);
    }
    explicit operator bool() const { return object_ != nullptr && object_->kind() == T::kKind; }
    T* operator->() const { return static_cast<T*>(object_); }
    T& operator*() const { return *static_cast<T*>(object_); }

  private:
    const HANDLE handle_;
    HandleObject* const object_;
};

}  // namespace host
