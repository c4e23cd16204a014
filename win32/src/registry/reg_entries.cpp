#include "registry/reg_entries.h"

#include <algorithm>

namespace host {

namespace {

const char* NameProblem(LSTATUS code) {
    switch (code) {
        case ERROR_INVALID_PARAMETER:
            return "a name that is too long";
        case ERROR_INVALID_NAME:
            return "a line break in a key's name";
        default:
            return "an unpaired surrogate in a name";
    }
}

struct KeyPlace {
    RegKey root;
    RegPath path;  // below the root
};

KeyPlace FindPlace(const RegEntry& entry, std::int64_t only_root) {
    std::u16string_view rest = entry.name;
    const std::int64_t root = TakeRoot(rest);
    if (root == 0) throw RegTextError(entry.line, "a key of an unknown root");
    if (only_root != 0 && root != only_root) {
        throw RegTextError(entry.line, "a key of an unexpected root");
    }
    KeyPlace place{RegKey(root), {}};
    if (SplitKeyPath(rest, place.path) != ERROR_SUCCESS) {
        throw RegTextError(entry.line, "an empty name in a key's path");
    }
    if (place.path.size() > kMaxKeyDepth) throw RegTextError(entry.line, "too many levels of keys");
    for (const std::u16string& name : place.path) {
        const LSTATUS code = CheckKeyName(name);
        if (code != ERROR_SUCCESS) throw RegTextError(entry.line, NameProblem(code));
    }
    return place;
}

void RemovePlace(const KeyPlace& place) {
    if (place.path.empty()) {
        place.root.Clear();
        return;
    }
    const auto parent = std::span(place.path).first(place.path.size() - 1);
    const std::optional<RegKey> key = place.root.FindPath(parent);
    if (key) key->RemoveKey(place.path.back());
}

}  // namespace

void RegEntryRunner::Run(const RegEntry& entry) {
    switch (entry.kind) {
        case RegEntry::Kind::Key: {
            const KeyPlace place = FindPlace(entry, only_root_);
            key_ = place.root.MakePath(place.path);
            break;
        }
        case RegEntry::Kind::DeleteKey:
            RemovePlace(FindPlace(entry, only_root_));
            key_ = RegKey::None();
            break;
        case RegEntry::Kind::Value: {
            const LSTATUS code = CheckValueName(entry.name);
            if (code != ERROR_SUCCESS) throw RegTextError(entry.line, NameProblem(code));
            key_.SetValue(entry.name, entry.type, entry.data);
            break;
        }
        case RegEntry::Kind::DeleteValue:
            key_.RemoveValue(entry.name);
            break;
    }
}

void WriteRegKey(const RegKey& key, const std::u16string& path, RegTextWriter& writer) {
    struct Level {
        std::vector<RegKey> keys;  // that are still to be written
        std::size_t next;
        std::size_t path_length;
    };
    std::u16string here = path;
    std::vector<Level> levels;
    const auto write = [&](const RegKey& one) {
        std::vector<RegKey> below = one.Keys();
        const std::shared_ptr<const RegValues> values = one.Values();
        if (!values->empty() || below.empty()) writer.Key(here);
        for (const RegValue& value : *values) writer.Value(value.name, value.type, value.data);
        levels.push_back({std::move(below), 0, here.size()});
    };
    write(key);
    while (!levels.empty()) {
        Level& level = levels.back();
        here.resize(level.path_length);
        if (level.next == level.keys.size()) {
            levels.pop_back();
            continue;
        }
        const RegKey below = level.keys[level.next++];
        here += u'\\' + below.Name();
        write(below);
    }
}

}  // namespace host
