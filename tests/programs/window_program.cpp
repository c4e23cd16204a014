// window_program CLASS FILE HOW: a process with one window of class and title CLASS.
//   listen  writes what arrives to FILE, one line each, until it is closed (WM_CLOSE)
//   deaf    never looks at its messages for five seconds
//   die     ends at once, without taking the window away
// Lines: "ready", "data ID BYTES TEXT", "atom MESSAGE TEXT", "change TEXT". Text is ASCII.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace {

bool open = true;

std::string Narrow(const WCHAR* text, std::size_t length) {
    return std::string(text, text + length);
}

void Line(HWND window, const std::string& text) {
    auto& file = *reinterpret_cast<std::ofstream*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    file << text << std::endl;
}

LRESULT Received(HWND window, const COPYDATASTRUCT& data) {
    const auto* text = static_cast<const WCHAR*>(data.lpData);
    const std::size_t units = data.cbData / 2;
    const bool ends = units > 0 && text[units - 1] == 0;
    Line(window, "data " + std::to_string(data.dwData) + ' ' + std::to_string(data.cbData) + ' ' +
                     Narrow(text, ends ? units - 1 : units));
    return 7;
}

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_COPYDATA)
        return Received(window, *reinterpret_cast<const COPYDATASTRUCT*>(lparam));
    if (message == WM_DEVMODECHANGE) {
        const auto* text = reinterpret_cast<const WCHAR*>(lparam);
        Line(window, "change " + Narrow(text, std::char_traits<WCHAR>::length(text)));
        return 0;
    }
    if (message == WM_DESTROY) open = false;
    if (message == 1024) {
        WCHAR text[256];
        const UINT length = GlobalGetAtomNameW(static_cast<ATOM>(wparam), text, 256);
        GlobalDeleteAtom(static_cast<ATOM>(wparam));
        Line(window, "atom " + std::to_string(message) + ' ' + Narrow(text, length));
        return 0;
    }
    return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: window_program CLASS FILE listen|deaf|die\n", stderr);
        return 2;
    }
    const std::string narrow = argv[1];
    const std::string how = argv[3];
    const std::basic_string<WCHAR> name(narrow.begin(), narrow.end());
    WNDCLASSW window_class{};
    window_class.lpfnWndProc = Procedure;
    window_class.lpszClassName = name.c_str();
    RegisterClassW(&window_class);
    std::ofstream file(argv[2], std::ios::binary);
    const HWND window = CreateWindowExW(0, name.c_str(), name.c_str(), 0, 0, 0, 0, 0, nullptr,
                                        nullptr, nullptr, nullptr);
    if (window == nullptr) return 1;
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&file));
    Line(window, "ready");
    if (how == "die") std::_Exit(0);
    if (how == "deaf") Sleep(5000);
    for (MSG message; how == "listen" && open; Sleep(1)) {
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
    }
    return 0;
}
