// QV_DEVMODE, the printer driver's settings: the public DEVMODEW followed by a private block, 4400
// bytes in all.
//
// The block travels through the print spooler and between the driver's modules, so its bytes are a
// wire and storage format: docs/formats/devmode.md shows every offset, and this header asserts
// them.
#pragma once

#include <windows.h>
#include <winspool.h>

#include <cstddef>
#include <cstdint>

#include "driver_devmode/image_options.h"
#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// The public fields that the product supports.
inline constexpr std::uint32_t kSupportedFields =
    DM_ORIENTATION | DM_PAPERSIZE | DM_PAPERLENGTH | DM_PAPERWIDTH | DM_DEFAULTSOURCE;

// The dmFields mask that a fresh block gets. Start-up may replace it from the resource file;
// read-only afterwards.
extern QV_API std::uint32_t QV_DEVMODE_AvailableFields;

#pragma pack(push, 1)

// The private part as it lies behind the public one; offsets below count from the start of the
// whole block.
struct QV_DEVMODE_EXTRA {
    static constexpr int kPublicSize = 220;
    static constexpr int kExtraSize = 4180;
    static constexpr int kPoolUnits = 2048;
    static constexpr int kIdSize = 13;
    static constexpr char kId[kIdSize] = "QV DEVMODEex";
    static constexpr std::uint16_t kVersion = 263;
    static constexpr std::uint16_t kOldestVersion = 261;

    struct TDialog {
        std::uint8_t Mode;  // 0 interactive, 1 silent
    };
    struct TFax {
        std::int16_t PaperSize;      // DMPAPER_ value of the fax page
        std::int16_t Resolution[2];  // horizontal, vertical; dots per inch
    };
    // Booleans are bytes, 0 or not; string offsets count code units from the start of the pool, 0
    // is the empty string.
    struct TOut {
        std::uint8_t UseDocNameAsFileName;
        std::uint8_t UseSerial;
        std::uint8_t RememberLastDir;
        std::int16_t DirectoryOffset;
        std::int16_t FileNameOffset;
    };
    struct TRun {
        std::uint8_t Enabled;
        std::int16_t TargetOffset;
    };
    struct TLayout {
        std::uint8_t CenterHorizontal;
        std::uint8_t CenterVertical;
        std::uint8_t DeleteEmptyPage;
        std::uint8_t DeleteTrailedSpace;
        std::uint8_t ShrinkIfLarge;
        std::uint8_t GrowIfSmall;
    };

    char exID[kIdSize];
    std::uint16_t exVersion;
    TDialog exDialog;
    TFax exFax;
    TOut exOut;
    TRun exRun;
    TLayout exLayout;
    TImageProcessOptions exIPO;
    WCHAR exPool[kPoolUnits];  // unit 0 is always a terminator
};

struct QV_API QV_DEVMODE : DEVMODEW, QV_DEVMODE_EXTRA {
    QV_DEVMODE() { Init(); }
    // Sets the whole block to its defaults; the three strings are empty.
    void Init();
    // Derives dmPrintQuality and dmYResolution from the fax resolution, unless both are 600.
    void Validate();
    bool IsValid() const;
    // Whether `dm` is a block of this driver: extra size, identifier and version. Logs the first
    // reason why not and never changes the block. The whole 4400 bytes must be readable when
    // dmDriverExtra claims them.
    static bool IsValidQV_DEVMODE(DEVMODEW* dm);
    // The same for a block of `size` bytes that come from outside: one that is too short is not
    // read past its end.
    static bool IsValidQV_DEVMODE(DEVMODEW* dm, int size);
    static int Size() { return kPublicSize + kExtraSize; }
};

#pragma pack(pop)

static_assert(sizeof(QV_DEVMODE_EXTRA) == QV_DEVMODE_EXTRA::kExtraSize);
static_assert(sizeof(QV_DEVMODE) == 4400);
#define QV_ASSERT_OFFSET(member, offset) \
    static_assert(QV_DEVMODE_EXTRA::kPublicSize + offsetof(QV_DEVMODE_EXTRA, member) == (offset))
QV_ASSERT_OFFSET(exID, 220);
QV_ASSERT_OFFSET(exVersion, 233);
QV_ASSERT_OFFSET(exDialog.Mode, 235);
QV_ASSERT_OFFSET(exFax.PaperSize, 236);
QV_ASSERT_OFFSET(exFax.Resolution, 238);
QV_ASSERT_OFFSET(exOut.UseDocNameAsFileName, 242);
QV_ASSERT_OFFSET(exOut.UseSerial, 243);
QV_ASSERT_OFFSET(exOut.RememberLastDir, 244);
QV_ASSERT_OFFSET(exOut.DirectoryOffset, 245);
QV_ASSERT_OFFSET(exOut.FileNameOffset, 247);
QV_ASSERT_OFFSET(exRun.Enabled, 249);
QV_ASSERT_OFFSET(exRun.TargetOffset, 250);
QV_ASSERT_OFFSET(exLayout.CenterHorizontal, 252);
QV_ASSERT_OFFSET(exLayout.CenterVertical, 253);
QV_ASSERT_OFFSET(exLayout.DeleteEmptyPage, 254);
QV_ASSERT_OFFSET(exLayout.DeleteTrailedSpace, 255);
QV_ASSERT_OFFSET(exLayout.ShrinkIfLarge, 256);
QV_ASSERT_OFFSET(exLayout.GrowIfSmall, 257);
QV_ASSERT_OFFSET(exIPO, 258);
QV_ASSERT_OFFSET(exPool, 304);
#undef QV_ASSERT_OFFSET
