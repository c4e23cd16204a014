// The host's own calls: where its state lies, its registry as text.
#include <fcntl.h>
#include <qv_host.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <optional>

#include "base/os_error.h"
#include "base/unique_fd.h"
#include "registry/reg_calls.h"
#include "registry/reg_entries.h"
#include "registry/reg_takeover.h"
#include "root/host_path.h"
#include "root/host_root.h"
#include "text/host_text.h"

using namespace host;

namespace {

std::string NativeName(LPCWSTR name) {
    std::string utf8;
    if (name == nullptr || *name == u'\0' || !NameToUtf8(name, utf8)) {
        throw RegError{ERROR_INVALID_NAME, "not a file's name"};
    }
    return utf8;
}

[[noreturn]] void FailWithCode(LSTATUS code, const std::string& what) {
    const std::string problem = RegistryProblem();
    throw RegError{code, problem.empty() ? what + ": error " + std::to_string(code) : problem};
}

BOOL Report(const RegError& error, LPWSTR message, DWORD size) {
    const WideString text = FromUtf8(error.text);
    if (message != nullptr && size > 0) {
        const std::size_t length = std::min<std::size_t>(text.size(), size - 1);
        std::copy_n(text.data(), length, message);
        message[length] = u'\0';
    }
    return Fail(static_cast<DWORD>(error.code));
}

// Runs a call that throws RegError, or the standard library's exceptions.
template <class Run>
BOOL Guarded(LPWSTR message, DWORD size, const Run& run) {
    try {
        run();
        return TRUE;
    } catch (const RegError& error) {
        return Report(error, message, size);
    } catch (const std::bad_alloc&) {
        return Report({ERROR_NOT_ENOUGH_MEMORY, "out of memory"}, message, size);
    } catch (const std::exception& error) {
        return Report({ERROR_GEN_FAILURE, error.what()}, message, size);
    }
}

// All of it or nothing.
void Import(const std::string& file) {
    const std::string bytes = ReadWholeFile(file);
    const LSTATUS code = ChangeRegistry([&] {
        RegEntryRunner runner(0);
        try {
            ReadRegText(bytes, [&runner](const RegEntry& entry) { runner.Run(entry); });
        } catch (const RegTextError& error) {
            throw RegError{ERROR_BADDB, file + ", " + error.what()};
        }
    });
    if (code != ERROR_SUCCESS) FailWithCode(code, "the registry cannot be written");
}

void WriteKey(std::u16string_view name, RegTextWriter& writer) {
    const std::int64_t root = TakeRoot(name);
    if (root == 0) throw RegError{ERROR_FILE_NOT_FOUND, "the key's root is not known"};
    RegPath path;
    SplitKeyPath(name, path);
    std::optional<RegKey> key{root};
    std::u16string whole(RegRoots()[root - 1].name);
    for (const std::u16string& part : path) {
        key = key->FindKey(part);
        if (!key) throw RegError{ERROR_FILE_NOT_FOUND, "there is no such key"};
        whole += u'\\' + key->Name();
    }
    WriteRegKey(*key, whole, writer);
}

void WriteRoots(RegTextWriter& writer) {
    for (const RegRoot& root : RegRoots()) {
        const RegKey key(FindRoot(root.handle));
        if (key.IsEmpty()) continue;
        WriteRegKey(key, std::u16string(root.name), writer);
    }
}

std::string Exported(LPCWSTR key) {
    RegTextWriter writer;
    const LSTATUS code = ReadRegistry([&] {
        if (key != nullptr) {
            WriteKey(key, writer);
        } else {
            WriteRoots(writer);
        }
    });
    if (code != ERROR_SUCCESS) FailWithCode(code, "the registry cannot be read");
    return writer.Take();
}

void WriteWhole(int fd, std::string_view bytes, const std::string& name) {
    while (!bytes.empty()) {
        const ssize_t put = write(fd, bytes.data(), bytes.size());
        if (put < 0 && errno == EINTR) continue;
        if (put < 0) ThrowErrno(name);
        bytes.remove_prefix(static_cast<std::size_t>(put));
    }
}

std::string ExamineStore() {
    RegDatabase* const database = RegStore::Get().Database();
    return database == nullptr ? "ok" : database->Examine();
}

void WriteOut(const std::string& text, LPCWSTR file) {
    if (file == nullptr) {
        const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
        if (!written || std::fflush(stdout) != 0) ThrowErrno("standard output");
        return;
    }
    const std::string name = NativeName(file);
    const UniqueFd fd(open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (!fd) ThrowErrno(name);
    WriteWhole(fd.get(), text, name);
}

}  // namespace

DWORD QvHostRoot(LPWSTR buffer, DWORD size) {
    if (!HasHostRoot()) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return 0;
    }
    return CopyOut(FromUtf8(HostRoot()), buffer, size);
}

DWORD QvHostPath(LPCWSTR name, LPSTR buffer, DWORD size) {
    const HostPath target = ToHostPath(name);
    if (target.error != NO_ERROR) {
        SetLastError(target.error);
        return 0;
    }
    const auto length = static_cast<DWORD>(target.path.size());
    if (length >= size) return length + 1;
    std::copy_n(target.path.c_str(), length + 1, buffer);
    return length;
}

BOOL QvHostImport(LPCWSTR file, LPWSTR message, DWORD size) {
    return Guarded(message, size, [file] { Import(NativeName(file)); });
}

BOOL QvHostExport(LPCWSTR key, LPCWSTR file, LPWSTR message, DWORD size) {
    return Guarded(message, size, [key, file] { WriteOut(Exported(key), file); });
}

void QvHostBeginChanges() {
    const std::scoped_lock lock(RegStore::Get().Mutex());
    RegStore::Get().BeginChanges();
}

BOOL QvHostEndChanges(BOOL keep) {
    const LSTATUS code = EndGroup(keep != FALSE);
    return code == ERROR_SUCCESS ? TRUE : Fail(static_cast<DWORD>(code));
}

BOOL QvHostCheckRegistry(LPWSTR message, DWORD size) {
    return Guarded(message, size, [] {
        std::string found = "ok";
        const LSTATUS code = ReadRegistry([&found] { found = ExamineStore(); });
        if (code != ERROR_SUCCESS) FailWithCode(code, "the registry cannot be read");
        if (found != "ok") throw RegError{ERROR_BADDB, RegStore::Get().Path() + ": " + found};
    });
}

DWORD QvHostProblem(LPWSTR buffer, DWORD size) {
    return CopyOut(FromUtf8(RegistryProblem()), buffer, size);
}
