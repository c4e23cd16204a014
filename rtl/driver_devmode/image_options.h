// The image processing options inside the settings block and their small value types. Packed bytes;
// the layout is part of the block's format (docs/formats/devmode.md).
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

#include "qv_api.h"

#pragma pack(push, 1)

// A point of a curve: x, then y.
struct TQVVector {
    std::int16_t X;
    std::int16_t Y;

    // Both truncated to 16 bits.
    void SetValues(int x, int y) {
        X = static_cast<std::int16_t>(x);
        Y = static_cast<std::int16_t>(y);
    }
};

// A range of brightness: low bound, then high bound.
struct TColorRange {
    std::uint8_t Low;
    std::uint8_t High;

    // Both truncated to 8 bits.
    void SetValues(int low, int high) {
        Low = static_cast<std::uint8_t>(low);
        High = static_cast<std::uint8_t>(high);
    }
};

// Weights of red, green and blue in per cent for the conversion to grey.
struct TColorMix {
    std::uint8_t Red;
    std::uint8_t Green;
    std::uint8_t Blue;

    // All truncated to 8 bits.
    void SetValues(int red, int green, int blue) {
        Red = static_cast<std::uint8_t>(red);
        Green = static_cast<std::uint8_t>(green);
        Blue = static_cast<std::uint8_t>(blue);
    }
};

struct QV_API TImageProcessOptions {
    static constexpr int kControlPoints = 4;

    std::int8_t DitherMethod;  // 0 monochrome, 1 RH4, 2 PD256, 3 ED
    std::uint8_t Active;       // boolean
    std::uint8_t reserved_2[2];
    std::int8_t Contrast;
    std::int8_t Brightness;
    std::uint8_t reserved_6[6];
    TQVVector CP[kControlPoints];  // control points of a curve on the 0 to 255 scale
    TColorRange CriticalZone;
    TColorRange VisibleZone;
    std::uint8_t reserved_32[4];
    TColorMix ColorMixer;
    std::uint8_t reserved_39;
    std::uint8_t reserved_40[6];

    // cppcheck-suppress uninitMemberVar ; bytes that nobody reads
    TImageProcessOptions() { Init(); }
    // Sets the named members and the byte at 39 to their defaults; the other reserved bytes are
    // left alone.
    void Init();
    // Writes the four control points, widened with sign, to points[0..3].
    void cpToPOINT(POINT* points) const;
};

#pragma pack(pop)

static_assert(sizeof(TImageProcessOptions) == 46);
static_assert(offsetof(TImageProcessOptions, Active) == 1);
static_assert(offsetof(TImageProcessOptions, Contrast) == 4);
static_assert(offsetof(TImageProcessOptions, Brightness) == 5);
static_assert(offsetof(TImageProcessOptions, CP) == 12);
static_assert(offsetof(TImageProcessOptions, CriticalZone) == 28);
static_assert(offsetof(TImageProcessOptions, VisibleZone) == 30);
static_assert(offsetof(TImageProcessOptions, ColorMixer) == 36);
static_assert(offsetof(TImageProcessOptions, reserved_39) == 39);
