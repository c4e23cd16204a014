// forks: processes that are forked from a user of the library. WRITERS of them append RECORDS
// numbered records each to FILE, which the verb `check` then looks at. After that CHILDREN are
// forked one after the other while eight threads of the parent are busy; each must answer.
#include <atomic>
#include <cstdio>
#include <thread>

#include "log_file/log_recorder.h"
#include "numbered_records.h"
#include "processes.h"
#include "verbs.h"

namespace stress {

namespace {

const WCHAR* const kKey = TEXT("Software\\Forks");

// A call of each kind that holds a lock of the library or of the host. False when one fails.
bool CallAll(std::uint32_t number) {
    LogNumber({0, number});
    Mox::GetLogger()->Log('X', TEXT("forks"), 1, TEXT("error"), UnicodeString(), nullptr, 0);
    HKEY key = nullptr;
    const bool opened = RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_READ, nullptr,
                                        &key, nullptr) == ERROR_SUCCESS;
    if (opened) RegCloseKey(key);
    const HANDLE memory =
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, TEXT("forks"));
    void* const view = MapViewOfFile(memory, FILE_MAP_ALL_ACCESS, 0, 0, 0);
    const bool mapped = view != nullptr && UnmapViewOfFile(view) && CloseHandle(memory);
    const bool set = SetEnvironmentVariableW(TEXT("FORKS"), TEXT("1")) != FALSE;
    return Mox::GetLogger()->GetLastError() == UnicodeString(TEXT("error")) && opened && mapped &&
           set;
}

void Answer(HWND of_parent) {
    alarm(20);
    const HWND own = CreateWindowExW(0, TEXT("Forks"), TEXT(""), 0, 0, 0, 0, 0, HWND_MESSAGE,
                                     nullptr, nullptr, nullptr);
    const bool parents = GetWindowLongPtrW(of_parent, GWLP_USERDATA) == 0 &&
                         GetLastError() == ERROR_INVALID_WINDOW_HANDLE;
    const bool itself = GetCurrentProcessId() == static_cast<DWORD>(getpid()) &&
                        GetCurrentThreadId() == static_cast<DWORD>(gettid());
    std::_Exit(own != nullptr && own != of_parent && parents && itself && CallAll(1) ? 0 : 1);
}

int AnswersWhileBusy(std::uint32_t children) {
    WNDCLASSW described{};
    described.lpfnWndProc = DefWindowProcW;
    described.lpszClassName = TEXT("Forks");
    RegisterClassW(&described);
    const HWND window = CreateWindowExW(0, TEXT("Forks"), TEXT(""), 0, 0, 0, 0, 0, HWND_MESSAGE,
                                        nullptr, nullptr, nullptr);
    std::atomic<bool> done = false;
    std::vector<std::thread> threads(8);
    for (std::thread& thread : threads) {
        thread = std::thread([&done] {
            for (std::uint32_t i = 1; !done; ++i) CallAll(i);
        });
    }
    int answers = 0;
    for (std::uint32_t i = 0; i < children; ++i) {
        const pid_t child = fork();
        if (child == 0) Answer(window);
        answers += EndsWell(child) ? 1 : 0;
    }
    done = true;
    for (std::thread& thread : threads) thread.join();
    return answers;
}

}  // namespace

int Forks(const TArguments& arguments) {
    const auto number = [&](std::size_t at) {
        return static_cast<std::uint32_t>(std::stoul(arguments[at]));
    };
    Mox::TLogger& logger = *Mox::GetLogger();
    logger.Init();
    Mox::TLogRecorder recorder;
    if (!recorder.Open(arguments[0].c_str(), 5 << 20)) return 1;
    Mox::SetLogRecorder(&recorder);
    std::vector<pid_t> writers(number(1));
    for (std::uint32_t w = 0; w < writers.size(); ++w) {
        writers[w] = Start([&] {
            for (std::uint32_t i = 1; i <= number(2); ++i) LogNumber({w, i});
        });
    }
    for (const pid_t writer : writers) {
        if (!EndsWell(writer)) Fail("a forked writer failed");
    }
    // The busy threads log into another file.
    if (!recorder.Open((arguments[0] + ".busy").c_str(), 1 << 20)) return 1;
    const int answers = AnswersWhileBusy(number(3));
    std::printf("children of a busy parent: %u, answers: %d\n", number(3), answers);
    std::fflush(stdout);
    std::_Exit(answers == static_cast<int>(number(3)) ? 0 : 1);
}

}  // namespace stress
