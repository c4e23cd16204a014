#include "support/source_folder.h"

namespace test {

std::string SourceFolder() {
    return QV_SOURCE_DIR;
}

}  // namespace test
