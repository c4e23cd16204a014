// A table with named columns: aligned with a head for people, separated by tabs for programs.
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
    // Prints to standard output. On a terminal, or with `is_table`, the columns are aligned below a
    // head. Otherwise there are only rows, with tabs between the cells.
    void Print(bool is_table) const;

  private:
    std::vector<std::size_t> Widths() const;

    std::vector<std::string> head_;
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace qv
