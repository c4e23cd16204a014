// A dialog program whose answers a test sets.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "support/fresh_host_root.h"

namespace test {

/// A script in a fresh host root, named by QV_HOST_DIALOG; the end takes both away.
class DialogProgram {
  public:
    DialogProgram() {
        const std::string script = Folder() + "/dialog";
        std::ofstream(script) << "#!/bin/sh\ncd '" << Folder()
                              << "'\nprintf '%s\\n' \"$@\" >asked\n"
                              << "if [ \"$1\" = overwrite ]; then [ ! -e keep ]; exit; fi\n"
                              << "cat answer\nexit $(cat code)\n";
        std::filesystem::permissions(script, std::filesystem::perms::owner_all);
        std::filesystem::create_directories(DriveC());
        setenv("QV_HOST_DIALOG", script.c_str(), 1);
        Answer("");
    }
    ~DialogProgram() { unsetenv("QV_HOST_DIALOG"); }
    DialogProgram(const DialogProgram&) = delete;
    DialogProgram& operator=(const DialogProgram&) = delete;

    const std::string& Folder() const { return root_.Folder(); }
    std::string DriveC() const { return Folder() + "/drive_c/"; }
    void Answer(const std::string& line, int exit_code = 0) {
        std::ofstream(Folder() + "/answer") << line << "\n";
        std::ofstream(Folder() + "/code") << exit_code;
    }
    void RefuseOverwriting() { std::ofstream(Folder() + "/keep") << ""; }
    /// The last arguments, one per line.
    std::string Asked() const {
        std::ostringstream text;
        text << std::ifstream(Folder() + "/asked").rdbuf();
        return text.str();
    }

  private:
    FreshHostRoot root_;
};

}  // namespace test
