#include "log_file/log_image.h"

#include <algorithm>
#include <cstring>

#include "log_file/log_format.h"
#include "log_file/log_record.h"
#include "log_file/log_ring.h"

namespace Mox {

TLogImage::TLogImage() : bytes_(kFirstSlot) {}

bool TLogImage::Append(TLogMsg& message) {
    const int size = WriteLogMsg(nullptr, &message);
    const std::uint64_t end = std::uint64_t{bytes_.size()} + kLinkSize + static_cast<DWORD>(size);
    if (size == 0 || end > UINT32_MAX) return false;
    const std::size_t slot = bytes_.size();
    bytes_.resize(static_cast<std::size_t>(end));
    const auto link = static_cast<std::uint32_t>(end);
    std::memcpy(bytes_.data() + slot, &link, kLinkSize);
    void* record = bytes_.data() + slot + kLinkSize;
    WriteLogMsg(&record, &message);
    ++count_;
    return true;
}

const std::vector<std::uint8_t>& TLogImage::Finish(DWORD limit) {
    TLogFileHeader header{};
    const auto end = static_cast<std::uint32_t>(bytes_.size());
    EmptyRing(header, std::max<std::uint32_t>({limit, end, kSmallestLimit}));
    header.counter = count_;
    header.count = count_;
    header.write_position = end;
    std::memcpy(bytes_.data(), &header, kHeaderSize);
    return bytes_;
}

}  // namespace Mox
