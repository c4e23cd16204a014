// qv log save: some of a log's records as a log of their own.
#pragma once

#include <string>

#include "log/log_filter.h"

namespace qv {

struct SaveOptions {
    std::string output, file;
    LogFilterOptions filter;
    bool force = false;  // an output file that exists is replaced
};

// Throws Failure, kDamaged when everything that can be read has been saved.
void SaveLog(const SaveOptions& options);

}  // namespace qv
