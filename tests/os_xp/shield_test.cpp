// The shield of a button that starts something elevated.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include "os_xp/program_start.h"

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
    EXPECT_TRUE(UnregisterClassW(window_class.lpszClassName, nullptr));
    EXPECT_EQ(GetShieldIcon(), nullptr);
}
