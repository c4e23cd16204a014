// Rows with a name for each column: aligned below a head for people, apart by tabs for programs.
#pragma once

#include <string>
#include <vector>

#include "base/console.h"

namespace CLI {
class App;
}

namespace qv {

// --table
void AddTableOption(CLI::App& command, bool& is_table);

class Table {
  public:
    explicit Table(std::vector<std::string> head) : head_(std::move(head)) {}

    // As many cells as the head has, each one line without control characters.
    void Add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }
    // On standard output. With `is_table`, and on a terminal, aligned and with the head; else the
    // rows alone with tabs between their cells.
    void Print(bool is_table) const;

  private:
    std::vector<std::size_t> Widths() const;

    std::vector<std::string> head_;
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace qv
