#include "log/record_parts.h"

#include <cstdint>
#include <cstdio>

namespace qv {

std::string LevelName(int level) {
    if (level >= 0x20 && level < 0x7F) return std::string(1, static_cast<char>(level));
    char text[16];
    std::snprintf(text, sizeof(text), "0x%X", static_cast<unsigned>(level));
    return text;
}

std::size_t BlockSize(const Mox::TLogMsg& record) {
    const auto size = std::int64_t{record.dataSize};
    return static_cast<std::size_t>(record.data == nullptr ? 0 : size < 0 ? -size : size);
}

std::string BlockHex(const Mox::TLogMsg& record) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    const auto* bytes = static_cast<const unsigned char*>(record.data);
    std::string hex;
    for (std::size_t i = 0; i < BlockSize(record); ++i) {
        hex += kDigits[bytes[i] >> 4];
        hex += kDigits[bytes[i] & 0x0F];
    }
    return hex;
}

}  // namespace qv
