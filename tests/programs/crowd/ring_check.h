// Checks that a log file holds every record that its writers had logged, whole and in order. Only
// records that newer ones have overwritten may be missing.
#pragma once

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "header_lock.h"
#include "log_file/log_format.h"
#include "log_file/log_reader.h"
#include "log_file/log_record.h"
#include "numbered_records.h"
#include "writer_states.h"

namespace stress {

// The writers whose records a file may hold. Of a dead one the record that it was at may be there,
// whole, or not.
struct TCrowd {
    const TWriterState* states;  // by writer
    std::uint32_t living;        // 0 to here
    std::uint32_t first_dead;    // from here to `end`
    std::uint32_t end;

    bool Has(std::uint32_t writer) const {
        return writer < living || (writer >= first_dead && writer < end);
    }
};

class TRingCheck {
  public:
    explicit TRingCheck(const TCrowd& crowd) : crowd_(crowd) {
        for (std::uint32_t w = 0; w < crowd.end; ++w) {
            if (w == crowd.living) w = std::max(w, crowd.first_dead);
            if (crowd.Has(w)) returned_.emplace_back(w, crowd.states[w].Returned());
        }
    }

    // `bytes`: a copy of the file that was made after this object. Returns the fault, or an empty
    // text.
    std::string Check(const std::vector<std::uint8_t>& bytes) {
        Mox::TLogReader reader;
        if (!reader.Assign(bytes.data(), bytes.size())) return "the file cannot be read";
        std::memcpy(&header_, bytes.data(), std::min<std::size_t>(bytes.size(), sizeof(header_)));
        while (const Mox::TLogMsg* message = reader.Next()) {
            const std::string fault = Take(*message, reader.Place().number);
            if (!fault.empty()) return fault;
        }
        if (reader.SkipCount() > 0) {
            const Mox::TLogSkip& skip = reader.Skip(0);
            return "damage of " + std::to_string(skip.size) + " bytes at " +
                   std::to_string(skip.offset);
        }
        return FindLosses();
    }

    // Whether the record that a dead writer was at is there.
    bool Landed(TNumber n) const {
        return std::any_of(interrupted_.begin(), interrupted_.end(), [n](const TNumber& found) {
            return found.writer == n.writer && found.number == n.number;
        });
    }
    std::uint32_t Records() const { return records_; }
    std::size_t Writers() const { return runs_.size(); }
    const Mox::TLogFileHeader& Header() const { return header_; }
    std::uint64_t Counter() const { return header_.counter; }
    // Bytes that the ring holds.
    std::uint64_t Used() const { return used_; }

  private:
    struct TRun {
        std::uint32_t first;
        std::uint32_t last;
    };

    // `place`: the change counter after the record was written, computed from its place in the
    // ring. A record is out of order when it stands before records that were there before its call.
    std::string Take(const Mox::TLogMsg& message, std::uint64_t place) {
        TNumber n;
        Mox::TLogMsg copy = message;
        const int size = Mox::WriteLogMsg(nullptr, &copy);
        ++records_;
        used_ += Mox::kLinkSize + static_cast<std::uint64_t>(size);
        if (message.source == UnicodeString(TEXT("log_file"))) return "the ring was mended";
        if (!IsNumbered(message)) return {};
        if (!ReadNumber(message, n)) return "a record is not whole after " + Name(last_);
        if (!crowd_.Has(n.writer)) return "a record of nobody: " + Name(n);
        last_ = n;
        const TWriterState& state = crowd_.states[n.writer];
        const TWriterState::TCall last_call = state.Started();
        if (n.number > last_call.number) return "a record that nobody wrote: " + Name(n);
        if (n.number == last_call.number && place <= last_call.counter) {
            return Name(n) + " is shown in front of older ones";
        }
        if (n.number > state.Returned().number) interrupted_.push_back(n);
        const auto [run, fresh] = runs_.try_emplace(n.writer, TRun{n.number, n.number});
        if (!fresh && n.number != run->second.last + 1) {
            return Name(n) + " follows number " + std::to_string(run->second.last);
        }
        run->second.last = n.number;
        return {};
    }

    // The ring holds the newest records, so that a record is either there or older than all of
    // them.
    std::string FindLosses() const {
        for (const auto& [writer, returned] : returned_) {
            if (returned.number == 0) continue;
            const auto run = runs_.find(writer);
            const bool held = run != runs_.end() && run->second.last >= returned.number;
            const bool given_way =
                run == runs_.end() && returned.counter + records_ < header_.counter;
            if (!held && !given_way) return "lost: " + Name({writer, returned.number});
        }
        return {};
    }

    static std::string Name(TNumber n) {
        return "record " + std::to_string(n.number) + " of writer " + std::to_string(n.writer);
    }

    TCrowd crowd_;
    std::vector<std::pair<std::uint32_t, TWriterState::TCall>> returned_;
    std::map<std::uint32_t, TRun> runs_;
    std::vector<TNumber> interrupted_;
    Mox::TLogFileHeader header_{};
    TNumber last_;
    std::uint32_t records_ = 0;
    std::uint64_t used_ = 0;
};

}  // namespace stress
