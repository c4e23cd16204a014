// qv report: health, settings and log of a machine as one page for a browser without a network.
#pragma once

#include <string>

#include "log/log_filter.h"
#include "report/contents.h"

namespace qv {

// The page. Names are replaced when `redaction` is given; `contents` has been redacted already.
// Throws Failure (kWrongUsage) for a filter that cannot be understood.
std::string ReportPage(Contents& contents, const Redaction* redaction,
                       const LogFilterOptions& filter);

}  // namespace qv
