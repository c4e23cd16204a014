// The host's own calls: where its state lies, its registry as text.
#include <fcntl.h>
#include <qv_host.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <map>
#include <system_error>

#include "base/os_error.h"
#include "base/unique_fd.h"
#include "registry/reg_entries.h"
#include "registry/reg_hive.h"
#include "root/host_path.h"
#include "root/host_root.h"
#include "text/case_fold.h"
#include "text/host_text.h"

using namespace host;

namespace {

// A failure on its way to the caller: the last error and a text for a person.
struct Failure {
    DWORD code;
    std::string text;
};

std::string NativeName(LPCWSTR name) {
    std::string utf8;
    if (name == nullptr || *name == u'\0' || !NameToUtf8(name, utf8)) {
        throw Failure{ERROR_INVALID_NAME, "not a file's name"};
    }
    return utf8;
}

[[noreturn]] void FailWithErrno(const std::string& file) {
    const int code = errno;
    throw Failure{ErrorFromErrno(code), file + ": " + std::generic_category().message(code)};
}

[[noreturn]] void FailWithCode(LSTATUS code, const std::string& what) {
    throw Failure{static_cast<DWORD>(code), what + ": error " + std::to_string(code)};
}

BOOL Report(const Failure& failure, LPWSTR message, DWORD size) {
    const WideString text = FromUtf8(failure.text);
    if (message != nullptr && size > 0) {
        const std::size_t length = std::min<std::size_t>(text.size(), size - 1);
        std::copy_n(text.data(), length, message);
        message[length] = u'\0';
    }
    return Fail(failure.code);
}

// Runs a call that throws Failure, or the standard library's exceptions.
template <class Run>
BOOL Guarded(LPWSTR message, DWORD size, const Run& run) {
    try {
        const std::scoped_lock lock(RegistryMutex());
        run();
        return TRUE;
    } catch (const Failure& failure) {
        return Report(failure, message, size);
    } catch (const std::bad_alloc&) {
        return Report({ERROR_NOT_ENOUGH_MEMORY, "out of memory"}, message, size);
    } catch (const std::exception& error) {
        return Report({ERROR_GEN_FAILURE, error.what()}, message, size);
    }
}

using EntriesByHive = std::map<RegHive*, std::vector<RegEntry>>;

EntriesByHive SplitByHive(std::string_view bytes) {
    EntriesByHive parts;
    RegHive* hive = nullptr;
    ReadRegText(bytes, [&](const RegEntry& entry) {
        if (entry.kind == RegEntry::Kind::Key || entry.kind == RegEntry::Kind::DeleteKey) {
            hive = FindHive(std::u16string_view(entry.name).substr(0, entry.name.find(u'\\')));
            if (hive == nullptr) throw RegTextError(entry.line, "a key of an unknown root");
        }
        parts[hive].push_back(entry);
    });
    return parts;
}

void RunAll(const std::vector<RegEntry>& entries, RegKey& root) {
    RegEntryRunner runner([&root](std::u16string_view) { return &root; });
    for (const RegEntry& entry : entries) runner.Run(entry);
}

// Reads the file and tries it on an empty registry, so that nothing can fail half-way.
EntriesByHive ReadEntries(const std::string& file) {
    const UniqueFd fd(open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!fd) FailWithErrno(file);
    std::string bytes;
    const LSTATUS code = ReadWholeFile(fd.get(), bytes);
    if (code != ERROR_SUCCESS) FailWithCode(code, file);
    try {
        EntriesByHive parts = SplitByHive(bytes);
        for (const auto& [hive, entries] : parts) {
            RegKey scratch(hive->Name());
            RunAll(entries, scratch);
        }
        return parts;
    } catch (const RegTextError& error) {
        throw Failure{ERROR_BADDB, file + ", " + error.what()};
    }
}

void RefreshOrFail(RegHive& hive) {
    const LSTATUS code = hive.Refresh();
    if (code == ERROR_BADDB) throw Failure{ERROR_BADDB, hive.Problem()};
    if (code != ERROR_SUCCESS) FailWithCode(code, "the registry cannot be read");
}

void Apply(RegHive& hive, const std::vector<RegEntry>& entries) {
    RefreshOrFail(hive);
    const LSTATUS code = hive.Change([&](bool& changed) {
        RunAll(entries, hive.Root());
        changed = true;
        return LSTATUS{ERROR_SUCCESS};
    });
    if (code != ERROR_SUCCESS) FailWithCode(code, "the registry cannot be written");
}

void WriteKey(std::u16string_view name, RegTextWriter& writer) {
    const std::size_t end = std::min(name.find(u'\\'), name.size());
    RegHive* const hive = FindHive(name.substr(0, end));
    RegPath path;
    if (hive == nullptr) throw Failure{ERROR_FILE_NOT_FOUND, "the key's root is not known"};
    RefreshOrFail(*hive);
    SplitKeyPath(name.substr(std::min(end + 1, name.size())), path);
    const RegKey* key = &hive->Root();
    std::u16string whole = hive->Name();
    for (const std::u16string& part : path) {
        key = key->FindKey(part);
        if (key == nullptr) throw Failure{ERROR_FILE_NOT_FOUND, "there is no such key"};
        whole += u'\\' + key->Name();
    }
    WriteRegKey(*key, whole, writer);
}

void WriteOut(const std::string& text, LPCWSTR file) {
    if (file == nullptr) {
        const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
        if (!written || std::fflush(stdout) != 0) FailWithErrno("standard output");
        return;
    }
    const std::string name = NativeName(file);
    const UniqueFd fd(open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (!fd) FailWithErrno(name);
    const LSTATUS code = WriteWholeFile(fd.get(), text);
    if (code != ERROR_SUCCESS) FailWithCode(code, name);
}

}  // namespace

DWORD QvHostRoot(LPWSTR buffer, DWORD size) {
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
    return Guarded(message, size, [file] {
        for (const auto& [hive, entries] : ReadEntries(NativeName(file))) Apply(*hive, entries);
    });
}

BOOL QvHostExport(LPCWSTR key, LPCWSTR file, LPWSTR message, DWORD size) {
    return Guarded(message, size, [key, file] {
        RegTextWriter writer;
        if (key != nullptr) {
            WriteKey(key, writer);
        } else {
            for (const auto& hive : RegHives()) {
                RefreshOrFail(*hive);
                if (!hive->Root().HasKeys() && hive->Root().Values().empty()) continue;
                WriteRegKey(hive->Root(), hive->Name(), writer);
            }
        }
        WriteOut(writer.Take(), file);
    });
}
