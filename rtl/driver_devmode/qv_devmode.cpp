#include "driver_devmode/qv_devmode.h"

#include <cstring>

#include "mox_classes/text/log_here.h"

using Mox::LogHere;

std::uint32_t QV_DEVMODE_AvailableFields = kSupportedFields;

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
