#include "core/cron/cron_local_time.h"

namespace cron {

// The C runtime's zone comes from the system's time zone settings (or TZ,
// which Windows programs rarely have).
bool LocalTm(std::time_t t, std::tm& tm) { return localtime_s(&tm, &t) == 0; }

}  // namespace cron
