#include "base/table.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "base/host.h"

namespace qv {

namespace {

constexpr std::size_t kGap = 2;

// The number of characters of a UTF-8 text: all bytes that begin one.
std::size_t WidthOf(const std::string& text) {
    return static_cast<std::size_t>(std::ranges::count_if(
        text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string Aligned(const std::vector<std::string>& row, const std::vector<std::size_t>& widths) {
    std::string line;
    std::size_t missing = 0;
    for (std::size_t i = 0; i < row.size(); ++i) {
        line += std::string(missing, ' ') + row[i];
        missing = widths[i] + kGap - WidthOf(row[i]);
    }
    return line + "\n";
}

std::string Tabbed(const std::vector<std::string>& row) {
    std::string line;
    for (const std::string& cell : row) line += (&cell == &row.front() ? "" : "\t") + cell;
    return line + "\n";
}

}  // namespace

void AddTableOption(CLI::App& command, bool& is_table) {
    command.add_flag(
        "--table", is_table,
        "Aligned columns with a head, as on a terminal; otherwise tabs between the cells");
}

std::vector<std::size_t> Table::Widths() const {
    std::vector<std::size_t> widths;
    for (std::size_t i = 0; i < head_.size(); ++i) {
        widths.push_back(WidthOf(head_[i]));
        for (const auto& row : rows_) widths[i] = std::max(widths[i], WidthOf(row[i]));
    }
    return widths;
}

void Table::Print(bool is_table) const {
    std::string text;
    if (is_table || IsTerminal(Stream::kOutput)) {
        const std::vector<std::size_t> widths = Widths();
        text = Aligned(head_, widths);
        for (const auto& row : rows_) text += Aligned(row, widths);
    } else {
        for (const auto& row : rows_) text += Tabbed(row);
    }
    qv::Print(text);
}

}  // namespace qv
