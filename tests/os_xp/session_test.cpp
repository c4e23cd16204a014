// The user, his rights, and the entry points that a system need not have.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include "os_xp/activation_context.h"
#include "os_xp/administrator.h"
#include "os_xp/file_access.h"
#include "os_xp/message_filter.h"
#include "os_xp/program_start.h"
#include "os_xp/user_name.h"
#include "support/captured_log.h"
#include "support/string_print.h"
#include "win32/file_fixture.h"

namespace {

using test::Wide;

constexpr DWORD kRead = FILE_GENERIC_READ;
constexpr DWORD kWrite = FILE_GENERIC_WRITE;

bool KernelHas(const char* name) {
    return GetProcAddress(GetModuleHandleW(TEXT("kernel32")), name) != nullptr;
}

class FileAccess : public test::FileTest {};

}  // namespace

TEST(UserName, IsTheSystemsWithoutItsTerminator) {
    WCHAR name[256];
    DWORD size = 256;
    ASSERT_TRUE(GetUserNameW(name, &size));
    DWORD few = size - 1;
    ASSERT_FALSE(GetUserNameW(name, &few));
    EXPECT_EQ(few, size);
    const UnicodeString user = GetUserNameW(false);
    EXPECT_EQ(user, UnicodeString(static_cast<const WCHAR*>(name)));
    EXPECT_EQ(user.Length(), static_cast<int>(size) - 1);

    const UnicodeString full = GetUserNameW(true);
    const int separator = full.Pos(TEXT("\\"));
    EXPECT_GT(separator, 1);
    EXPECT_EQ(full.SubString(separator + 1, full.Length()), user);
}

TEST(Administrator, WhoMayManageServicesIsInTheGroup) {
    EXPECT_TRUE(IsAdmin() || !IsAdmin2());
    // A thread that impersonates its own user answers with its own token.
    const bool before = IsAdmin();
    ASSERT_TRUE(ImpersonateSelf(SecurityImpersonation));
    EXPECT_EQ(IsAdmin(), before);
    ASSERT_TRUE(RevertToSelf());
}

TEST_F(FileAccess, GrantsTheMappedRightsAndTakesOffTheImpersonation) {
    const Wide file = Path(TEXT("a.txt"));
    DWORD granted = test::kUntouched;
    EXPECT_EQ(CheckFileAccess(file.c_str(), granted, GENERIC_READ), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(granted, test::kUntouched);
    MakeFile(file, "a");
    EXPECT_EQ(CheckFileAccess(file.c_str(), granted, GENERIC_READ | GENERIC_WRITE), NO_ERROR);
    EXPECT_EQ(granted, kRead | kWrite);
    EXPECT_EQ(CheckFileAccess(Folder().c_str(), granted, GENERIC_READ), NO_ERROR);
    EXPECT_EQ(granted, kRead);
    HANDLE token = nullptr;
    const BOOL opened = OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token);
    EXPECT_EQ(test::ErrorUnless(opened), DWORD{ERROR_NO_TOKEN});
}

TEST(MessageFilter, LetsAMessageThroughAndNoMore) {
    void* const filter = BeginMessageFilter();
    ASSERT_NE(filter, nullptr);
    EXPECT_EQ(BeginMessageFilter(), filter);
    EXPECT_EQ(ChangeMessageFilter(filter, WM_COPYDATA, MSGFLT_ADD), TRUE);
    EXPECT_EQ(ChangeMessageFilter(filter, WM_COPYDATA, MSGFLT_REMOVE), TRUE);
    EXPECT_EQ(ChangeMessageFilter(nullptr, WM_COPYDATA, MSGFLT_ADD), FALSE);
    EndMessageFilter();
    EndMessageFilter();
    EXPECT_EQ(BeginMessageFilter(), filter);
    EndMessageFilter();
}

// The shield of a button that starts something elevated.
TEST(Shield, TheButtonIsToldToShowIt) {
    WNDCLASSW window_class{};
    window_class.lpfnWndProc = DefWindowProcW;
    window_class.lpszClassName = TEXT("QV Test Button");
    ASSERT_NE(RegisterClassW(&window_class), 0);
    const HWND button = CreateWindowExW(0, window_class.lpszClassName, TEXT(""), 0, 0, 0, 0, 0,
                                        HWND_MESSAGE, nullptr, nullptr, nullptr);
    ASSERT_NE(button, nullptr);
    ShowShieldIcon(button);
    MSG message{};
    ASSERT_TRUE(PeekMessageW(&message, button, BCM_SETSHIELD, BCM_SETSHIELD, PM_REMOVE));
    EXPECT_EQ(message.wParam, WPARAM{0});
    EXPECT_EQ(message.lParam, LPARAM{TRUE});
    EXPECT_TRUE(DestroyWindow(button));
    EXPECT_EQ(GetShieldIcon(), nullptr);
}

TEST(ActivationContext, FallsBackToTheCurrentOne) {
    if (!KernelHas("CreateActCtxW")) GTEST_SKIP() << "no activation contexts on this host";
    test::CapturedLog log;
    // No context is active in this thread, which null stands for.
    EXPECT_EQ(CreateActiveContext(TEXT("C:\\no such module.dll")), nullptr);
    EXPECT_TRUE(log.Has('X', TEXT("\tCreateActCtx() failed: [")));
    EXPECT_EQ(log.Entries().size(), 1u);
    ReleaseActiveContext(nullptr);
    EXPECT_EQ(log.Entries().size(), 1u);
}

TEST(ActivationContext, TheLogTellsThatThereAreNone) {
    if (KernelHas("CreateActCtxW")) GTEST_SKIP() << "this host has activation contexts";
    test::CapturedLog log;
    EXPECT_EQ(CreateActiveContext(TEXT("a.dll")), INVALID_HANDLE_VALUE);
    ReleaseActiveContext(INVALID_HANDLE_VALUE);
    for (const WCHAR* name : {TEXT("\t_CreateActCtx"), TEXT("_ReleaseActCtx")}) {
        const UnicodeString text = UnicodeString(name) + TEXT(" is NULL. This system does not ") +
                                   TEXT("support Windows Theme System");
        EXPECT_TRUE(log.Has('*', text));
    }
    EXPECT_EQ(log.Entries().size(), 2u);
    EXPECT_EQ(log.Entries()[0].source, TEXT("os_xp"));
}
