// qv log save: some of a log's records as a log of their own.
#pragma once

#include <windows.h>

#include <string>

#include "base/files.h"
#include "log/log_filter.h"

namespace qv {

// What a log that the product makes has room for.
inline constexpr DWORD kUsualLimit = 0x500000;

struct SaveOptions {
    Output output;
    std::string file;
    LogFilterOptions filter;
};

// Throws Failure, kDamaged when everything that can be read has been saved.
void SaveLog(const SaveOptions& options);

}  // namespace qv
