#pragma once
// The platform's idle-time source (Linux: the X11 screen-saver extension).

#include <memory>

#include "core/idle_time.h"

std::unique_ptr<IdleTimeSource> CreatePlatformIdleTimeSource();
