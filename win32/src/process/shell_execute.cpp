// ShellExecuteW: finds the program that a name means, and the code for a failure.
#include <windows.h>

#include <shellapi.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/os_error.h"
#include "process/command_line.h"
#include "process/program_start.h"
#include "root/host_path.h"
#include "text/case_fold.h"
#include "text/host_text.h"

using namespace host;

namespace {

// The outcome in both forms: a Win32 code, and the number that ShellExecute returns.
struct Outcome {
    DWORD error = NO_ERROR;
    int code = 42;  // anything above 32 is a success
};

constexpr Outcome kNoAssociation{ERROR_NO_ASSOCIATION, SE_ERR_NOASSOC};

Outcome FailedWith(DWORD error) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
            return {error, SE_ERR_FNF};
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
        case ERROR_DIRECTORY:
            return {error, SE_ERR_PNF};
        case ERROR_NOT_ENOUGH_MEMORY:
            return {error, SE_ERR_OOM};
        default:
            return {error, SE_ERR_ACCESSDENIED};
    }
}

bool IsFile(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

// A name without a folder means a program of the system, never one in the current folder.
bool FindBareName(WideView name, std::string& path) {
    std::string narrow;
    if (!NameToUtf8(name, narrow)) return false;
    for (const char* folder : {"/usr/local/bin/", "/usr/bin/", "/bin/"}) {
        path = folder + narrow;
        if (IsFile(path)) return true;
    }
    for (const WideView suffix : {WideView(u""), WideView(u".exe")}) {
        const WideString full = WideString(u"C:\\Windows\\System32\\").append(name).append(suffix);
        HostPath found = ToHostPath(full.c_str());
        path = std::move(found.path);
        if (found.error == NO_ERROR && IsFile(path)) return true;
    }
    return false;
}

Outcome FindProgram(WideView name, std::string& path) {
    if (name.size() >= 2 && name.front() == u'"' && name.back() == u'"') {
        name = name.substr(1, name.size() - 2);
    }
    if (name.empty()) return FailedWith(ERROR_FILE_NOT_FOUND);
    if (name.find_first_of(u"\\/:") == WideView::npos) {
        return FindBareName(name, path) ? Outcome() : FailedWith(ERROR_FILE_NOT_FOUND);
    }
    HostPath full = ToHostPath(WideString(name).c_str());
    if (full.error != NO_ERROR) return FailedWith(full.error);
    path = std::move(full.path);
    struct stat info;
    if (stat(path.c_str(), &info) != 0) return FailedWith(PathError(errno, path));
    // No program is known that opens folders and documents.
    return S_ISREG(info.st_mode) && access(path.c_str(), X_OK) == 0 ? Outcome() : kNoAssociation;
}

// Finds the folder to start in; empty when none was given.
Outcome FindFolder(WideView name, std::string& path) {
    if (name.empty()) return Outcome();
    HostPath full = ToHostPath(WideString(name).c_str());
    struct stat info;
    const bool is_folder =
        full.error == NO_ERROR && stat(full.path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
    path = std::move(full.path);
    return is_folder ? Outcome() : FailedWith(ERROR_DIRECTORY);
}

Outcome CheckVerb(WideView verb) {
    if (verb.empty() || SameFileName(verb, u"open")) return Outcome();
    if (!SameFileName(verb, u"runas")) return kNoAssociation;
    // This host cannot raise a program's rights. A program that has them already passes them on.
    return geteuid() == 0 ? Outcome() : FailedWith(ERROR_ACCESS_DENIED);
}

Outcome Start(LPCWSTR verb, LPCWSTR file, LPCWSTR parameters, LPCWSTR directory) {
    Outcome outcome = CheckVerb(ViewOf(verb));
    std::vector<std::string> arguments(1);
    std::string folder;
    if (outcome.error == NO_ERROR) outcome = FindProgram(ViewOf(file), arguments[0]);
    if (outcome.error == NO_ERROR) outcome = FindFolder(ViewOf(directory), folder);
    if (outcome.error != NO_ERROR) return outcome;
    if (arguments[0][0] != '/') {
        char current[4096];
        if (getcwd(current, sizeof current) == nullptr) return FailedWith(ErrorFromErrno(errno));
        arguments[0] = std::string(current) + '/' + arguments[0];
    }
    for (const WideString& argument : SplitArguments(ViewOf(parameters), QuoteRule::kProgram)) {
        arguments.push_back(ToUtf8(argument));
    }
    const int error = StartProgram(arguments, folder);
    if (error == ENOEXEC) return kNoAssociation;
    return error == 0 ? Outcome() : FailedWith(ErrorFromErrno(error));
}

}  // namespace

HINSTANCE ShellExecuteW(HWND, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters, LPCWSTR directory,
                        INT) {
    const Outcome outcome = Start(verb, file, parameters, directory);
    if (outcome.error != NO_ERROR) SetLastError(outcome.error);
    return reinterpret_cast<HINSTANCE>(static_cast<INT_PTR>(outcome.code));
}

BOOL ShellExecuteExW(SHELLEXECUTEINFOW* info) {
    if (info == nullptr || info->cbSize != sizeof *info) return Fail(ERROR_INVALID_PARAMETER);
    const Outcome outcome =
        Start(info->lpVerb, info->lpFile, info->lpParameters, info->lpDirectory);
    info->hInstApp = reinterpret_cast<HINSTANCE>(static_cast<INT_PTR>(outcome.code));
    info->hProcess = nullptr;
    return outcome.error == NO_ERROR ? TRUE : Fail(outcome.error);
}
