// Objects that are made on first use and live until the library unloads.
//
// A function-local static with a destructor would be gone too early at process exit on some hosts:
// the C run-time destroys it before the loader tells the library that it is being detached. Such an
// object is therefore handed to KeepUntilUnload, and DllMain releases them all as its last step:
//
//     static const TTable& table = KeepUntilUnload(std::make_unique<TTable>());
#pragma once

#include <memory>

#include "qv_api.h"

namespace System {

// One kept object; a node of the list that ReleaseModuleStatics empties.
class TModuleStatic {
  public:
    TModuleStatic() = default;
    TModuleStatic(const TModuleStatic&) = delete;
    TModuleStatic& operator=(const TModuleStatic&) = delete;
    virtual ~TModuleStatic() = default;

    // Takes ownership. Any thread.
    static void Keep(std::unique_ptr<TModuleStatic> object);

  private:
    friend void ReleaseModuleStatics();
    TModuleStatic* next_ = nullptr;
};

// Destroys every kept object, the newest first. Only for DllMain's detach, when no other thread is
// inside the library.
void ReleaseModuleStatics();

template <class T>
T& KeepUntilUnload(std::unique_ptr<T> object) {
    struct Holder : TModuleStatic {
        explicit Holder(std::unique_ptr<T> o) : object(std::move(o)) {}
        std::unique_ptr<T> object;
    };
    T& kept = *object;
    TModuleStatic::Keep(std::make_unique<Holder>(std::move(object)));
    // cppcheck-suppress returnReference ; the object, which the holder keeps
    return kept;
}

}  // namespace System
