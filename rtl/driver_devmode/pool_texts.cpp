#include "driver_devmode/pool_texts.h"

#include <iterator>

#include "mox_classes/text/sysutils_numbers.h"

namespace driver_devmode {

namespace {

// In the order of the pool.
struct TPoolText {
    const WCHAR* name;
    UnicodeString TQVDM::*text;
    short (*offset)(const QV_DEVMODE& block);
};
constexpr TPoolText kPoolTexts[] = {
    {TEXT("exOut.Directory"), &TQVDM::Directory,
     [](const QV_DEVMODE& block) { return short{block.exOut.DirectoryOffset}; }},
    {TEXT("exOut.FileName"), &TQVDM::FileName,
     [](const QV_DEVMODE& block) { return short{block.exOut.FileNameOffset}; }},
    {TEXT("exRun.Target"), &TQVDM::Target,
     [](const QV_DEVMODE& block) { return short{block.exRun.TargetOffset}; }},
};

}  // namespace

std::vector<UnicodeString> TextsWithoutRoom(const TQVDM& settings) {
    std::vector<UnicodeString> sentences;
    int room = QV_DEVMODE_EXTRA::kPoolUnits - 1;  // unit 0 is always a terminator
    const WCHAR* first_left_out = nullptr;
    for (const TPoolText& row : kPoolTexts) {
        const int length = (settings.*row.text).Length();
        if (length == 0) continue;
        if (first_left_out != nullptr) {
            sentences.push_back(Sysutils::UnicodePrintf(TEXT("%s has no room behind %s"), row.name,
                                                        first_left_out));
        } else if (length + 1 > room) {
            first_left_out = row.name;
            sentences.push_back(Sysutils::UnicodePrintf(
                TEXT("%s has no room: its text has %d characters, %d are left"), row.name, length,
                room > 0 ? room - 1 : 0));
        } else {
            room -= length + 1;
        }
    }
    return sentences;
}

TDamagedTexts::TDamagedTexts(TQVDM& settings) {
    bool readable = true;
    if (settings.GetDM() == nullptr) return;
    for (const TPoolText& row : kPoolTexts) {
        UnicodeString stored;
        readable = readable && settings.ReadString(stored, row.offset(*settings.GetDM()));
        if (readable && in_their_place_.empty()) continue;
        in_their_place_.push_back(settings.*row.text);
    }
}

std::vector<UnicodeString> TDamagedTexts::Replaced(const TQVDM& settings) const {
    std::vector<UnicodeString> sentences;
    const std::size_t whole = std::size(kPoolTexts) - in_their_place_.size();
    for (std::size_t i = 0; i < in_their_place_.size(); ++i) {
        const TPoolText& row = kPoolTexts[whole + i];
        if (settings.*row.text != in_their_place_[i]) continue;
        sentences.push_back(Sysutils::UnicodePrintf(
            TEXT("The stored text of %s was damaged. Its default \"%s\" takes its place"), row.name,
            in_their_place_[i]));
    }
    return sentences;
}

}  // namespace driver_devmode
