// File mappings: shared memory by name, private memory, and files.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <cerrno>
#include <map>
#include <mutex>

#include "base/fork_lock.h"
#include "base/os_error.h"
#include "files/file_object.h"
#include "files/shared_block.h"

namespace host {
namespace {

constexpr std::uint64_t kLargest = std::uint64_t{1} << 62;
constexpr std::uint64_t kGranularity = 0x10000;
constexpr std::uint64_t kPage = 0x1000;

struct Memory {
    UniqueFd fd;
    std::uint64_t size = 0;
    std::string block;  // the shared block's name; empty for other memory
};

class MappingObject final : public HandleObject {
  public:
    static constexpr HandleKind kKind = HandleKind::kMapping;

    MappingObject(Memory memory, bool writable)
        : HandleObject(kKind), memory_(std::move(memory)), writable_(writable) {}
    ~MappingObject() override {
        if (!memory_.block.empty()) ReleaseSharedBlock(memory_.block, std::move(memory_.fd));
    }
    const Memory& memory() const { return memory_; }
    // When the child gets no descriptor of its own, it cannot make new views. Old views stay.
    void EnterChild() override {
        const int old = memory_.fd.Inherited();
        memory_.fd = memory_.block.empty() ? UniqueFd(fcntl(old, F_DUPFD_CLOEXEC, 3))
                                           : SharedBlockOfChild(old);
    }
    bool writable() const { return writable_; }

  private:
    Memory memory_;
    const bool writable_;
};

struct Views {
    ForkLock mutex;
    std::map<const void*, std::size_t> bytes_by_address;
};

// Never destroyed: libraries that unload later still unmap their views.
Views& AllViews() {
    static Views& views = *std::make_unique<Views>().release();
    return views;
}

DWORD SizeOf(Memory& memory) {
    struct stat info;
    if (fstat(memory.fd.get(), &info) != 0) return ErrorFromErrno(errno);
    memory.size = static_cast<std::uint64_t>(info.st_size);
    return NO_ERROR;
}

DWORD OpenNamed(std::u16string_view name, std::uint64_t size, Memory& memory, bool& existed) {
    if (name.starts_with(u"Local\\")) name.remove_prefix(6);
    const std::size_t scope = name.starts_with(u"Global\\") ? 7 : 0;
    if (name.find(u'\\', scope) != name.npos) return ERROR_PATH_NOT_FOUND;
    if (name.size() > MAX_PATH) return ERROR_FILENAME_EXCED_RANGE;
    std::string block = SharedBlockName(name);
    const DWORD error = OpenSharedBlock(block, size, memory.fd, existed);
    if (error != NO_ERROR) return error;
    memory.block = std::move(block);
    return SizeOf(memory);
}

DWORD MakeUnnamed(std::uint64_t size, Memory& memory) {
    memory.fd = UniqueFd(memfd_create("qv_rtl", MFD_CLOEXEC));
    if (!memory.fd) return ErrorFromErrno(errno);
    if (posix_fallocate(memory.fd.get(), 0, static_cast<off_t>(size)) != 0) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    memory.size = size;
    return NO_ERROR;
}

// Opens the file again, so that a view does not keep the locks and the share mode of the handle.
UniqueFd Reopen(int fd, bool writable) {
    UniqueFd own = OpenedAgain(fd, writable ? O_RDWR : O_RDONLY);
    return own ? std::move(own) : UniqueFd(fcntl(fd, F_DUPFD_CLOEXEC, 3));
}

DWORD OpenFileMemory(HANDLE handle, std::uint64_t size, bool writable, Memory& memory) {
    const HandlePin<FileObject> file(handle);
    if (!file) return ERROR_INVALID_HANDLE;
    if (!file->access().read || (writable && !file->access().write)) return ERROR_ACCESS_DENIED;
    memory.fd = Reopen(file->fd(), writable);
    if (!memory.fd) return ErrorFromErrno(errno);
    const DWORD error = SizeOf(memory);
    if (error != NO_ERROR) return error;
    if (size == 0) return memory.size == 0 ? ERROR_FILE_INVALID : NO_ERROR;
    if (size > memory.size) {
        if (!writable) return ERROR_NOT_ENOUGH_MEMORY;
        const int code = posix_fallocate(memory.fd.get(), 0, static_cast<off_t>(size));
        if (code != 0) return ErrorFromErrno(code);
    }
    memory.size = size;
    return NO_ERROR;
}

DWORD MakeMemory(HANDLE file, bool writable, std::uint64_t size, LPCWSTR name, Memory& memory,
                 bool& existed) {
    const bool named = name != nullptr && name[0] != 0;
    if (size > kLargest) return ERROR_INVALID_PARAMETER;
    if (file != INVALID_HANDLE_VALUE) {
        return named ? ERROR_NOT_SUPPORTED : OpenFileMemory(file, size, writable, memory);
    }
    if (size == 0) return ERROR_INVALID_PARAMETER;
    return named ? OpenNamed(name, size, memory, existed) : MakeUnnamed(size, memory);
}

DWORD CheckView(const MappingObject& mapping, DWORD access, std::uint64_t offset,
                std::uint64_t bytes) {
    if ((access & (FILE_MAP_READ | FILE_MAP_WRITE)) == 0) return ERROR_INVALID_PARAMETER;
    if ((access & FILE_MAP_WRITE) != 0 && !mapping.writable()) return ERROR_ACCESS_DENIED;
    if (offset % kGranularity != 0) return ERROR_MAPPED_ALIGNMENT;
    const std::uint64_t end = (mapping.memory().size + kPage - 1) / kPage * kPage;
    if (offset >= end || bytes > end - offset) return ERROR_ACCESS_DENIED;
    return NO_ERROR;
}

LPVOID Map(const MappingObject& mapping, DWORD access, std::uint64_t offset, std::uint64_t bytes) {
    const int protection = PROT_READ | ((access & FILE_MAP_WRITE) != 0 ? PROT_WRITE : 0);
    const auto size = bytes != 0 ? bytes : mapping.memory().size - offset;
    Views& views = AllViews();
    const std::scoped_lock lock(views.mutex);
    void* const view = mmap(nullptr, size, protection, MAP_SHARED, mapping.memory().fd.get(),
                            static_cast<off_t>(offset));
    if (view == MAP_FAILED) {
        SetLastError(ErrorFromErrno(errno));
        return nullptr;
    }
    views.bytes_by_address[view] = size;
    return view;
}

}  // namespace
}  // namespace host

HANDLE CreateFileMappingW(HANDLE file, LPSECURITY_ATTRIBUTES, DWORD protect, DWORD size_high,
                          DWORD size_low, LPCWSTR name) {
    host::Memory memory;
    bool existed = false;
    const bool writable = protect == PAGE_READWRITE;
    const std::uint64_t size = std::uint64_t{size_high} << 32 | size_low;
    const DWORD error = writable || protect == PAGE_READONLY
                            ? host::MakeMemory(file, writable, size, name, memory, existed)
                            : ERROR_INVALID_PARAMETER;
    if (error != NO_ERROR) {
        SetLastError(error);
        return nullptr;
    }
    const HANDLE mapping =
        host::OpenHandle(std::make_unique<host::MappingObject>(std::move(memory), writable));
    if (mapping != nullptr) SetLastError(existed ? ERROR_ALREADY_EXISTS : NO_ERROR);
    return mapping;
}

LPVOID MapViewOfFile(HANDLE mapping, DWORD access, DWORD offset_high, DWORD offset_low,
                     SIZE_T bytes) {
    const host::HandlePin<host::MappingObject> object(mapping);
    if (!object) return nullptr;
    const std::uint64_t offset = std::uint64_t{offset_high} << 32 | offset_low;
    const DWORD error = host::CheckView(*object, access, offset, bytes);
    if (error == NO_ERROR) return host::Map(*object, access, offset, bytes);
    SetLastError(error);
    return nullptr;
}

BOOL UnmapViewOfFile(LPCVOID address) {
    host::Views& views = host::AllViews();
    const std::scoped_lock lock(views.mutex);
    const auto found = views.bytes_by_address.find(address);
    if (found == views.bytes_by_address.end()) return host::Fail(ERROR_INVALID_ADDRESS);
    munmap(const_cast<void*>(address), found->second);
    views.bytes_by_address.erase(found);
    return TRUE;
}
