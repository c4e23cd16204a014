// Windows, messages, atoms and program starts, between real processes, on both hosts.
#include <windows.h>

#include <gtest/gtest.h>
#include <shellapi.h>

#include <atomic>
#include <thread>

#include "support/fresh_host_root.h"
#include "support/last_error.h"
#include "support/second_process.h"
#include "support/wine_gap.h"

using test::ErrorUnless;

namespace {

constexpr const WCHAR* kClass = TEXT("QvCounting");

LRESULT CALLBACK CountingProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_NCCREATE) {
        const auto* create = reinterpret_cast<const CREATESTRUCTW*>(lparam);
        SetWindowLongPtrW(window, GWLP_USERDATA,
                          reinterpret_cast<LONG_PTR>(create->lpCreateParams));
    }
    if (message == WM_USER + 1) {
        *reinterpret_cast<int*>(GetWindowLongPtrW(window, GWLP_USERDATA)) +=
            static_cast<int>(wparam);
        return 11;
    }
    return DefWindowProcW(window, message, wparam, lparam);
}

// The class stays for the tests that follow.
ATOM RegisterCounting(const WCHAR* name) {
    WNDCLASSW description{};
    description.lpfnWndProc = CountingProcedure;
    description.lpszClassName = name;
    return RegisterClassW(&description);
}

class Windows : public testing::Test {
  protected:
    Windows() { RegisterCounting(kClass); }
    ~Windows() override {
        if (window != nullptr) DestroyWindow(window);
    }
    HWND Create(const WCHAR* title, HWND parent = nullptr) {
        return CreateWindowExW(0, kClass, title, 0, 0, 0, 0, 0, parent, nullptr, nullptr, &sum);
    }

    test::FreshHostRoot root;
    HWND window = nullptr;
    int sum = 0;
};

TEST_F(Windows, AreFoundByClassAndTitleWithoutCase) {
    EXPECT_EQ(RegisterCounting(TEXT("qvCOUNTING")), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_CLASS_ALREADY_EXISTS));
    EXPECT_EQ(CreateWindowExW(0, TEXT("QvNoClass"), nullptr, 0, 0, 0, 0, 0, nullptr, nullptr,
                              nullptr, nullptr),
              nullptr);
    window = Create(TEXT("A title"));
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(FindWindowW(TEXT("QVCOUNTING"), nullptr), window);
    EXPECT_EQ(FindWindowW(nullptr, TEXT("a TITLE")), window);
    EXPECT_EQ(FindWindowW(kClass, TEXT("other")), nullptr);
    std::thread([this] { EXPECT_EQ(ErrorUnless(DestroyWindow(window)), 5u); }).join();
    EXPECT_TRUE(DestroyWindow(window));
    test::ExpectExceptOnWine(ErrorUnless(DestroyWindow(window)) == ERROR_INVALID_WINDOW_HANDLE,
                             "a window that is gone is not one of another thread");
    window = nullptr;
    EXPECT_EQ(FindWindowW(kClass, nullptr), nullptr);
    const HWND quiet = Create(TEXT("quiet"), HWND_MESSAGE);
    EXPECT_EQ(FindWindowW(kClass, nullptr), quiet);
    window = Create(TEXT("loud"));
    EXPECT_EQ(FindWindowW(kClass, nullptr), window) << "before message-only ones";
    EXPECT_TRUE(DestroyWindow(quiet));
}

TEST_F(Windows, PostedMessagesWaitInOrderAndSentOnesDoNot) {
    window = Create(TEXT("w"));
    const HWND other = Create(TEXT("other"));
    for (const WPARAM value : {1u, 2u}) {
        EXPECT_TRUE(PostMessageW(window, WM_USER + static_cast<UINT>(value), value, 0));
    }
    EXPECT_EQ(SendMessageW(window, WM_USER + 1, 10, 0), 11);
    EXPECT_EQ(sum, 10);
    MSG message;
    EXPECT_FALSE(PeekMessageW(&message, other, 0, 0, PM_REMOVE));
    EXPECT_FALSE(PeekMessageW(&message, nullptr, WM_USER + 3, WM_USER + 9, PM_REMOVE));
    EXPECT_TRUE(PeekMessageW(&message, window, WM_USER + 2, WM_USER + 2, PM_NOREMOVE));
    EXPECT_EQ(message.wParam, 2u);
    for (const UINT number : {WM_USER + 1, WM_USER + 2}) {
        ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
        EXPECT_EQ(message.message, number);
        DispatchMessageW(&message);
    }
    EXPECT_EQ(sum, 11);
    EXPECT_TRUE(DestroyWindow(other));
    EXPECT_FALSE(PeekMessageW(&message, window, 0, 0, PM_REMOVE));
    COPYDATASTRUCT data{};
    EXPECT_EQ(ErrorUnless(PostMessageW(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data))),
              static_cast<DWORD>(ERROR_MESSAGE_SYNC_ONLY));
    EXPECT_EQ(ErrorUnless(SendMessageTimeoutW(nullptr, WM_USER, 0, 0, SMTO_NORMAL, 500, nullptr)),
              static_cast<DWORD>(ERROR_INVALID_WINDOW_HANDLE));
}

TEST_F(Windows, AThreadThatWaitsForAnAnswerAnswersItself) {
    window = Create(TEXT("w"));
    std::atomic<bool> answered{false};
    std::thread other([&] {
        EXPECT_EQ(SendMessageW(window, WM_USER + 1, 5, 0), 11);
        answered = true;
    });
    const test::WindowProgram deaf("QvDeaf", "deaf");
    DWORD_PTR result = 0;
    SetLastError(NO_ERROR);
    EXPECT_EQ(SendMessageTimeoutW(deaf.Window(), WM_USER, 0, 0, SMTO_NORMAL, 500, &result), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_TIMEOUT));
    EXPECT_EQ(sum, 5);
    // Were it not answered meanwhile, the test would fail above, but end.
    for (MSG message; !answered; Sleep(1)) PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);
    other.join();
}

TEST_F(Windows, ADeadProcessLeavesNoWindow) {
    const test::WindowProgram dead("QvDead", "die");
    for (int i = 0; i < 100 && dead.Window() != nullptr; ++i) Sleep(20);
    EXPECT_EQ(dead.Window(), nullptr);
    EXPECT_EQ(SendMessageW(reinterpret_cast<HWND>(ULONG_PTR{0x7FFF0002}), WM_USER, 0, 0), 0);
}

TEST_F(Windows, BroadcastsAndMegabytesReachOtherProcessesWhole) {
    const test::WindowProgram listener("QvBroadcast", "listen");
    DWORD_PTR result = 0;
    EXPECT_NE(
        SendMessageTimeoutW(HWND_BROADCAST, WM_DEVMODECHANGE, 0,
                            reinterpret_cast<LPARAM>(TEXT("Fax 1")), SMTO_NORMAL, 1000, &result),
        0);
    std::basic_string<WCHAR> text(900000, 'x');
    COPYDATASTRUCT data{9, static_cast<DWORD>((text.size() + 1) * sizeof(WCHAR)), text.data()};
    EXPECT_NE(SendMessageTimeoutW(listener.Window(), WM_COPYDATA, 0,
                                  reinterpret_cast<LPARAM>(&data), SMTO_NORMAL, 20000, &result),
              0);
    EXPECT_EQ(result, 7u);
    const std::vector<std::string> lines = listener.Lines(3);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[1], "change Fax 1");
    EXPECT_EQ(lines[2].size(), std::string("data 9 1800002 ").size() + text.size());
}

TEST(Atoms, AreCountedAndCompareWithoutCase) {
    const test::FreshHostRoot root;
    const ATOM atom = GlobalAddAtomW(TEXT("Qv Atom"));
    EXPECT_GE(atom, 0xC000);
    EXPECT_EQ(GlobalAddAtomW(TEXT("qv atom")), atom);
    WCHAR name[256];
    EXPECT_EQ(GlobalDeleteAtom(atom), 0);
    EXPECT_EQ(GlobalGetAtomNameW(atom, name, 256), 7u);
    EXPECT_EQ(std::basic_string<WCHAR>(name), TEXT("Qv Atom"));
    EXPECT_EQ(GlobalDeleteAtom(atom), 0);
    EXPECT_EQ(ErrorUnless(GlobalGetAtomNameW(atom, name, 256)), 6u);
    EXPECT_EQ(GlobalDeleteAtom(atom), atom);
    EXPECT_EQ(GlobalAddAtomW(TEXT("#123")), 123);
    EXPECT_EQ(GlobalGetAtomNameW(123, name, 256), 4u);
    EXPECT_EQ(std::basic_string<WCHAR>(name), TEXT("#123"));
    EXPECT_EQ(GlobalAddAtomW(std::basic_string<WCHAR>(256, 'a').c_str()), 0);
    EXPECT_EQ(GlobalAddAtomW(TEXT("")), 0);
    const ATOM longest = GlobalAddAtomW(std::basic_string<WCHAR>(255, 'a').c_str());
    EXPECT_EQ(GlobalGetAtomNameW(longest, name, 256), 255u);
    GlobalDeleteAtom(longest);
    const UINT number = RegisterWindowMessageW(TEXT("QvRegistered"));
    EXPECT_GE(number, 0xC000u);
    EXPECT_EQ(RegisterWindowMessageW(TEXT("qvregistered")), number);
    EXPECT_NE(RegisterWindowMessageW(TEXT("QvRegistered2")), number);
}

TEST(Programs, ParametersAreSplitByTheRules) {
    const test::FreshHostRoot root;
    const test::ScratchFolder folder;
    ASSERT_TRUE(test::Start("argument_writer",
                            folder.Name("out") + " a\\\\b \"c d\" \\\"e\"\" \"f\\\\\" \"\" ;$(x)"));
    EXPECT_EQ(test::Lines(folder.File("out"), 6),
              (std::vector<std::string>{"<a\\\\b>", "<c d>", "<\"e>", "<f\\>", "<>", "<;$(x)>"}));
    std::ofstream(folder.File("x.qvnotype")) << "text";
    const struct {
        std::string file;
        INT_PTR number;
    } cases[] = {{"qv_no_such_program", SE_ERR_FNF},
                 {folder.Name("missing.exe"), SE_ERR_FNF},
                 {folder.Name("x.qvnotype"), SE_ERR_NOASSOC},
                 {'"' + folder.Name("x.qvnotype") + '"', SE_ERR_NOASSOC}};
    for (const auto& c : cases) {
        EXPECT_EQ(
            reinterpret_cast<INT_PTR>(ShellExecuteW(
                nullptr, TEXT("open"), test::Wide(c.file).c_str(), nullptr, nullptr, SW_HIDE)),
            c.number)
            << c.file;
    }
}

}  // namespace
