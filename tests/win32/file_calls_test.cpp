// Calls on files and folders, one after the other, as the table file_calls.txt has them.
#include <functional>
#include <map>
#include <sstream>
#include <thread>

#include "support/page_text.h"
#include "win32/file_fixture.h"

#include <minwinbase.h>

using namespace test;

namespace {

using Words = std::vector<std::string>;

class FileCalls : public FileTest {
  protected:
    // A leading "*" stands for the folder of the test; "<U+00E4>" for a unit that is not ASCII.
    Wide Name(const std::string& word) const {
        Wide name = word.starts_with('*') ? Folder() : Wide();
        for (std::size_t i = name.empty() ? 0 : 1; i < word.size(); ++i) {
            const bool code = word.compare(i, 3, "<U+") == 0;
            name += static_cast<WCHAR>(code ? std::stoul(word.substr(i + 3, 4), nullptr, 16)
                                            : static_cast<unsigned char>(word[i]));
            if (code) i += 7;
        }
        return name;
    }
    static DWORD Letters(const std::string& word, DWORD read, DWORD write) {
        return (word.find('r') != word.npos ? read : 0) | (word.find('w') != word.npos ? write : 0);
    }
    static long long Number(const std::string& word) { return word.empty() ? 0 : std::stoll(word); }
    static std::string Said(bool worked, const std::string& answer = "done") {
        return worked ? answer : "error " + std::to_string(GetLastError());
    }
    HANDLE& Handle(const std::string& letter) {
        return handles_.try_emplace(letter, INVALID_HANDLE_VALUE).first->second;
    }

    // A file that is opened has a letter; 183 is the last error of a success.
    std::string Open(const Words& w) {
        const HANDLE file =
            CreateFileW(Name(w[1]).c_str(), Letters(w[2], GENERIC_READ, GENERIC_WRITE),
                        Letters(w[3], FILE_SHARE_READ, FILE_SHARE_WRITE), nullptr,
                        static_cast<DWORD>(Number(w[4])), FILE_ATTRIBUTE_NORMAL, nullptr);
        const DWORD code = GetLastError();
        if (file == INVALID_HANDLE_VALUE) return Said(false);
        Handle(w[0]) = file;
        return code == ERROR_ALREADY_EXISTS ? "done 183" : "done";
    }
    // At the position, or at an offset of its own that leaves the position alone.
    std::string Transfer(const Words& w, bool write) {
        OVERLAPPED at{};
        at.Offset = static_cast<DWORD>(Number(w[2]));
        at.OffsetHigh = static_cast<DWORD>(Number(w[2]) >> 32);
        OVERLAPPED* const place = w[2].empty() ? nullptr : &at;
        std::string text = write ? w[1] : std::string(static_cast<std::size_t>(Number(w[1])), '?');
        const auto size = static_cast<DWORD>(text.size());
        DWORD done = 9;
        const BOOL worked = write ? WriteFile(Handle(w[0]), text.data(), size, &done, place)
                                  : ReadFile(Handle(w[0]), text.data(), size, &done, place);
        EXPECT_TRUE(worked || done == 0);
        return Said(worked, write ? std::to_string(done) : '\'' + text.substr(0, done) + '\'');
    }
    // The low half and, where one was given, the high half.
    std::string Seek(const Words& w) {
        LONG high = static_cast<LONG>(Number(w[2]));
        const DWORD low =
            SetFilePointer(Handle(w[0]), static_cast<LONG>(Number(w[1])),
                           w[2].empty() ? nullptr : &high, static_cast<DWORD>(Number(w[3])));
        const bool worked = low != INVALID_SET_FILE_POINTER || GetLastError() == NO_ERROR;
        return Said(worked, std::to_string(low) + (w[2].empty() ? "" : " " + std::to_string(high)));
    }
    std::string Size(const Words& w) {
        DWORD high = 0;
        const DWORD low = GetFileSize(Handle(w[0]), &high);
        return std::to_string(low) + (high != 0 ? " " + std::to_string(high) : "");
    }
    std::string Lock(const Words& w, bool lock) {
        const auto call = lock ? LockFile : UnlockFile;
        const auto from = static_cast<std::uint64_t>(Number(w[1]));
        const auto size = static_cast<std::uint64_t>(Number(w[2]));
        return Said(call(Handle(w[0]), static_cast<DWORD>(from), static_cast<DWORD>(from >> 32),
                         static_cast<DWORD>(size), static_cast<DWORD>(size >> 32)));
    }
    std::string Find(const Words& w) {
        WIN32_FIND_DATAW data{};
        const HANDLE search = FindFirstFileW(Name(w[0]).c_str(), &data);
        if (search == INVALID_HANDLE_VALUE) return Said(false);
        EXPECT_TRUE(FindClose(search));
        EXPECT_GT(data.ftLastWriteTime.dwHighDateTime, 0x01D00000u);
        const Wide name = data.cFileName;
        const bool folder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        return std::string(name.begin(), name.end()) +
               (folder ? " folder" : " " + std::to_string(data.nFileSizeLow));
    }
    std::string Kind(const Words& w) {
        const DWORD attributes = GetFileAttributesW(Name(w[0]).c_str());
        return Said(attributes != INVALID_FILE_ATTRIBUTES,
                    (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? "folder" : "file");
    }

    std::map<std::string, std::function<std::string(const Words&)>> calls_ = {
        {"Open", [this](auto& w) { return Open(w); }},
        {"Close", [this](auto& w) { return Said(CloseHandle(Handle(w[0]))); }},
        {"Write", [this](auto& w) { return Transfer(w, true); }},
        {"Read", [this](auto& w) { return Transfer(w, false); }},
        {"Seek", [this](auto& w) { return Seek(w); }},
        {"EndHere", [this](auto& w) { return Said(SetEndOfFile(Handle(w[0]))); }},
        {"Size", [this](auto& w) { return Size(w); }},
        {"Lock", [this](auto& w) { return Lock(w, true); }},
        {"Unlock", [this](auto& w) { return Lock(w, false); }},
        {"Kind", [this](auto& w) { return Kind(w); }},
        {"Find", [this](auto& w) { return Find(w); }},
        {"DeleteFile", [this](auto& w) { return Said(DeleteFileW(Name(w[0]).c_str())); }},
        {"MakeFolder",
         [this](auto& w) { return Said(CreateDirectoryW(Name(w[0]).c_str(), nullptr)); }},
        {"RemoveFolder", [this](auto& w) { return Said(RemoveDirectoryW(Name(w[0]).c_str())); }}};

  private:
    std::map<std::string, HANDLE> handles_ = {{"null", nullptr}};
};

TEST_F(FileCalls, AnswerAsTheTableSays) {
    std::istringstream lines(PageText("../tests/win32/file_calls.txt"));
    int made = 0;
    for (std::string line; std::getline(lines, line);) {
        const bool gap = line.starts_with("not on Wine: "),
                   linux_only = line.starts_with("Linux: ");
        if (linux_only && (UnderWine() || GetModuleHandleW(TEXT("ntdll.dll")) != nullptr)) continue;
        const std::string call = line.substr(gap ? 13 : linux_only ? 7 : 0);
        const std::size_t open = call.find('('), close = call.rfind(") = ");
        const auto found = calls_.find(call.substr(0, open));
        if (close == std::string::npos || found == calls_.end()) {
            EXPECT_TRUE(line.empty() || line[0] == '#') << "no such call: " << line;
            continue;
        }
        Words words;
        std::istringstream list(call.substr(open + 1, close - open - 1) + '|');
        for (std::string word; std::getline(list, word, '|');) words.push_back(word);
        words.resize(5);
        SetLastError(NO_ERROR);
        const std::string answer = found->second(words);
        if (gap) {
            ExpectExceptOnWine(answer == call.substr(close + 4), line);
        } else {
            EXPECT_EQ(answer, call.substr(close + 4)) << line;
        }
        ++made;
    }
    EXPECT_GT(made, 150);
}

// One thread at a time is inside a lock, whatever handle it came through.
TEST_F(FileCalls, LocksSerialiseThreads) {
    const Wide name = Path(TEXT("count"));
    MakeFile(name, "000");
    const auto count_up = [&] {
        const HANDLE file =
            CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE,
                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
        for (int i = 0; i < 100; ++i) {
            while (!LockFile(file, 0, 0, 3, 0)) std::this_thread::yield();
            char digits[4] = {};
            DWORD done = 0;
            OVERLAPPED at{};
            ReadFile(file, digits, 3, &done, &at);
            const std::string next = std::to_string(1000 + std::atoi(digits) + 1).substr(1);
            WriteFile(file, next.data(), 3, &done, &at);
            UnlockFile(file, 0, 0, 3, 0);
        }
        CloseHandle(file);
    };
    std::thread other(count_up);
    count_up();
    other.join();
    EXPECT_EQ(Read(OpenShared(name), 3), "200");
}

}  // namespace
