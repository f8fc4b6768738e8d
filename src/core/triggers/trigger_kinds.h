#pragma once
// The twelve trigger kinds.

#include "core/triggers/cron_driven_trigger.h"
#include "core/triggers/idle_timeout_trigger.h"
#include "core/triggers/one_shot_triggers.h"
