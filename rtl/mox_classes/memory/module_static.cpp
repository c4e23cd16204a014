#include "mox_classes/memory/module_static.h"

#include <atomic>

namespace System {

namespace {
// Has no constructor that runs and no destructor, so it is valid before and after all others.
constinit std::atomic<TModuleStatic*> kept_objects{nullptr};
}  // namespace

void TModuleStatic::Keep(std::unique_ptr<TModuleStatic> object) {
    TModuleStatic* node = object.release();
    node->next_ = kept_objects.load(std::memory_order_relaxed);
    while (!kept_objects.compare_exchange_weak(node->next_, node, std::memory_order_release,
                                               std::memory_order_relaxed)) {
    }
}

void ReleaseModuleStatics() {
    TModuleStatic* node = kept_objects.exchange(nullptr, std::memory_order_acquire);
    while (node != nullptr) {
        const std::unique_ptr<TModuleStatic> owner(node);
        node = owner->next_;
    }
}

}  // namespace System
