// Owners of what the platform hands out: one move-only holder, and for each kind of thing a policy
// that says what it is, how it is given back, and which value means that there is none.
#pragma once

#include <windows.h>

#include <winspool.h>

#include "mox_classes/memory/memory.h"

namespace System {

// Closes what it holds exactly once. Giving back keeps the thread's last error, so that a failure
// can still be reported after the owner is gone. One thread at a time.
template <class Policy>
class TOwner {
  public:
    using Handle = typename Policy::Handle;

    TOwner() noexcept : handle_(Policy::None()) {}
    explicit TOwner(Handle handle) noexcept : handle_(handle) {}
    TOwner(TOwner&& other) noexcept : handle_(other.Release()) {}
    TOwner& operator=(TOwner&& other) noexcept {
        if (this != &other) Reset(other.Release());
        return *this;
    }
    ~TOwner() { Reset(); }

    Handle Get() const { return handle_; }
    explicit operator bool() const { return handle_ != Policy::None(); }
    // Gives up ownership.
    [[nodiscard]] Handle Release() noexcept {
        const Handle handle = handle_;
        handle_ = Policy::None();
        return handle;
    }
    void Reset(Handle handle = Policy::None()) noexcept {
        const Handle old = handle_;
        handle_ = handle;
        if (old == Policy::None() || old == handle) return;
        const DWORD last_error = GetLastError();
        Policy::Close(old);
        SetLastError(last_error);
    }
    // For a call that stores a handle; gives back the current one first.
    Handle* Receive() noexcept {
        Reset();
        return &handle_;
    }

  private:
    Handle handle_;
};

struct TFilePolicy {
    using Handle = HANDLE;
    static Handle None() { return INVALID_HANDLE_VALUE; }
    static void Close(Handle file) { CloseHandle(file); }
};
struct TSearchPolicy {
    using Handle = HANDLE;
    static Handle None() { return INVALID_HANDLE_VALUE; }
    static void Close(Handle search) { FindClose(search); }
};
// Kernel objects whose creating call answers null when it fails: mappings, processes, tokens.
struct TKernelPolicy {
    using Handle = HANDLE;
    static Handle None() { return nullptr; }
    static void Close(Handle object) { CloseHandle(object); }
};
struct TKeyPolicy {
    using Handle = HKEY;
    static Handle None() { return nullptr; }
    static void Close(Handle key) { RegCloseKey(key); }
};
struct TPrinterPolicy {
    using Handle = HANDLE;
    static Handle None() { return nullptr; }
    static void Close(Handle printer) { ClosePrinter(printer); }
};
struct THeapPolicy {
    using Handle = void*;
    static Handle None() { return nullptr; }
    static void Close(Handle block) { FreeMemory(block); }
};
struct TGlobalPolicy {
    using Handle = HGLOBAL;
    static Handle None() { return nullptr; }
    static void Close(Handle block) { GlobalFree(block); }
};
struct TLocalPolicy {
    using Handle = HLOCAL;
    static Handle None() { return nullptr; }
    static void Close(Handle block) { LocalFree(block); }
};

using TFileHandle = TOwner<TFilePolicy>;
using TSearchHandle = TOwner<TSearchPolicy>;
using TKernelHandle = TOwner<TKernelPolicy>;
using TKeyHandle = TOwner<TKeyPolicy>;
using TPrinterHandle = TOwner<TPrinterPolicy>;
using THeapBlock = TOwner<THeapPolicy>;      // from System::GetMemory
using TGlobalBlock = TOwner<TGlobalPolicy>;  // from GlobalAlloc
using TLocalBlock = TOwner<TLocalPolicy>;    // from LocalAlloc or FormatMessageW

}  // namespace System
