#include "commands.h"

namespace qv {

void AddHostCommands(CLI::App& /*app*/) {}

}  // namespace qv
