#include "os_xp/file_dialog.h"

#include <commdlg.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "mox_classes/text/sysutils_paths.h"

static_assert(sizeof(OPENFILENAMEW) == 152);

namespace {

// The filter as the dialog wants it: texts that end with a 0 unit each, and one more 0 unit at the
// end.
std::basic_string<WCHAR> FilterList(const UnicodeString& filter) {
    std::basic_string<WCHAR> list(filter.t_str(), static_cast<size_t>(filter.Length()));
    std::replace(list.begin(), list.end(), WCHAR{'|'}, WCHAR{0});
    return list.append(2, WCHAR{0});
}

LPCWSTR TextOrNull(const UnicodeString& text) {
    return text.Length() == 0 ? nullptr : text.t_str();
}

DWORD DialogFlags(bool must_exist, bool overwrite_prompt, bool no_change_dir) {
    return (must_exist ? DWORD{OFN_FILEMUSTEXIST} : 0u) |
           (overwrite_prompt ? DWORD{OFN_OVERWRITEPROMPT} : 0u) |
           (no_change_dir ? DWORD{OFN_NOCHANGEDIR} : 0u);
}

}  // namespace

bool OpenSaveFileDialog(HWND owner, UnicodeString defaultExt, UnicodeString filter,
                        UnicodeString initialDir, UnicodeString title, UnicodeString& fileName,
                        bool mustExist, bool overwritePrompt, bool noChangeDir, bool open) {
    if (mustExist && !Sysutils::FileExists(fileName)) fileName = UnicodeString();
    WCHAR name[MAX_PATH] = {};
    std::copy_n(fileName.t_str(), std::min(fileName.Length(), MAX_PATH - 1), name);
    const std::basic_string<WCHAR> filters = FilterList(filter);

    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof(dialog);
    dialog.hwndOwner = owner;
    dialog.lpstrFile = name;
    dialog.nMaxFile = static_cast<DWORD>(std::size(name));
    dialog.lpstrFilter = filters.c_str();
    dialog.lpstrInitialDir = TextOrNull(initialDir);
    dialog.lpstrTitle = TextOrNull(title);
    dialog.lpstrDefExt = TextOrNull(defaultExt);
    dialog.Flags = DialogFlags(mustExist, overwritePrompt, noChangeDir);
    // A dialog without an owner would open behind the window in front.
    if (owner == nullptr) SetForegroundWindow(nullptr);
    const BOOL chosen = open ? GetOpenFileNameW(&dialog) : GetSaveFileNameW(&dialog);
    if (chosen) fileName = UnicodeString(static_cast<const WCHAR*>(name));
    return chosen != FALSE;
}
