// The floor of the log rows: only the system calls that every append to the shared log file needs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "log_file/log_format.h"

namespace bench {

// Writes records that are there already, into a file of the log's layout. Lock, read the header,
// in a full ring read the oldest slot's link, write the new link, write the record, write the
// header, unlock.
class BareLog {
  public:
    // How to wait for a busy lock: inside the system call, or with a try every millisecond.
    enum class Wait { InCall, Polling };

    BareLog(const std::string& file_name, std::uint32_t limit, std::uint32_t record_size,
            Wait wait);
    BareLog(const BareLog&) = delete;
    BareLog& operator=(const BareLog&) = delete;
    ~BareLog();

    // Whether every call succeeded.
    bool Append();

  private:
    bool Lock(short type);

    int fd_;
    std::uint32_t limit_;
    Wait wait_;
    std::vector<char> record_;
    Mox::TLogFileHeader header_{};
};

}  // namespace bench
