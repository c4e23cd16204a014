#include "base/files.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <limits>

#include "base/host.h"
#include "mox_classes/containers/streams.h"
#include "mox_classes/memory/handles.h"
#include "mox_classes/text/sys_error.h"

namespace qv {

namespace {

constexpr unsigned short kReplace = 0xFFFF;
constexpr DWORD kPipeEnded = 109;  // Windows says so where Linux reads no bytes

std::string ReadStandardInput() {
    std::string bytes;
    char buffer[8192];
    for (std::size_t got = 0; (got = std::fread(buffer, 1, sizeof(buffer), stdin)) > 0;)
        bytes.append(buffer, got);
    if (std::ferror(stdin) != 0) throw Failure("cannot read standard input", ExitCode::kCannotOpen);
    return bytes;
}

// Pipes, and files that the system makes up, do not tell their size.
std::string ReadToEnd(HANDLE file) {
    constexpr std::size_t kStep = 1 << 16;
    constexpr std::size_t kMost = std::numeric_limits<int>::max();
    std::string bytes;
    for (DWORD got = 1; got > 0;) {
        const std::size_t size = bytes.size();
        if (size > kMost - kStep) throw UnicodeString(TEXT("the file is too long"));
        bytes.resize(size + kStep);
        if (!ReadFile(file, bytes.data() + size, kStep, &got, nullptr)) {
            if (GetLastError() != kPipeEnded) throw Mox::GetSysError(GetLastError(), true);
            got = 0;
        }
        bytes.resize(size + got);
    }
    return bytes;
}

[[noreturn]] void RefuseFile(const std::string& name) {
    throw Failure(Quoted(name) + " exists; --force replaces it");
}

int SizeOf(const std::string& name, const std::string& bytes) {
    if (bytes.size() > std::numeric_limits<int>::max())
        throw Failure(Quoted(name) + " would be too long");
    return static_cast<int>(bytes.size());
}

void WriteBytes(HANDLE file, const std::string& bytes, int size) {
    DWORD done = 0;
    if (!WriteFile(file, bytes.data(), static_cast<DWORD>(size), &done, nullptr))
        throw Mox::GetSysError(GetLastError(), true);
}

// A file beside another one, with the same owner and permissions, for what is to take its place.
// Gone with the object until it has.
class Replacement {
  public:
    // Throws the platform's message.
    explicit Replacement(const UnicodeString& name) : name_(name) {
        const std::string added = ".new-" + std::to_string(GetCurrentProcessId()) + "-";
        for (int i = 0; !file_; ++i) {
            fresh_ = name + FromUtf8(added + std::to_string(i));
            file_ = System::TFileHandle(CreateFileW(fresh_.t_str(), GENERIC_WRITE, 0, nullptr,
                                                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
            const DWORD code = GetLastError();
            if (!file_ && code != ERROR_FILE_EXISTS) throw Mox::GetSysError(code, true);
        }
        TakeAccess(fresh_, name);
    }
    ~Replacement() {
        if (fresh_.IsEmpty()) return;
        file_ = System::TFileHandle();
        DeleteFileW(fresh_.t_str());
    }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    void Write(const std::string& bytes, int size) { WriteBytes(file_.Get(), bytes, size); }
    // Its bytes are on the disk first: a power failure leaves the old file or the new one. Returns
    // 0 or the Win32 error code.
    DWORD TakePlace(bool replace) {
        DWORD code = FlushToDisk(fresh_, file_.Get());
        file_ = System::TFileHandle();
        if (code == NO_ERROR) code = MoveInPlace(fresh_, name_, replace);
        if (code == NO_ERROR) fresh_ = UnicodeString();
        return code;
    }

  private:
    UnicodeString name_, fresh_;
    System::TFileHandle file_;
};

}  // namespace

void CannotOpen(const std::string& name, const UnicodeString& reason) {
    throw Failure(Quoted(name) + ": " + OneLine(reason.Trim()), ExitCode::kCannotOpen);
}

void CheckFileName(const std::string& name) {
    const UnicodeString wide = FromUtf8(name);
    if (ToUtf8(wide) != name) CannotOpen(name, TEXT("the name is not UTF-8"));
    if (FindFile(wide).kind == FileKind::kFolder)
        throw Failure(Quoted(wide) + " is a folder", ExitCode::kCannotOpen);
}

std::string ReadAll(const std::string& name) {
    if (name == kStandardStream) return ReadStandardInput();
    CheckFileName(name);
    try {
        return ReadToEnd(Classes::TFileStream(FromUtf8(name), kSharedRead).GetHandle());
    } catch (const UnicodeString& message) {
        CannotOpen(name, message);
    }
}

void WriteAll(const std::string& name, const std::string& bytes) {
    if (name == kStandardStream) return Print(bytes);
    const int size = SizeOf(name, bytes);
    CheckFileName(name);
    try {
        const Classes::TFileStream file(FromUtf8(name), kReplace);
        WriteBytes(file.GetHandle(), bytes, size);
    } catch (const UnicodeString& message) {
        CannotOpen(name, message);
    }
}

void WriteWhole(const std::string& name, const std::string& bytes) {
    WriteOutput({name, true}, bytes);
}

void AddForceOption(CLI::App& command, Output& output) {
    command.add_flag("--force", output.force, "Replace an output file that exists");
}

void RefuseExisting(const Output& output) {
    if (output.name == kStandardStream) return;
    CheckFileName(output.name);
    if (output.force) return;
    if (FindFile(FromUtf8(output.name)).kind == FileKind::kFile) RefuseFile(output.name);
}

void WriteOutput(const Output& output, const std::string& bytes) {
    RefuseExisting(output);
    const FilePlace place = FindFile(FromUtf8(output.name));
    if (output.name == kStandardStream || place.kind == FileKind::kStream)
        return WriteAll(output.name, bytes);
    const int size = SizeOf(output.name, bytes);
    try {
        Replacement fresh(place.name);
        fresh.Write(bytes, size);
        const DWORD code = fresh.TakePlace(output.force);
        if (code == ERROR_FILE_EXISTS || code == ERROR_ALREADY_EXISTS) RefuseFile(output.name);
        if (code != NO_ERROR) throw Mox::GetSysError(code, true);
    } catch (const UnicodeString& message) {
        CannotOpen(output.name, message);
    }
}

}  // namespace qv
