#include "settings/settings_text.h"

#include <algorithm>

#include "base/value_text.h"
#include "qv_rtl_version.h"
#include "settings/field_value.h"

namespace qv {

namespace {

constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";
const std::string kPrinterHead = "printer:";
// Far above every name. Keeps the reader's time in proportion to the file.
constexpr std::size_t kLongestLine = 65536;

class TextReader {
  public:
    SettingsText Read(std::string_view bytes) {
        if (bytes.starts_with(kByteOrderMark)) bytes.remove_prefix(sizeof(kByteOrderMark) - 1);
        while (!bytes.empty()) {
            const std::size_t end = std::min(bytes.find('\n'), bytes.size());
            ++line_;
            ReadLine(Trimmed(std::string(bytes.substr(0, std::min(end, kLongestLine + 1)))));
            bytes.remove_prefix(std::min(end + 1, bytes.size()));
        }
        return std::move(result_);
    }

  private:
    void ReadLine(const std::string& line) {
        if (line.empty()) return;
        if (line[0] == '#') return ReadComment(Trimmed(line.substr(1)));
        is_head_ = false;
        const std::size_t equals = line.find('=');
        if (equals == std::string::npos || equals == 0 || line.size() > kLongestLine)
            return Damaged("is not of the form NAME=VALUE");
        const auto name = FromValueText(line.substr(0, equals));
        const auto value = FromValueText(line.substr(equals + 1));
        if (!name || !value) return Damaged("has wrong quotes or escapes, or is not UTF-8");
        Assign(*name, *value);
    }

    void ReadComment(const std::string& comment) {
        if (!is_head_ || !result_.printer.IsEmpty() || !comment.starts_with(kPrinterHead)) return;
        result_.printer =
            FromValueText(comment.substr(kPrinterHead.size())).value_or(UnicodeString());
    }

    void Damaged(const std::string& text) {
        result_.is_damaged = true;
        result_.faults.push_back({line_, "", text});
    }

    void Assign(const UnicodeString& name, const UnicodeString& value) {
        const std::string shown = OneLine(name);
        const auto fault = [&](const std::string& text) {
            result_.faults.push_back({line_, shown, text});
        };
        const Field* const field = FindField(name);
        if (field == nullptr) return fault("'" + shown + "' is no name of a field" + Hint(name));
        const auto earlier = std::ranges::find(result_.assignments, field, &Assignment::field);
        if (earlier != result_.assignments.end())
            return fault("'" + shown + "' stands on line " + std::to_string(earlier->line) +
                         " already");
        const std::string reason = ValueFault(*field, value);
        if (!reason.empty())
            return fault("'" + shown + "' cannot be set to '" + OneLine(value) + "': " + reason);
        result_.assignments.push_back({field, value, line_});
    }

    SettingsText result_;
    int line_ = 0;
    bool is_head_ = true;
};

}  // namespace

SettingsText ParseSettings(const std::string& bytes) {
    return TextReader().Read(bytes);
}

std::string FormatSettings(const SettingsHead& head, const SettingsBlock& block) {
    const std::string version = QV_RTL_VERSION_TEXT;
    std::string text = "# Settings of a printer, written by qv " + version;
    text += "; `qv apply` sets them.\n# ";
    text += kPrinterHead + (" " + ToValueText(head.printer));
    text += "\n# driver: " + ToValueText(head.driver);
    text += "\n# version: " + std::to_string(block.Block().dmDriverVersion);
    if (block.IsProduct()) text += ", private part " + std::to_string(block.Block().exVersion);
    text += "\n# whose: the current user's (" + ToValueText(head.user) + ")\n";
    for (const Field* field : AllFields()) {
        if (block.Has(*field)) text += NameOf(*field) + "=" + ToValueText(block.Get(*field)) + "\n";
    }
    return text;
}

bool IsSettingsText(const std::string& bytes) {
    return bytes.find('\0') == std::string::npos;
}

std::string LinePrefix(int line) {
    return line == 0 ? "" : "line " + std::to_string(line) + ": ";
}

}  // namespace qv
