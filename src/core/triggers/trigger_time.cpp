#include "core/triggers/trigger_time.h"

std::int64_t StartOf1999Ms()
{
    static const std::int64_t value = ToMs(wxDateTime(1, wxDateTime::Jan, 1999, 0, 0, 0, 0));
    return value;
}

std::int64_t StartOf2000Ms()
{
    static const std::int64_t value = ToMs(wxDateTime(1, wxDateTime::Jan, 2000, 0, 0, 0, 0));
    return value;
}
