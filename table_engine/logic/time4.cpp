// The engine's clock and its one-second waits.
#include <ctime>

#include "date4.h"
#include "file4.h"

namespace {

int64_t system_clock() { return static_cast<int64_t>(std::time(nullptr)); }

// Sleeps to just past the next second of the system clock.
void system_pause() {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    timespec rest;
    rest.tv_sec = 0;
    rest.tv_nsec = 1000000000L - now.tv_nsec + 1000000L;
    if (rest.tv_nsec >= 1000000000L) rest.tv_nsec = 999999999L;
    nanosleep(&rest, nullptr);
}

u4clock_fn g_clock = system_clock;
u4pause_fn g_pause = system_pause;

void wait_for_next_second() {
    const int64_t start = g_clock();
    while (g_clock() <= start) g_pause();
}

}  // namespace

u4clock_fn u4set_clock(u4clock_fn clock) {
    u4clock_fn previous = g_clock;
    g_clock = clock ? clock : system_clock;
    return previous;
}

u4pause_fn u4set_pause(u4pause_fn pause) {
    u4pause_fn previous = g_pause;
    g_pause = pause ? pause : system_pause;
    return previous;
}

int64_t u4clock() { return g_clock(); }

// Both waits last until the clock's second moves on; there are no window messages to keep
// flowing meanwhile.
void u4delay_sec() { wait_for_next_second(); }

void u4wait() { wait_for_next_second(); }
