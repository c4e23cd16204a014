// The rows of the settings, in the order of the layout (qv_devmode.h, image_options.h). A row holds
// all that the library knows of a setting. docs/contributing.md says how to add one.
#pragma once

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstddef>

#include "driver_devmode/field_info.h"
#include "driver_devmode/qv_devmode.h"

namespace driver_devmode {

namespace rows {

using enum FieldKind;

constexpr int kNoLimit = 32767;

constexpr int SizeOf(FieldKind kind) {
    switch (kind) {
        case Int16:
        case UInt16:
        case WideText:
            return 2;
        case UInt32:
            return 4;
        case String:
            return sizeof(UnicodeString);
        default:
            return 1;
    }
}

// Fills in the sizes, and the offsets of the rows that name no member.
template <std::size_t N>
constexpr std::array<TFieldInfo, N> Laid(std::array<TFieldInfo, N> table) {
    int offset = 0;
    for (TFieldInfo& row : table) {
        row.Size = SizeOf(row.Kind);
        if (row.Offset < 0) row.Offset = offset;
        offset = row.End();
    }
    return table;
}

// Whether each row begins where the one before it ends.
template <std::size_t N>
constexpr bool IsGapless(const std::array<TFieldInfo, N>& table) {
    for (std::size_t i = 1; i < N; ++i) {
        if (table[i].Offset != table[i - 1].End()) return false;
    }
    return table[0].Offset == 0;
}

// The name and the place of a member of the layout.
#define QV_PUBLIC(member) \
    .Name = TEXT(#member), .Offset = static_cast<int>(offsetof(DEVMODEW, member))
#define QV_PRIVATE_AS(name, member) \
    .Name = TEXT(name),             \
    .Offset = QV_DEVMODE_EXTRA::kPublicSize + static_cast<int>(offsetof(QV_DEVMODE_EXTRA, member))
#define QV_PRIVATE(member) QV_PRIVATE_AS(#member, member)

// Bytes without a name are a row of their count.
inline constexpr auto kDevModeFields = Laid(std::to_array<TFieldInfo>({
    {QV_PUBLIC(dmDeviceName), .Kind = WideText, .Count = CCHDEVICENAME, .Listed = false,
     .FreshText = "Vantrel"},
    {QV_PUBLIC(dmSpecVersion), .Kind = UInt16, .Listed = false, .Fresh = {DM_SPECVERSION}},
    {QV_PUBLIC(dmDriverVersion), .Kind = UInt16, .Listed = false, .Fresh = {0x0100}},
    {QV_PUBLIC(dmSize), .Kind = UInt16, .Listed = false, .Least = QV_DEVMODE_EXTRA::kPublicSize,
     .Fresh = {QV_DEVMODE_EXTRA::kPublicSize}},
    {QV_PUBLIC(dmDriverExtra), .Kind = UInt16, .Listed = false,
     .Least = QV_DEVMODE_EXTRA::kExtraSize, .Fresh = {QV_DEVMODE_EXTRA::kExtraSize}},
    {QV_PUBLIC(dmFields), .Kind = UInt32, .Fresh = {kSupportedFields}},
    {QV_PUBLIC(dmOrientation), .Kind = Int16, .Values = ValueTable::Orientation,
     .Fresh = {DMORIENT_PORTRAIT}, .Range = {1, 2}, .Bit = DM_ORIENTATION},
    {QV_PUBLIC(dmPaperSize), .Kind = Int16, .Values = ValueTable::PaperSize, .Fresh = {DMPAPER_A4},
     .Range = {1, 118, kOrZero | kOrDriversOwn}, .Bit = DM_PAPERSIZE},
    {QV_PUBLIC(dmPaperLength), .Kind = Int16, .Fresh = {2970}, .Range = {1, kNoLimit, kOrZero},
     .Bit = DM_PAPERLENGTH},
    {QV_PUBLIC(dmPaperWidth), .Kind = Int16, .Fresh = {2100}, .Range = {1, kNoLimit, kOrZero},
     .Bit = DM_PAPERWIDTH},
    {QV_PUBLIC(dmScale), .Kind = Int16, .Fresh = {100}, .Range = {1, kNoLimit}, .Bit = DM_SCALE},
    {QV_PUBLIC(dmCopies), .Kind = Int16, .Fresh = {1}, .Range = {1, kNoLimit}, .Bit = DM_COPIES},
    {QV_PUBLIC(dmDefaultSource), .Kind = Int16, .Fresh = {DMBIN_AUTO},
     .Range = {1, 15, kOrDriversOwn}, .Bit = DM_DEFAULTSOURCE},
    {QV_PUBLIC(dmPrintQuality), .Kind = Int16, .Values = ValueTable::PrintQuality,
     .Range = {-4, kNoLimit}, .Bit = DM_PRINTQUALITY},
    {QV_PUBLIC(dmColor), .Kind = Int16, .Fresh = {DMCOLOR_COLOR}, .Range = {1, 2}, .Bit = DM_COLOR},
    {QV_PUBLIC(dmDuplex), .Kind = Int16, .Fresh = {DMDUP_SIMPLEX}, .Range = {1, 3},
     .Bit = DM_DUPLEX},
    {QV_PUBLIC(dmYResolution), .Kind = Int16, .Range = {1, kNoLimit, kOrZero},
     .Bit = DM_YRESOLUTION},
    {QV_PUBLIC(dmTTOption), .Kind = Int16, .Fresh = {DMTT_SUBDEV}, .Range = {1, 4},
     .Bit = DM_TTOPTION},
    {QV_PUBLIC(dmCollate), .Kind = Int16, .Fresh = {DMCOLLATE_FALSE}, .Range = {0, 1},
     .Bit = DM_COLLATE},
    {QV_PUBLIC(dmFormName), .Kind = WideText, .Count = CCHFORMNAME, .FreshText = "A4",
     .Bit = DM_FORMNAME},
    {QV_PUBLIC(dmLogPixels), .Kind = UInt16},
    {QV_PUBLIC(dmBitsPerPel), .Kind = UInt32},
    {QV_PUBLIC(dmPelsWidth), .Kind = UInt32},
    {QV_PUBLIC(dmPelsHeight), .Kind = UInt32},
    {QV_PUBLIC(dmNup), .Kind = UInt32, .Fresh = {DMNUP_ONEUP}, .Range = {1, 2, kOrZero},
     .Bit = DM_NUP},
    {QV_PUBLIC(dmDisplayFrequency), .Kind = UInt32},
    {QV_PUBLIC(dmICMMethod), .Kind = UInt32, .Fresh = {DMICMMETHOD_NONE},
     .Range = {1, 4, kOrZero | kOrDriversOwn}, .Bit = DM_ICMMETHOD},
    {QV_PUBLIC(dmICMIntent), .Kind = UInt32, .Fresh = {DMICM_SATURATE},
     .Range = {1, 4, kOrZero | kOrDriversOwn}, .Bit = DM_ICMINTENT},
    {QV_PUBLIC(dmMediaType), .Kind = UInt32, .Fresh = {DMMEDIA_STANDARD},
     .Range = {1, 3, kOrZero | kOrDriversOwn}, .Bit = DM_MEDIATYPE},
    {QV_PUBLIC(dmDitherType), .Kind = UInt32, .Fresh = {DMDITHER_NONE},
     .Range = {1, 10, kOrZero | kOrDriversOwn}, .Bit = DM_DITHERTYPE},
    {QV_PUBLIC(dmReserved1), .Kind = UInt32, .Range = {0, 0}},
    {QV_PUBLIC(dmReserved2), .Kind = UInt32, .Range = {0, 0}},
    {QV_PUBLIC(dmPanningWidth), .Kind = UInt32, .Bit = DM_PANNINGWIDTH},
    {QV_PUBLIC(dmPanningHeight), .Kind = UInt32, .Bit = DM_PANNINGHEIGHT},
    {QV_PRIVATE(exID), .Kind = AnsiText, .Count = QV_DEVMODE_EXTRA::kIdSize, .Listed = false,
     .FreshText = QV_DEVMODE_EXTRA::kId},
    {QV_PRIVATE(exVersion), .Kind = UInt16, .Listed = false,
     .Least = QV_DEVMODE_EXTRA::kOldestVersion, .Fresh = {QV_DEVMODE_EXTRA::kVersion}},
    {QV_PRIVATE(exDialog.Mode), .Kind = UInt8, .Values = ValueTable::DialogMode, .Range = {0, 1},
     .Key = {TEXT("Mode"), 1}},
    {QV_PRIVATE(exFax.PaperSize), .Kind = Int16, .Values = ValueTable::PaperSize,
     .Range = {1, 118, kOrZero | kOrDriversOwn}},
    {QV_PRIVATE(exFax.Resolution), .Kind = Int16, .Count = 2, .Fresh = {204, 196},
     .Range = {1, kNoLimit}},
    {QV_PRIVATE(exOut.UseDocNameAsFileName), .Kind = Bool8, .Fresh = {1},
     .Key = {TEXT("UseDocname"), 5}},
    {QV_PRIVATE(exOut.UseSerial), .Kind = Bool8, .Fresh = {1}, .Key = {TEXT("UseSerial"), 4}},
    {QV_PRIVATE(exOut.RememberLastDir), .Kind = Bool8, .Fresh = {1}},
    {.Count = 4},  // the offsets of exOut.Directory and exOut.FileName
    {QV_PRIVATE(exRun.Enabled), .Kind = Bool8, .Fresh = {1}, .Key = {TEXT("CallApp"), 6}},
    {.Count = 2},  // the offset of exRun.Target
    {QV_PRIVATE(exLayout.CenterHorizontal), .Kind = Bool8, .Fresh = {1}},
    {QV_PRIVATE(exLayout.CenterVertical), .Kind = Bool8},
    {QV_PRIVATE(exLayout.DeleteEmptyPage), .Kind = Bool8, .Fresh = {1}},
    {QV_PRIVATE(exLayout.DeleteTrailedSpace), .Kind = Bool8},
    {QV_PRIVATE(exLayout.ShrinkIfLarge), .Kind = Bool8, .Fresh = {1}},
    {QV_PRIVATE(exLayout.GrowIfSmall), .Kind = Bool8},
    {QV_PRIVATE(exIPO.DitherMethod), .Kind = Int8, .Values = ValueTable::DitherMethod, .Fresh = {2},
     .Range = {0, 3}, .Key = {TEXT("DitherMethod"), 3, 2}},
    {QV_PRIVATE(exIPO.Active), .Kind = Bool8, .Fresh = {1}},
    {.Count = 2},
    {QV_PRIVATE(exIPO.Contrast), .Kind = Int8, .Fresh = {5}},
    {QV_PRIVATE(exIPO.Brightness), .Kind = Int8, .Fresh = {5}},
    {.Count = 6},
    {QV_PRIVATE_AS("exIPO.CP0", exIPO.CP[0]), .Kind = Int16, .Count = 2, .Fresh = {0, 0},
     .Range = {0, 255}},
    {QV_PRIVATE_AS("exIPO.CP1", exIPO.CP[1]), .Kind = Int16, .Count = 2, .Fresh = {127, 0},
     .Range = {0, 255}},
    {QV_PRIVATE_AS("exIPO.CP2", exIPO.CP[2]), .Kind = Int16, .Count = 2, .Fresh = {127, 255},
     .Range = {0, 255}},
    {QV_PRIVATE_AS("exIPO.CP3", exIPO.CP[3]), .Kind = Int16, .Count = 2, .Fresh = {255, 255},
     .Range = {0, 255}},
    {QV_PRIVATE(exIPO.CriticalZone), .Kind = UInt8, .Count = 2, .Fresh = {117, 137}},
    {QV_PRIVATE(exIPO.VisibleZone), .Kind = UInt8, .Count = 2, .Fresh = {37, 253}},
    {.Count = 4},
    {QV_PRIVATE(exIPO.ColorMixer), .Kind = UInt8, .Count = 3, .Fresh = {30, 59, 11},
     .Range = {0, 100}, .Key = {TEXT("ColorMix"), 2, 1}},
    {.Count = 1},
    {.Count = 6},
}));

#undef QV_PUBLIC
#undef QV_PRIVATE
#undef QV_PRIVATE_AS

// The strings that the wrapper keeps; qvdm_fields.cpp names their members in the same order.
inline constexpr auto kWrapperFields = Laid(std::to_array<TFieldInfo>({
    {.Name = TEXT("DeviceName"), .Kind = String, .Listed = false},
    {.Name = TEXT("FormName"), .Kind = String, .Listed = false},
    {.Name = TEXT("exOut.Directory"), .Kind = String, .Key = {TEXT("DefaultSaveDir"), 8}},
    {.Name = TEXT("exOut.FileName"), .Kind = String, .Key = {TEXT("DefaultSaveFile"), 7}},
    {.Name = TEXT("exRun.Target"), .Kind = String},
}));

static_assert(IsGapless(kDevModeFields), "a row is missing, too much or in another order");
static_assert(kDevModeFields.back().End() ==
              QV_DEVMODE_EXTRA::kPublicSize + offsetof(QV_DEVMODE_EXTRA, exPool));
// Several numbers in one field have no named values, so that their text needs no search for names.
static_assert(std::ranges::all_of(kDevModeFields, [](const TFieldInfo& row) {
    const bool is_plain = row.Kind != Bool8 && row.Values == ValueTable::None;
    return row.IsText() || row.Kind == Gap || row.Count == 1 ||
           (is_plain && row.Count <= kMostElements);
}));

}  // namespace rows

using rows::kDevModeFields;
using rows::kWrapperFields;

}  // namespace driver_devmode
