#include <ctime>

#include "log_time.h"

namespace qv {

std::int64_t LocalOffset(std::int64_t utc) {
    const std::time_t moment = utc;
    std::tm local{};
    return localtime_r(&moment, &local) == nullptr ? 0 : local.tm_gmtoff;
}

}  // namespace qv
