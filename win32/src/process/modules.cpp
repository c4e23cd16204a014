// Loaded modules. A module handle is the address at which the module's image starts, as on Windows.
//
// The system's own libraries (kernel32 and its like) are all this host layer. String tables of
// other modules are described in qv_host.h (QvStringBlock).
#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include <dlfcn.h>
#include <link.h>
#include <sys/auxv.h>
#include <unistd.h>

#include "base/os_error.h"
#include "qv_host.h"
#include "root/host_path.h"
#include "text/case_fold.h"
#include "text/host_text.h"

using namespace host;

namespace {

constexpr WideView kSystemModules[] = {u"kernel32", u"kernelbase", u"user32",  u"gdi32",
                                       u"advapi32", u"shell32",    u"version", u"winspool.drv"};

HMODULE ModuleAt(const void* address) {
    Dl_info info{};
    return dladdr(address, &info) != 0 ? static_cast<HMODULE>(info.dli_fbase) : nullptr;
}

HMODULE Executable() {
    static const HMODULE program = ModuleAt(reinterpret_cast<const void*>(getauxval(AT_ENTRY)));
    return program;
}

HMODULE HostLayer() {
    static const HMODULE layer = ModuleAt(reinterpret_cast<const void*>(&GetModuleHandleW));
    return layer;
}

// Holds the loader's reference to a module during a call.
class LoadedModule {
  public:
    // Empty when `module` is not the start of a loaded image.
    explicit LoadedModule(HMODULE module) {
        Dl_info info{};
        if (module == nullptr || dladdr(module, &info) == 0 || info.dli_fbase != module) return;
        const bool is_executable = module == Executable();
        handle_ = dlopen(is_executable ? nullptr : info.dli_fname, RTLD_NOLOAD | RTLD_NOW);
        file_ = info.dli_fname;
        module_ = module;
    }
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;
    ~LoadedModule() {
        if (handle_ != nullptr) dlclose(handle_);
    }
    explicit operator bool() const { return handle_ != nullptr; }
    const char* File() const { return file_; }
    // The address of a name that this module itself exports. Names of the libraries that it uses do
    // not count.
    void* Symbol(const char* name) const {
        void* found = handle_ == nullptr ? nullptr : dlsym(handle_, name);
        return found != nullptr && ModuleAt(found) == module_ ? found : nullptr;
    }
    void DropReference() const { dlclose(handle_); }

  private:
    void* handle_ = nullptr;
    const char* file_ = "";
    HMODULE module_ = nullptr;
};

bool IsSystemModule(WideView name) {
    constexpr WideView kSuffix = u".dll";
    if (name.size() > kSuffix.size() &&
        SameFileName(name.substr(name.size() - kSuffix.size()), kSuffix)) {
        name.remove_suffix(kSuffix.size());
    }
    return std::any_of(std::begin(kSystemModules), std::end(kSystemModules),
                       [name](WideView known) { return SameFileName(known, name); });
}

// Whether a block holds its sixteen strings. The readers of a block trust its lengths.
bool IsWhole(const QvStringBlock& block) {
    const WideView text(block.text, block.bytes / sizeof(WCHAR));
    std::size_t position = 0;
    for (int i = 0; i < 16; ++i) {
        if (position >= text.size()) return false;
        position += std::size_t{1} + text[position];
    }
    return position <= text.size();
}

template <class Result = std::nullptr_t>
Result Refuse(DWORD error) {
    SetLastError(error);
    return Result{};
}

}  // namespace

DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size) {
    const HMODULE actual = module == nullptr ? Executable() : module;
    const LoadedModule loaded(actual);
    if (!loaded) return Refuse<DWORD>(ERROR_MOD_NOT_FOUND);
    std::error_code failure;
    const std::filesystem::path file =
        actual == Executable() ? std::filesystem::read_symlink("/proc/self/exe", failure)
                               : std::filesystem::absolute(loaded.File(), failure);
    if (failure) return Refuse<DWORD>(ErrorFromErrno(failure.value()));
    WideString name = FromHostPath(file.native());
    if (size == 0 || buffer == nullptr) return Refuse<DWORD>(ERROR_INSUFFICIENT_BUFFER);
    const bool cut = name.size() >= size;
    if (cut) name.resize(size - 1);
    CopyOut(name, buffer, size);
    SetLastError(cut ? ERROR_INSUFFICIENT_BUFFER : NO_ERROR);
    return cut ? size : static_cast<DWORD>(name.size());
}

HMODULE GetModuleHandleW(LPCWSTR name) {
    if (name == nullptr) return Executable();
    return IsSystemModule(name) ? HostLayer() : Refuse(ERROR_MOD_NOT_FOUND);
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
    // A caller can pass an ordinal number in place of a name. The modules of this host have no
    // ordinals.
    const bool ordinal = reinterpret_cast<ULONG_PTR>(name) < 0x10000;
    const LoadedModule loaded(module == nullptr ? Executable() : module);
    if (!loaded) return Refuse(ERROR_MOD_NOT_FOUND);
    void* found = ordinal ? nullptr : loaded.Symbol(name);
    return found != nullptr ? reinterpret_cast<FARPROC>(found) : Refuse(ERROR_PROC_NOT_FOUND);
}

HMODULE LoadLibraryW(LPCWSTR name) {
    const WideView given = ViewOf(name);
    if (given.empty()) return Refuse(ERROR_MOD_NOT_FOUND);
    if (IsSystemModule(given)) return HostLayer();
    WideString full(given);
    if (given.find_first_of(u"\\/:") == WideView::npos) full = u"C:\\Windows\\System32\\" + full;
    const HostPath path = ToHostPath(full.c_str());
    if (path.error != NO_ERROR) return Refuse(ERROR_MOD_NOT_FOUND);
    const std::string file =
        std::filesystem::path(path.path).is_absolute() ? path.path : "./" + path.path;
    if (access(file.c_str(), F_OK) != 0) return Refuse(ERROR_MOD_NOT_FOUND);
    void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) return Refuse(ERROR_BAD_EXE_FORMAT);
    struct link_map* map = nullptr;
    dlinfo(handle, RTLD_DI_LINKMAP, &map);
    return ModuleAt(map->l_ld);
}

BOOL FreeLibrary(HMODULE module) {
    const LoadedModule loaded(module);
    if (!loaded) return Refuse<BOOL>(ERROR_INVALID_HANDLE);
    // The host layer and the executable are never unloaded, so they are not counted.
    if (module != HostLayer() && module != Executable()) loaded.DropReference();
    return TRUE;
}

HRSRC FindResourceW(HMODULE module, LPCWSTR name, LPCWSTR type) {
    const LoadedModule loaded(module == nullptr ? Executable() : module);
    const auto* block = static_cast<const QvStringBlock*>(loaded.Symbol("qv_module_strings"));
    if (block == nullptr) return Refuse(ERROR_RESOURCE_DATA_NOT_FOUND);
    if (type != RT_STRING) return Refuse(ERROR_RESOURCE_TYPE_NOT_FOUND);
    while (block->name != 0 && MAKEINTRESOURCEW(block->name) != name) ++block;
    if (block->name == 0) return Refuse(ERROR_RESOURCE_NAME_NOT_FOUND);
    if (!IsWhole(*block)) return Refuse(ERROR_RESOURCE_DATA_NOT_FOUND);
    return reinterpret_cast<HRSRC>(const_cast<QvStringBlock*>(block));
}

HGLOBAL LoadResource(HMODULE /*module*/, HRSRC resource) {
    if (resource == nullptr) return Refuse(ERROR_INVALID_PARAMETER);
    return const_cast<WCHAR*>(reinterpret_cast<const QvStringBlock*>(resource)->text);
}

LPVOID LockResource(HGLOBAL resource) {
    return resource;
}

DWORD SizeofResource(HMODULE /*module*/, HRSRC resource) {
    if (resource == nullptr) return Refuse<DWORD>(ERROR_INVALID_PARAMETER);
    return reinterpret_cast<const QvStringBlock*>(resource)->bytes;
}

BOOL IsWow64Process(HANDLE /*process*/, PBOOL emulated) {
    if (emulated == nullptr) return Refuse<BOOL>(ERROR_INVALID_PARAMETER);
    *emulated = FALSE;
    return TRUE;
}
