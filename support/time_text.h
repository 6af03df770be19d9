// Times as text.

#pragma once

#include <ctime>
#include <string>

namespace lineup {

/// `time`, in local time, as strftime() formats it, up to 31 bytes.
std::string timeText(const char* format, std::time_t time);

}  // namespace lineup
