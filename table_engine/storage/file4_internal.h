// What the parts of the file layer share among themselves.
#pragma once

#include <cstdint>

#include "engine4.h"

namespace file4_detail {

// Holds do_buffer (and write_delay) of a file at 0 for a scope, so that a write or read
// reaches the operating system directly.
class HoldBuffering {
public:
    HoldBuffering(file4 *file, bool hold_delay)
        : file_(file), do_buffer_(file->do_buffer), write_delay_(file->write_delay),
          hold_delay_(hold_delay) {
        file->do_buffer = 0;
        if (hold_delay) file->write_delay = 0;
    }
    ~HoldBuffering() {
        file_->do_buffer = do_buffer_;
        if (hold_delay_) file_->write_delay = write_delay_;
    }
    HoldBuffering(const HoldBuffering &) = delete;
    HoldBuffering &operator=(const HoldBuffering &) = delete;

private:
    file4 *file_;
    int32_t do_buffer_;
    uint8_t write_delay_;
    bool hold_delay_;
};

// The length of the file as it stands now: the cache's length when known, else the
// operating system's; 0 for a file that is not on disk.
int64_t current_length(file4 *file);

// Cached transfers; each returns the bytes moved.
uint32_t cache_read(file4 *file, uint32_t position, char *buffer, uint32_t length);
uint32_t cache_write(file4 *file, uint32_t position, const char *buffer, uint32_t length);
// Writes the changed blocks of the file (and its write-behind run), with drop moves its
// blocks to the free list, and corrects the length on disk to known_length.
int cache_flush_file(file4 *file, int drop);
// Drops the blocks at and beyond length and cuts the block holding it.
void cache_cut(file4 *file, uint32_t length);
// Drops every block of the file and its write-behind run, writing nothing.
void cache_forget(file4 *file);
// Writes the write-behind run if it belongs to the file and overlaps [position,
// position + length); with length 0, if it belongs to the file at all.
int cache_flush_run_of(file4 *file, uint32_t position, uint32_t length);
// Places the file in the hash space at the cursor and moves the cursor on.
void cache_place(engine4 *engine, file4 *file);

// Flushing without the entry test of file4_flush.
int flush_file(file4 *file, int drop);
// Switching cache control off, without the entry test.
int cache_control_off(file4 *file);

}  // namespace file4_detail
