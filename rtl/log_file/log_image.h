// A log file made in memory, for tools that write records on which nobody else is working.
#pragma once

#include <windows.h>

#include <cstdint>
#include <vector>

#include "mox_log/log_message.h"
#include "qv_api.h"

namespace Mox {

// One thread at a time.
class QV_API TLogImage {
  public:
    TLogImage();

    // Adds the message as the newest record, its time and ids as they are. False, and nothing is
    // added, when the file would pass what its header can address.
    bool Append(TLogMsg& message);
    // The whole file, with a ring that had room for `limit` bytes, or as many as the records need.
    const std::vector<std::uint8_t>& Finish(DWORD limit);

  private:
    std::vector<std::uint8_t> bytes_;
    DWORD count_ = 0;
};

}  // namespace Mox
