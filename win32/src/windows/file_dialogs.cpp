// The common file dialogs, shown by a program of the user's choice: QV_HOST_DIALOG names it.
//
// Its arguments are "open" or "save", the title, the initial folder, the name offered, then one
// argument "description|pattern" per filter; folder and name are paths of this host. The first line
// of its output is the file; any exit code but 0 means that the user cancelled. An existing file
// that needs a confirmation before it is overwritten is asked for with "overwrite", the title, its
// folder and its path; exit code 0 means yes.
#include <windows.h>

#include <commdlg.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "process/ask_program.h"
#include "root/environment.h"
#include "root/host_path.h"
#include "text/host_text.h"

using namespace host;

namespace {

constexpr DWORD kKnownFlags = OFN_OVERWRITEPROMPT | OFN_HIDEREADONLY | OFN_NOCHANGEDIR |
                              OFN_PATHMUSTEXIST | OFN_FILEMUSTEXIST | OFN_EXPLORER;

// A name with a folder becomes a path of this host; a bare name stays.
std::string HostName(WideView name) {
    if (name.find_first_of(u"\\/:") == WideView::npos) return ToUtf8(name);
    const HostPath path = ToHostPath(WideString(name).c_str());
    return path.error == NO_ERROR ? path.path : std::string();
}

std::string HostFolder(WideView name) {
    const HostPath path = ToHostPath(WideString(name).c_str());
    return path.error == NO_ERROR ? path.path : std::string();
}

// Reads pairs of texts that end with a 0 unit, up to an empty one.
std::vector<std::string> Filters(LPCWSTR list) {
    std::vector<std::string> lines;
    while (list != nullptr && *list != 0) {
        const WideView description(list);
        const WideView pattern(list + description.size() + 1);
        lines.push_back(ToUtf8(description) + "|" + ToUtf8(pattern));
        list = pattern.empty() ? nullptr : pattern.data() + pattern.size() + 1;
    }
    return lines;
}

class FileDialog {
  public:
    FileDialog(OPENFILENAMEW& record, bool open)
        : record_(record), open_(open), program_(EnvironmentText("QV_HOST_DIALOG")) {}

    // Asks the user. True when the record now holds the chosen file.
    bool Show() {
        if (program_.empty()) return false;
        const ProgramAnswer answer = AskProgram(program_, Arguments());
        if (!answer.accepted || answer.line.empty()) return false;
        const std::filesystem::path file = Chosen(answer.line);
        if (open_ && Has(OFN_FILEMUSTEXIST) && !Exists(file)) return false;
        if (!open_ && Has(OFN_OVERWRITEPROMPT) && Exists(file) && !Confirmed(file)) return false;
        return Store(file);
    }

  private:
    bool Has(DWORD flag) const { return (record_.Flags & flag) != 0; }
    std::string Title() const { return ToUtf8(ViewOf(record_.lpstrTitle)); }

    std::vector<std::string> Arguments() const {
        const WideView buffer(record_.lpstrFile, record_.nMaxFile);
        const WideView offered = buffer.substr(0, std::min(buffer.find(u'\0'), buffer.size()));
        std::vector<std::string> arguments{open_ ? "open" : "save", Title(),
                                           HostFolder(ViewOf(record_.lpstrInitialDir)),
                                           HostName(offered)};
        const std::vector<std::string> filters = Filters(record_.lpstrFilter);
        arguments.insert(arguments.end(), filters.begin(), filters.end());
        return arguments;
    }

    static bool Exists(const std::filesystem::path& file) {
        std::error_code ignored;
        return std::filesystem::exists(file, ignored);
    }

    // The answer as an absolute path. It gets the default extension where it needs one.
    std::filesystem::path Chosen(const std::string& line) const {
        std::filesystem::path file(line);
        if (line.size() > 2 && line[1] == ':') file = HostName(FromUtf8(line));
        if (file.is_relative()) {
            std::error_code ignored;
            const std::string folder = HostFolder(ViewOf(record_.lpstrInitialDir));
            file = (folder.empty() ? std::filesystem::current_path(ignored)
                                   : std::filesystem::path(folder)) /
                   file;
        }
        const WideView extension = ViewOf(record_.lpstrDefExt);
        const bool complete = extension.empty() || file.has_extension() || (open_ && Exists(file));
        if (!complete) file += "." + ToUtf8(extension);
        return file.lexically_normal();
    }

    bool Confirmed(const std::filesystem::path& file) const {
        return AskProgram(program_, {"overwrite", Title(), file.parent_path(), file}).accepted;
    }

    bool Store(const std::filesystem::path& file) {
        const WideString name = FromHostPath(file.native());
        // Refuses a file whose Windows name would not lead back to it.
        const HostPath back = ToHostPath(name.c_str());
        if (back.error != NO_ERROR || back.path != file.native()) return false;
        const std::size_t needed = name.size() + 1;
        if (needed > record_.nMaxFile) {
            record_.lpstrFile[0] = static_cast<WCHAR>(std::min<std::size_t>(needed, 0xFFFF));
            return false;
        }
        std::copy_n(name.c_str(), needed, record_.lpstrFile);
        const std::size_t start = name.rfind(u'\\') + 1;
        const std::size_t dot = name.find_last_of(u'.');
        record_.nFileOffset = static_cast<WORD>(start);
        record_.nFileExtension =
            dot == WideString::npos || dot < start ? WORD{0} : static_cast<WORD>(dot + 1);
        return true;
    }

    OPENFILENAMEW& record_;
    const bool open_;
    const std::string program_;
};

BOOL Ask(LPOPENFILENAMEW record, bool open) {
    if (record == nullptr || record->lStructSize != sizeof(OPENFILENAMEW)) return FALSE;
    const bool unknown = (record->Flags & ~DWORD{kKnownFlags}) != 0;
    if (unknown || record->lpstrFile == nullptr || record->nMaxFile == 0) return FALSE;
    return FileDialog(*record, open).Show() ? TRUE : FALSE;
}

}  // namespace

BOOL GetOpenFileNameW(LPOPENFILENAMEW dialog) {
    return Ask(dialog, true);
}

BOOL GetSaveFileNameW(LPOPENFILENAMEW dialog) {
    return Ask(dialog, false);
}
