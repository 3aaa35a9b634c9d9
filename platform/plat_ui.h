// Message boxes and the fatal exit, through the replaceable handlers of nq_platform.h.
#pragma once

namespace nqplat {

// Non-zero when the box was shown and dismissed.
int message_box(const char *title, const char *text, unsigned int style);
// Calls the fatal-exit handler; if it returns, the process ends with _exit.
[[noreturn]] void fatal_exit(const char *text);

}  // namespace nqplat
