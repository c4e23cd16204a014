#include "log/ring_picture.h"

#include <algorithm>

#include "log_file/log_format.h"

namespace qv {

namespace {

// A line of cells that stand for equal parts of the ring.
class Cells {
  public:
    Cells(std::size_t width, std::uint32_t limit)
        : line_(width, '.'), ring_(limit > Mox::kFirstSlot ? limit - Mox::kFirstSlot : 1) {}

    // Every cell of which a byte lies between the offsets.
    void Mark(std::uint64_t from, std::uint64_t end, char mark) {
        if (from >= end) return;
        const std::size_t last = CellOf(end - 1);
        for (std::size_t cell = CellOf(from); cell <= last; ++cell) line_[cell] = mark;
    }
    const std::string& Line() const { return line_; }

  private:
    std::size_t CellOf(std::uint64_t offset) const {
        const std::uint64_t in_ring = offset < Mox::kFirstSlot ? 0 : offset - Mox::kFirstSlot;
        const auto cell = static_cast<std::size_t>(in_ring * line_.size() / ring_);
        return std::min(cell, line_.size() - 1);
    }

    std::string line_;
    std::uint64_t ring_;
};

}  // namespace

std::string RingPicture(const Mox::TLogFileHeader& header, const std::vector<Mox::TLogSkip>& skips,
                        std::size_t width) {
    Cells cells(width, header.limit);
    if (header.count > 0) {
        if (header.wrap != 0) cells.Mark(header.oldest, header.wrap, '=');
        const std::uint32_t newer = header.wrap != 0 ? Mox::kFirstSlot : header.oldest;
        cells.Mark(newer, header.write_position, '#');
    }
    cells.Mark(header.write_position, std::uint64_t{header.write_position} + 1, '>');
    for (const Mox::TLogSkip& skip : skips) {
        cells.Mark(skip.offset, std::uint64_t{skip.offset} + skip.size, '!');
    }
    return cells.Line();
}

std::uint64_t RingFill(const Mox::TLogFileHeader& header) {
    if (header.count == 0) return 0;
    if (header.wrap == 0) return header.write_position - header.oldest;
    return std::uint64_t{header.wrap - header.oldest} + (header.write_position - Mox::kFirstSlot);
}

}  // namespace qv
