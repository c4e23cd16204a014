#include "support/input.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "mox_classes/format/string_encoding.h"

namespace fuzz {

void Require(bool holds, const char* promise) {
    if (holds) return;
    std::fprintf(stderr, "==broken promise: %s\n", promise);
    std::abort();
}

Bytes Input::Take(std::size_t count) {
    const Bytes taken = rest_.first(count < rest_.size() ? count : rest_.size());
    rest_ = rest_.subspan(taken.size());
    return taken;
}

Bytes Input::Until(char end) {
    std::size_t count = 0;
    while (count < rest_.size() && rest_[count] != static_cast<std::uint8_t>(end)) ++count;
    const Bytes taken = Take(count);
    Take(1);
    return taken;
}

UnicodeString Text(Bytes bytes) {
    std::basic_string<WCHAR> text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        unsigned unit = bytes[i];
        if (unit == 0x80 && bytes.size() - i > 2) {
            unit = bytes[i + 1] | bytes[i + 2] << 8U;
            i += 2;
        }
        text += static_cast<WCHAR>(unit);
    }
    return UnicodeString(text.data(), static_cast<long long>(text.size()));
}

bool Same(const UnicodeString& a, const UnicodeString& b) {
    const auto bytes = static_cast<std::size_t>(a.Length()) * sizeof(WCHAR);
    return a.Length() == b.Length() && std::memcmp(a.t_str(), b.t_str(), bytes) == 0;
}

std::string Narrow(Bytes bytes) {
    return std::string(bytes.begin(), bytes.end());
}

bool HasWholeCharacters(Bytes bytes, System::TCodePage code_page) {
    if (code_page != System::kCodePageUtf8 || bytes.empty()) return true;
    return MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS,
                               reinterpret_cast<const char*>(bytes.data()),
                               static_cast<int>(bytes.size()), nullptr, 0) > 0;
}

void TakeTagTable(Input& input) {
    constexpr std::uint8_t kDefaults[8] = {0x0F, 1, 2, 3, 4, 0x10, 0x30, 0x50};
    const auto wanted = input.Number<std::uint64_t>();
    SetDefaultStringTags(kDefaults);
    SetDefaultStringTags(reinterpret_cast<const std::uint8_t*>(&wanted));
}

UnicodeString FileName(const char* name) {
    return UnicodeString("C:\\") + UnicodeString(name);
}

std::string FilePath(const char* name) {
    return std::string(std::getenv("QV_HOST_ROOT")) + "/drive_c/" + name;
}

void WriteFile(const char* name, Bytes bytes) {
    const int file = open(FilePath(name).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const bool whole =
        file >= 0 && write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    if (file >= 0) close(file);
    if (whole) return;
    std::perror("writing the input's file");
    std::_Exit(2);
}

std::string ReadFile(const char* name) {
    std::string text;
    const int file = open(FilePath(name).c_str(), O_RDONLY | O_CLOEXEC);
    char piece[4096];
    for (ssize_t got = 1; file >= 0 && got > 0;) {
        got = read(file, piece, sizeof(piece));
        if (got > 0) text.append(piece, static_cast<std::size_t>(got));
    }
    if (file >= 0) close(file);
    return text;
}

}  // namespace fuzz
