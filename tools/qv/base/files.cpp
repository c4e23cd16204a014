#include "base/files.h"

#include <cstdio>
#include <limits>

#include "base/host.h"
#include "mox_classes/containers/streams.h"
#include "mox_classes/text/sys_error.h"

namespace qv {

namespace {

constexpr unsigned short kRead = 0x40;  // others may write meanwhile
constexpr unsigned short kReplace = 0xFFFF;

std::string ReadStandardInput() {
    std::string bytes;
    char buffer[8192];
    for (std::size_t got = 0; (got = std::fread(buffer, 1, sizeof(buffer), stdin)) > 0;)
        bytes.append(buffer, got);
    if (std::ferror(stdin) != 0) throw Failure("cannot read standard input", ExitCode::kCannotOpen);
    return bytes;
}

[[noreturn]] void CannotOpen(const std::string& name, const UnicodeString& reason) {
    throw Failure("'" + OneLine(FromUtf8(name)) + "': " + OneLine(reason.Trim()),
                  ExitCode::kCannotOpen);
}

// `shown` is the file's name in messages.
void WriteFileNamed(const std::string& name, const std::string& bytes, const std::string& shown) {
    if (bytes.size() > std::numeric_limits<int>::max())
        throw Failure("'" + shown + "' would be too long");
    try {
        Classes::TFileStream file(FromUtf8(name), kReplace);
        file.WriteBuffer(bytes.data(), static_cast<int>(bytes.size()));
    } catch (const UnicodeString& message) {
        CannotOpen(shown, message);
    }
}

}  // namespace

std::string ReadAll(const std::string& name) {
    if (name == kStandardStream) return ReadStandardInput();
    try {
        Classes::TFileStream file(FromUtf8(name), kRead);
        const long long size = file.GetSize();
        if (size > std::numeric_limits<int>::max())
            throw Failure("'" + name + "' is too long", ExitCode::kCannotOpen);
        std::string bytes(static_cast<std::size_t>(size), '\0');
        if (!bytes.empty()) file.ReadBuffer(bytes.data(), static_cast<int>(size));
        return bytes;
    } catch (const UnicodeString& message) {
        CannotOpen(name, message);
    }
}

void WriteAll(const std::string& name, const std::string& bytes) {
    if (name == kStandardStream) return Print(bytes);
    WriteFileNamed(name, bytes, name);
}

void WriteWhole(const std::string& name, const std::string& bytes) {
    if (name == kStandardStream) return Print(bytes);
    const std::string fresh = name + ".new-" + std::to_string(GetCurrentProcessId());
    const UnicodeString source = FromUtf8(fresh);
    try {
        WriteFileNamed(fresh, bytes, name);
    } catch (const Failure&) {
        DeleteFileW(source.t_str());
        throw;
    }
    const DWORD code = MoveInPlace(source, FromUtf8(name));
    if (code == NO_ERROR) return;
    DeleteFileW(source.t_str());
    CannotOpen(name, Mox::GetSysError(code, true));
}

}  // namespace qv
