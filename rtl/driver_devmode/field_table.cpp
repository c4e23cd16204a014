#include "driver_devmode/field_table.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "driver_devmode/qv_devmode.h"

namespace driver_devmode {

namespace {

using enum FieldKind;

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

constexpr TFieldInfo Field(const WCHAR* name, FieldKind kind, int count = 1,
                           ValueTable values = ValueTable::None) {
    return {name, kind, true, SizeOf(kind), count, values, 0};
}

constexpr TFieldInfo Unlisted(const WCHAR* name, FieldKind kind, int count = 1) {
    return {name, kind, false, SizeOf(kind), count, ValueTable::None, 0};
}

constexpr TFieldInfo Bytes(int count) {
    return {TEXT(""), Gap, false, 1, count, ValueTable::None, 0};
}

template <std::size_t N>
constexpr std::array<TFieldInfo, N> WithOffsets(std::array<TFieldInfo, N> rows) {
    int offset = 0;
    for (TFieldInfo& row : rows) {
        row.Offset = offset;
        offset = row.End();
    }
    return rows;
}

constexpr auto kDevModeFields = WithOffsets(std::to_array<TFieldInfo>({
    Unlisted(TEXT("dmDeviceName"), WideText, CCHDEVICENAME),
    Unlisted(TEXT("dmSpecVersion"), UInt16),
    Unlisted(TEXT("dmDriverVersion"), UInt16),
    Unlisted(TEXT("dmSize"), UInt16),
    Unlisted(TEXT("dmDriverExtra"), UInt16),
    Field(TEXT("dmFields"), UInt32),
    Field(TEXT("dmOrientation"), Int16, 1, ValueTable::Orientation),
    Field(TEXT("dmPaperSize"), Int16, 1, ValueTable::PaperSize),
    Field(TEXT("dmPaperLength"), Int16),
    Field(TEXT("dmPaperWidth"), Int16),
    Field(TEXT("dmScale"), Int16),
    Field(TEXT("dmCopies"), Int16),
    Field(TEXT("dmDefaultSource"), Int16),
    Field(TEXT("dmPrintQuality"), Int16, 1, ValueTable::PrintQuality),
    Field(TEXT("dmColor"), Int16),
    Field(TEXT("dmDuplex"), Int16),
    Field(TEXT("dmYResolution"), Int16),
    Field(TEXT("dmTTOption"), Int16),
    Field(TEXT("dmCollate"), Int16),
    Field(TEXT("dmFormName"), WideText, CCHFORMNAME),
    Field(TEXT("dmLogPixels"), UInt16),
    Field(TEXT("dmBitsPerPel"), UInt32),
    Field(TEXT("dmPelsWidth"), UInt32),
    Field(TEXT("dmPelsHeight"), UInt32),
    Field(TEXT("dmNup"), UInt32),
    Field(TEXT("dmDisplayFrequency"), UInt32),
    Field(TEXT("dmICMMethod"), UInt32),
    Field(TEXT("dmICMIntent"), UInt32),
    Field(TEXT("dmMediaType"), UInt32),
    Field(TEXT("dmDitherType"), UInt32),
    Field(TEXT("dmReserved1"), UInt32),
    Field(TEXT("dmReserved2"), UInt32),
    Field(TEXT("dmPanningWidth"), UInt32),
    Field(TEXT("dmPanningHeight"), UInt32),
    Unlisted(TEXT("exID"), AnsiText, QV_DEVMODE_EXTRA::kIdSize),
    Unlisted(TEXT("exVersion"), UInt16),
    Field(TEXT("exDialog.Mode"), UInt8, 1, ValueTable::DialogMode),
    Field(TEXT("exFax.PaperSize"), Int16, 1, ValueTable::PaperSize),
    Field(TEXT("exFax.Resolution"), Int16, 2),
    Field(TEXT("exOut.UseDocNameAsFileName"), Bool8),
    Field(TEXT("exOut.UseSerial"), Bool8),
    Field(TEXT("exOut.RememberLastDir"), Bool8),
    Bytes(4),  // the offsets of exOut.Directory and exOut.FileName
    Field(TEXT("exRun.Enabled"), Bool8),
    Bytes(2),  // the offset of exRun.Target
    Field(TEXT("exLayout.CenterHorizontal"), Bool8),
    Field(TEXT("exLayout.CenterVertical"), Bool8),
    Field(TEXT("exLayout.DeleteEmptyPage"), Bool8),
    Field(TEXT("exLayout.DeleteTrailedSpace"), Bool8),
    Field(TEXT("exLayout.ShrinkIfLarge"), Bool8),
    Field(TEXT("exLayout.GrowIfSmall"), Bool8),
    Field(TEXT("exIPO.DitherMethod"), Int8, 1, ValueTable::DitherMethod),
    Field(TEXT("exIPO.Active"), Bool8),
    Bytes(2),
    Field(TEXT("exIPO.Contrast"), Int8),
    Field(TEXT("exIPO.Brightness"), Int8),
    Bytes(6),
    Field(TEXT("exIPO.CP0"), Int16, 2),
    Field(TEXT("exIPO.CP1"), Int16, 2),
    Field(TEXT("exIPO.CP2"), Int16, 2),
    Field(TEXT("exIPO.CP3"), Int16, 2),
    Field(TEXT("exIPO.CriticalZone"), UInt8, 2),
    Field(TEXT("exIPO.VisibleZone"), UInt8, 2),
    Bytes(4),
    Field(TEXT("exIPO.ColorMixer"), UInt8, 3),
    Bytes(1),
    Bytes(6),
}));
static_assert(kDevModeFields.back().End() ==
              QV_DEVMODE_EXTRA::kPublicSize + offsetof(QV_DEVMODE_EXTRA, exPool));

constexpr auto kWrapperFields = WithOffsets(std::to_array<TFieldInfo>({
    Unlisted(TEXT("DeviceName"), String),
    Unlisted(TEXT("FormName"), String),
    Field(TEXT("exOut.Directory"), String),
    Field(TEXT("exOut.FileName"), String),
    Field(TEXT("exRun.Target"), String),
}));

}  // namespace

std::span<const TFieldInfo> DevModeFields() {
    return kDevModeFields;
}

std::span<const TFieldInfo> WrapperFields() {
    return kWrapperFields;
}

const TFieldInfo* FindField(std::span<const TFieldInfo> rows, const UnicodeString& name) {
    const std::basic_string_view<WCHAR> wanted(name.t_str(),
                                               static_cast<std::size_t>(name.Length()));
    const auto row = std::find_if(rows.begin(), rows.end(), [wanted](const TFieldInfo& field) {
        return field.Kind != Gap && wanted == field.Name;
    });
    return row == rows.end() ? nullptr : &*row;
}

}  // namespace driver_devmode
