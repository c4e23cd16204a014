#include "console.h"

namespace qv {

std::vector<std::string> PrepareConsole(int argc, char** argv) {
    return {argv, argv + argc};
}

}  // namespace qv
