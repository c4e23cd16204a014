#include "driver_devmode/qv_settings.h"

// Not in the header, so that all modules call the library's copy.
TQVSettings::TQVSettings() = default;
TQVSettings::TQVSettings(const TQVSettings& other) = default;
TQVSettings& TQVSettings::operator=(const TQVSettings& other) = default;
TQVSettings::~TQVSettings() = default;
