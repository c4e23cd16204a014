// A position in bytes from outside that never passes their end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Mox {

class TByteCursor {
  public:
    TByteCursor(const void* bytes, std::size_t size)
        : at_(static_cast<const std::uint8_t*>(bytes)), left_(size) {}

    const std::uint8_t* At() const { return at_; }
    std::size_t Left() const { return left_; }

    // All or nothing: what is not there leaves the cursor where it is.
    [[nodiscard]] bool Take(void* target, std::size_t size) {
        if (size > left_) return false;
        std::memcpy(target, at_, size);
        return Skip(size);
    }
    bool Skip(std::size_t size) {
        if (size > left_) return false;
        at_ += size;
        left_ -= size;
        return true;
    }

  private:
    const std::uint8_t* at_;
    std::size_t left_;
};

}  // namespace Mox
