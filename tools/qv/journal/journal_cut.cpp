#include "journal/journal_cut.h"

#include <filesystem>

#include "base/files.h"
#include "journal/journal_lines.h"

namespace qv {

namespace {

constexpr std::size_t kMostJournalBytes = 8 << 20;
constexpr std::size_t kKeptBytes = 4 << 20;

std::size_t BehindLine(std::string_view bytes, std::size_t place) {
    const std::size_t end = bytes.find('\n', place);
    return end == std::string_view::npos ? bytes.size() : end + 1;
}

// Where the oldest change begins that stays; 0 when none does.
std::size_t FirstKept(std::string_view bytes) {
    const std::size_t wanted = BehindLine(bytes, bytes.size() - kKeptBytes);
    for (std::size_t at = wanted; at < bytes.size(); at = BehindLine(bytes, at))
        if (IsBeginLine(bytes.substr(at, BehindLine(bytes, at) - at))) return at;
    // One change is longer than that: the newest one, which stays as a whole.
    for (std::size_t end = wanted; end > 0;) {
        const std::size_t at = end < 2 ? 0 : bytes.rfind('\n', end - 2) + 1;
        if (IsBeginLine(bytes.substr(at, end - at))) return at;
        end = at;
    }
    return 0;
}

// The content with the oldest changes left out; empty when there is nothing to leave out.
std::string Cut(std::string_view bytes) {
    if (ExamineHead(bytes) != JournalHead::kGood || bytes.size() <= kKeptBytes) return {};
    const std::size_t changes = BehindLine(bytes, 0);
    const std::size_t kept = FirstKept(bytes);
    if (kept <= changes) return {};
    return std::string(bytes.substr(0, changes)).append(bytes.substr(kept));
}

}  // namespace

void CutJournal(const std::string& name) {
    std::error_code error;
    const auto size = std::filesystem::file_size(std::u8string(name.begin(), name.end()), error);
    if (error || size <= kMostJournalBytes) return;
    const std::string kept = Cut(ReadAll(name));
    if (kept.empty()) return;
    try {
        WriteWhole(name, kept);
    } catch (const Failure&) {
        // The long one stays, and the next change tries again.
    }
}

}  // namespace qv
