// Programs of tests/programs as processes of their own, and what they write.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>
#include <shellapi.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace test {

/// A folder that goes with the test.
class ScratchFolder {
  public:
    ScratchFolder() {
        const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
        path_ = std::filesystem::temp_directory_path() / ("qv_scratch_" + std::to_string(now));
        std::filesystem::create_directories(path_);
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::filesystem::path File(const std::string& name) const { return path_ / name; }
    /// The name as an argument or in XML: slashes on both hosts.
    std::string Name(const std::string& name) const { return File(name).generic_string(); }

  private:
    std::filesystem::path path_;
};

inline std::basic_string<WCHAR> Wide(const std::string& ascii) {
    return std::basic_string<WCHAR>(ascii.begin(), ascii.end());
}

/// The full name of a program that stands beside the test program.
inline std::string Program(const std::string& name) {
    WCHAR own[1024];
    const DWORD length = GetModuleFileNameW(nullptr, own, 1024);
    const std::string full(own, own + length);
    const std::string suffix = full.ends_with(".exe") ? ".exe" : "";
    return full.substr(0, full.find_last_of("\\/") + 1) + name + suffix;
}

/// Starts a program; false, with a failed check, when it does not start.
inline bool Start(const std::string& program, const std::string& parameters) {
    const HINSTANCE result = ShellExecuteW(nullptr, nullptr, Wide(Program(program)).c_str(),
                                           Wide(parameters).c_str(), nullptr, SW_HIDE);
    EXPECT_GT(reinterpret_cast<INT_PTR>(result), 32) << program << ' ' << parameters;
    return reinterpret_cast<INT_PTR>(result) > 32;
}

/// The lines of a file once there are `count` of them; what there is after ten seconds.
inline std::vector<std::string> Lines(const std::filesystem::path& file, std::size_t count) {
    std::vector<std::string> lines;
    for (int i = 0; i < 500; ++i) {
        lines.clear();
        std::ifstream stream(file, std::ios::binary);
        for (std::string line; std::getline(stream, line);) lines.push_back(line);
        if (lines.size() >= count) break;
        Sleep(20);
    }
    return lines;
}

/// A second process with a window; closed at the end.
class WindowProgram {
  public:
    WindowProgram(const std::string& window_class, const std::string& how)
        : class_(Wide(window_class)) {
        Start("window_program", window_class + ' ' + folder_.Name("lines") + ' ' + how);
        EXPECT_EQ(Lines(1), std::vector<std::string>{"ready"});
    }
    ~WindowProgram() {
        if (const HWND window = Window()) PostMessageW(window, WM_CLOSE, 0, 0);
    }
    WindowProgram(const WindowProgram&) = delete;
    WindowProgram& operator=(const WindowProgram&) = delete;

    HWND Window() const { return FindWindowW(class_.c_str(), nullptr); }
    std::vector<std::string> Lines(std::size_t count) const {
        return test::Lines(folder_.File("lines"), count);
    }

  private:
    ScratchFolder folder_;
    std::basic_string<WCHAR> class_;
};

}  // namespace test
