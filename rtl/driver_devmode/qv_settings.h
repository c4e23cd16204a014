// TQVSettings, a value type that the driver's other modules pass around. This library only gives it
// its layout and its copying; what the members mean is theirs.
#pragma once

#include <cstdint>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// Copies share the strings' buffers and copy everything else bit by bit. One thread at a time.
struct QV_API TQVSettings {
    TQVSettings();
    TQVSettings(const TQVSettings& other);
    TQVSettings& operator=(const TQVSettings& other);
    ~TQVSettings();

    std::int64_t First = 0;
    std::int64_t Second = 0;
    UnicodeString Name;
    std::int32_t Number = 0;
    UnicodeString Texts[5];
    std::uint8_t Flags[3] = {};
    UnicodeString Comment;
    std::int32_t Count = 0;
    std::int32_t Values[8] = {};
    std::uint8_t Data[52] = {};
    std::int32_t Last = 0;
};
