// Health, printers and settings as sections of the report's page.
#pragma once

#include <string>

#include "report/contents.h"

namespace qv {

std::string ProblemList(const std::vector<std::string>& problems);
// What is wrong, or that nothing is.
std::string ProblemsHtml(const Json& examination);
// Versions, paths, the files of the product, its registry values.
std::string HealthHtml(const Json& examination);
// The printers, and what of their settings differs from the defaults.
std::string PrintersHtml(const Contents& contents);

}  // namespace qv
