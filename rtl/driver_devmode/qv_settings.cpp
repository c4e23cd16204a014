#include "driver_devmode/qv_settings.h"

// Here and not in the header, so that all modules use the library's.
TQVSettings::TQVSettings() = default;
TQVSettings::TQVSettings(const TQVSettings& other) = default;
TQVSettings& TQVSettings::operator=(const TQVSettings& other) = default;
TQVSettings::~TQVSettings() = default;
