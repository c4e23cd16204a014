#include "driver_devmode/qv_devmode.h"

#include <cstring>

#include "mox_classes/text/log_here.h"

using Mox::LogHere;

std::uint32_t QV_DEVMODE_AvailableFields =
    DM_ORIENTATION | DM_PAPERSIZE | DM_PAPERLENGTH | DM_PAPERWIDTH | DM_DEFAULTSOURCE;

namespace {

constexpr char kId[QV_DEVMODE_EXTRA::kIdSize] = "QV DEVMODEex";

void InitPublic(DEVMODEW& dm) {
    constexpr WCHAR kDeviceName[] = TEXT("Vantrel");
    constexpr WCHAR kFormName[] = TEXT("A4");
    std::memcpy(dm.dmDeviceName, kDeviceName, sizeof(kDeviceName));
    std::memcpy(dm.dmFormName, kFormName, sizeof(kFormName));
    dm.dmSpecVersion = DM_SPECVERSION;
    dm.dmDriverVersion = 0x0100;
    dm.dmSize = QV_DEVMODE_EXTRA::kPublicSize;
    dm.dmDriverExtra = QV_DEVMODE_EXTRA::kExtraSize;
    dm.dmFields = QV_DEVMODE_AvailableFields;
    dm.dmOrientation = DMORIENT_PORTRAIT;
    dm.dmPaperSize = DMPAPER_A4;
    dm.dmPaperLength = 2970;
    dm.dmPaperWidth = 2100;
    dm.dmScale = 100;
    dm.dmCopies = 1;
    dm.dmDefaultSource = DMBIN_AUTO;
    dm.dmColor = DMCOLOR_COLOR;
    dm.dmDuplex = DMDUP_SIMPLEX;
    dm.dmTTOption = DMTT_SUBDEV;
    dm.dmCollate = DMCOLLATE_FALSE;
    dm.dmNup = DMNUP_ONEUP;
    dm.dmICMMethod = DMICMMETHOD_NONE;
    dm.dmICMIntent = DMICM_SATURATE;
    dm.dmMediaType = DMMEDIA_STANDARD;
    dm.dmDitherType = DMDITHER_NONE;
}

void InitExtra(QV_DEVMODE_EXTRA& extra) {
    std::memcpy(extra.exID, kId, sizeof(kId));
    extra.exVersion = QV_DEVMODE_EXTRA::kVersion;
    extra.exFax.Resolution[0] = 204;
    extra.exFax.Resolution[1] = 196;
    extra.exOut.UseDocNameAsFileName = 1;
    extra.exOut.UseSerial = 1;
    extra.exOut.RememberLastDir = 1;
    extra.exRun.Enabled = 1;
    extra.exLayout.CenterHorizontal = 1;
    extra.exLayout.DeleteEmptyPage = 1;
    extra.exLayout.ShrinkIfLarge = 1;
    extra.exIPO.Init();
}

}  // namespace

void QV_DEVMODE::Init() {
    std::memset(static_cast<void*>(this), 0, sizeof(*this));
    InitPublic(*this);
    InitExtra(*this);
}

void QV_DEVMODE::Validate() {
    if (dmPrintQuality == 600 && dmYResolution == 600) return;
    const int x = exFax.Resolution[0];
    const int y = exFax.Resolution[1];
    dmPrintQuality = dmYResolution = static_cast<short>(x >= 2 * y ? 2 * y : y);
}

bool QV_DEVMODE::IsValid() const {
    return IsValidQV_DEVMODE(static_cast<DEVMODEW*>(const_cast<QV_DEVMODE*>(this)));
}

bool QV_DEVMODE::IsValidQV_DEVMODE(DEVMODEW* dm) {
    const int extra_size = dm == nullptr ? 0 : dm->dmDriverExtra;
    if (extra_size < kExtraSize) {
        LogHere('*', UnicodeString().sprintf(
                         TEXT("[QV_DEVMODE::IsValidQV_DEVMODE] DriverExtra size mismatch "
                              "dmDriverExtra %d != %d"),
                         extra_size, int{kExtraSize}));
        return false;
    }
    const auto* block = static_cast<const QV_DEVMODE*>(dm);
    if (std::memcmp(block->exID, kId, sizeof(kId)) != 0) {
        LogHere('*', TEXT("[QV_DEVMODE::IsValidQV_DEVMODE] Extra ID mismatch"));
        return false;
    }
    if (block->exVersion < kOldestVersion) {
        LogHere('*', TEXT("[QV_DEVMODE::IsValidQV_DEVMODE] Extra version mismatch"));
        return false;
    }
    return true;
}

bool QV_DEVMODE::IsValidQV_DEVMODE(DEVMODEW* dm, int size) {
    constexpr int kSizesEnd = offsetof(DEVMODEW, dmFields);
    if (dm != nullptr && (size < kSizesEnd || (dm->dmDriverExtra >= kExtraSize && size < Size()))) {
        LogHere('*', UnicodeString().sprintf(
                         TEXT("[QV_DEVMODE::IsValidQV_DEVMODE] Block size mismatch %d != %d"), size,
                         Size()));
        return false;
    }
    return IsValidQV_DEVMODE(dm);
}
