#include "core/cron/cron_local_time.h"

namespace cron {

bool LocalTm(std::time_t t, std::tm& tm) { return localtime_r(&t, &tm) != nullptr; }

}  // namespace cron
