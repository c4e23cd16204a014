#include "report/redaction.h"

#include <algorithm>

namespace qv {

namespace {

using Kind = Redaction::Kind;

struct Member {
    std::string_view name;
    Kind kind;
};
constexpr Member kMembers[] = {
    {"pusername", Kind::kUser},      {"username", Kind::kUser},    {"pnotifyname", Kind::kUser},
    {"notifyname", Kind::kUser},     {"user", Kind::kUser},        {"pmachinename", Kind::kMachine},
    {"machinename", Kind::kMachine}, {"machine", Kind::kMachine},  {"pservername", Kind::kMachine},
    {"pdocument", Kind::kDocument},  {"docname", Kind::kDocument}, {"document", Kind::kDocument},
};
constexpr std::string_view kUserFolders[] = {"\\users\\", "/users/", "/home/",
                                             "\\documents and settings\\"};
// Folders beside those of users, and texts that are no names.
constexpr std::string_view kNoNames[] = {"public", "default", "all users", "default user",
                                         "null",   "(null)",  "localhost"};

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

std::string LowerText(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), Lower);
    return lower;
}

// Part of a word: every byte of what is not ASCII too.
bool IsWord(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           static_cast<unsigned char>(c) >= 0x80;
}

// The value behind an equals sign: in double quotes, in which two stand for one, or up to a blank.
std::string Value(std::string_view text, std::size_t at) {
    std::string value;
    if (at < text.size() && text[at] == '"') {
        for (++at; at < text.size(); ++at) {
            if (text[at] == '"' && (at + 1 == text.size() || text[at + 1] != '"')) break;
            if (text[at] == '"') ++at;
            value += text[at];
        }
        return value;
    }
    const std::size_t end = text.find_first_of(" \t\r\n,;\"", at);
    return std::string(text.substr(at, end == std::string_view::npos ? end : end - at));
}

}  // namespace

void Redaction::AddName(Kind kind, std::string_view name) {
    static constexpr const char* kPlaceholders[] = {"user-", "machine-", "document-"};
    while (!name.empty() && (name.front() == '\\' || name.front() == ' ')) name.remove_prefix(1);
    while (!name.empty() && name.back() == ' ') name.remove_suffix(1);
    std::string lower = LowerText(name);
    const bool is_none =
        std::find(std::begin(kNoNames), std::end(kNoNames), lower) != std::end(kNoNames);
    if (lower.empty() || is_none || stand_ins_.contains(lower)) return;
    std::vector<std::size_t>& lengths = lengths_[static_cast<unsigned char>(lower.front())];
    const auto place =
        std::lower_bound(lengths.begin(), lengths.end(), lower.size(), std::greater<std::size_t>());
    if (place == lengths.end() || *place != lower.size()) lengths.insert(place, lower.size());
    const auto index = static_cast<std::size_t>(kind);
    stand_ins_.emplace(std::move(lower), kPlaceholders[index] + std::to_string(++counts_[index]));
}

void Redaction::Learn(std::string_view text) {
    LearnMembers(text);
    LearnFolders(text);
    LearnShares(text);
}

void Redaction::LearnMembers(std::string_view text) {
    for (std::size_t equals = text.find('='); equals != std::string_view::npos;
         equals = text.find('=', equals + 1)) {
        std::size_t start = equals;
        while (start > 0 && IsWord(text[start - 1])) --start;
        const std::string name = LowerText(text.substr(start, equals - start));
        for (const Member& member : kMembers)
            if (member.name == name) AddName(member.kind, Value(text, equals + 1));
    }
}

void Redaction::LearnFolders(std::string_view text) {
    const std::string lower = LowerText(text);
    for (const std::string_view folder : kUserFolders) {
        for (std::size_t at = lower.find(folder); at != std::string::npos;
             at = lower.find(folder, at + 1)) {
            const std::size_t start = at + folder.size();
            const std::size_t end =
                std::min(text.find_first_of("\\/\"'<>|:*?\t\r\n", start), text.size());
            AddName(Kind::kUser, text.substr(start, end - start));
        }
    }
}

// \\MACHINE\share, but neither \\?\ nor \\.\.
void Redaction::LearnShares(std::string_view text) {
    for (std::size_t at = text.find("\\\\"); at != std::string_view::npos;
         at = text.find("\\\\", at + 2)) {
        if (at > 0 && (IsWord(text[at - 1]) || text[at - 1] == '\\')) continue;
        std::size_t end = at + 2;
        while (end < text.size() && (IsWord(text[end]) || text[end] == '-' || text[end] == '.'))
            ++end;
        const std::string_view name = text.substr(at + 2, end - at - 2);
        if (name != "." && end < text.size() && text[end] == '\\') AddName(Kind::kMachine, name);
    }
}

std::string Redaction::Apply(std::string_view text) const {
    const std::string lower = LowerText(text);
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t taken = 0;
        const bool inside = at > 0 && IsWord(text[at - 1]) && IsWord(text[at]);
        for (const std::size_t length : lengths_[static_cast<unsigned char>(lower[at])]) {
            if (inside || length > text.size() - at) continue;
            const std::size_t end = at + length;
            if (end < text.size() && IsWord(text[end - 1]) && IsWord(text[end])) continue;
            const auto found = stand_ins_.find(lower.substr(at, length));
            if (found == stand_ins_.end()) continue;
            result += found->second;
            taken = length;
            break;
        }
        if (taken == 0) result += text[at];
        at += std::max<std::size_t>(taken, 1);
    }
    return result;
}

}  // namespace qv
