// The write-back block cache under the file layer.
//
// Memory is a number of equal buffers, each cut into blocks of a power-of-two size. A block
// holds one block-aligned piece of one file and sits on two lists: a hash list, chosen by
// (hash_start + position) >> block_shift, and a usage list of its file's kind (data, index,
// memo), oldest first. Each file starts at its own place in the hash space, so equal offsets
// of different files land on different hash lists. When no block is free, one is taken from
// the usage lists in the order evict_first, evict_second, evict_third; the order of the
// last two follows the kinds of operation seen lately (cache_adapt). Changed blocks on their
// way out gather in a write-behind run, so that consecutive blocks reach the disk in one
// write. docs/file-layer.md draws the structures.
#include <cstddef>
#include <cstring>

#include "date4.h"
#include "error4.h"
#include "file4.h"
#include "file4_internal.h"
#include "plat_file.h"

using namespace file4_detail;

namespace {

cache_block *from_usage(void *link) {
    return reinterpret_cast<cache_block *>(static_cast<char *>(link) -
                                           offsetof(cache_block, usage_link));
}

cache_block *from_hash(void *link) {
    return reinterpret_cast<cache_block *>(static_cast<char *>(link) -
                                           offsetof(cache_block, hash_link));
}

l4list *usage_list_of(cache4 &cache, const file4 *file) {
    switch (file->cache_type) {
        case 1: return &cache.data_blocks;
        case 2: return &cache.index_blocks;
        default: return &cache.memo_blocks;
    }
}

l4list *hash_list_of(cache4 &cache, const file4 *file, uint32_t position) {
    const uint32_t slot =
        ((static_cast<uint32_t>(file->hash_start) + position) >> cache.block_shift) &
        cache.hash_mask;
    return &cache.hash_lists[slot];
}

uint32_t block_of(const cache4 &cache, uint32_t position) {
    return position & ~(cache.block_size - 1);
}

cache_block *lookup(file4 *file, uint32_t block_position) {
    cache4 &cache = file->engine->cache;
    l4list *list = hash_list_of(cache, file, block_position);
    for (void *walk = l4_next(list, nullptr); walk; walk = l4_next(list, walk)) {
        cache_block *block = from_hash(walk);
        if (block->file == file && block->position == block_position) return block;
    }
    return nullptr;
}

void enter(cache_block *block, file4 *file, uint32_t block_position) {
    cache4 &cache = file->engine->cache;
    block->file = file;
    block->position = block_position;
    l4_add(hash_list_of(cache, file, block_position), &block->hash_link);
}

// Moves a block to the recent end of its usage list (adding it when it is on none).
void touch(cache_block *block, bool on_list) {
    l4list *list = usage_list_of(block->file->engine->cache, block->file);
    if (on_list) l4_remove(list, &block->usage_link);
    l4_add(list, &block->usage_link);
}

// Clears what a block says about itself. Its bytes are set by whoever fills it next; every
// filling leaves zeros behind the valid length, which a file that grows reads there.
void clear_block(cache_block *block) {
    block->changed = 0;
    block->length = 0;
    block->file = nullptr;
    block->position = 0;
}

// Off both lists and onto the free list, unwritten.
void release_block(cache_block *block) {
    cache4 &cache = block->file->engine->cache;
    l4_remove(hash_list_of(cache, block->file, block->position), &block->hash_link);
    l4_remove(usage_list_of(cache, block->file), &block->usage_link);
    clear_block(block);
    l4_add(&cache.free_blocks, &block->usage_link);
}

// ---- the write-behind run -------------------------------------------------------------

int flush_run(engine4 *engine) {
    cache4 &cache = engine->cache;
    file4 *file = cache.write_file;
    if (!file) return 0;
    const uint32_t start = cache.write_start, length = cache.write_pos - cache.write_start;
    cache.write_file = nullptr;
    cache.write_blocks = 0;
    cache.write_start = cache.write_pos = 0;
    HoldBuffering hold(file, true);
    return file4_write(file, start, cache.write_buffer, length);
}

// A changed block on its way out: it joins the run when it continues it, else the run goes
// to the file and a new one starts with this block.
void write_out(cache_block *block) {
    engine4 *engine = block->file->engine;
    cache4 &cache = engine->cache;
    const bool continues = cache.write_file == block->file && block->position == cache.write_pos &&
                           cache.write_pos - cache.write_start + block->length <= cache.buffer_size;
    if (!continues) {
        flush_run(engine);
        cache.write_file = block->file;
        cache.write_start = cache.write_pos = block->position;
        cache.write_blocks = 0;
    }
    std::memcpy(cache.write_buffer + (cache.write_pos - cache.write_start), block->data,
                block->length);
    cache.write_pos += block->length;
    ++cache.write_blocks;
}

// ---- block replacement ----------------------------------------------------------------

void cache_adapt(engine4 *engine) {
    cache4 &cache = engine->cache;
    const uint8_t seen = static_cast<uint8_t>(engine->usage_flags & 0xFF);
    if (cache.mode_seen == seen) return;
    cache.mode_seen = seen;
    engine->usage_flags = 0;
    cache.miss_count = 0;
    cache.evict_first = &cache.memo_blocks;
    cache.read_ahead_mode = 0;
    if (seen <= 7) {
        // Natural skips read data files ahead, tag skips index files.
        cache.read_ahead_mode = static_cast<uint8_t>((seen >> 1) & 3);
        cache.evict_second = &cache.index_blocks;
        cache.evict_third = &cache.data_blocks;
    } else if (seen <= 15) {
        cache.evict_second = &cache.data_blocks;
        cache.evict_third = &cache.index_blocks;
    } else if (seen <= 63) {
        cache.evict_second = &cache.index_blocks;
        cache.evict_third = &cache.data_blocks;
    } else {
        cache.evict_second = &cache.data_blocks;
        cache.evict_third = &cache.index_blocks;
        cache.miss_count = 5;
    }
}

// The read-ahead under way: a changed block of its range that leaves the cache meanwhile
// makes the bytes read from the disk stale for that block. One per thread, since engines
// on different threads run their caches apart.
struct ReadAhead {
    file4 *file;
    uint32_t start, end;
    bool stale = false;
};
thread_local ReadAhead *g_read_ahead = nullptr;

void give_up(cache_block *block) {
    cache4 &cache = block->file->engine->cache;
    if (block->changed) {
        if (g_read_ahead && g_read_ahead->file == block->file &&
            block->position >= g_read_ahead->start && block->position < g_read_ahead->end) {
            g_read_ahead->stale = true;
        }
        write_out(block);
    }
    l4_remove(hash_list_of(cache, block->file, block->position), &block->hash_link);
    l4_remove(usage_list_of(cache, block->file), &block->usage_link);
    clear_block(block);
}

cache_block *take(engine4 *engine) {
    cache4 &cache = engine->cache;
    if (void *link = l4_pop(&cache.free_blocks)) {
        cache_block *block = from_usage(link);
        clear_block(block);
        return block;
    }
    if (cache.miss_count < 255) ++cache.miss_count;
    if (cache.miss_count > 10) cache_adapt(engine);
    for (;;) {
        l4list *order[3] = {cache.evict_first, cache.evict_second, cache.evict_third};
        for (l4list *list : order) {
            if (list && static_cast<int64_t>(list->count) > cache.keep_blocks) {
                cache_block *block = from_usage(l4_first(list));
                give_up(block);
                return block;
            }
        }
        if (cache.keep_blocks <= 0) return nullptr;
        --cache.keep_blocks;
    }
}

// ---- reading blocks from the file -----------------------------------------------------

// Fills a block from the file: what the disk has, zeros behind it, and no more than the
// cache's known length when there is one.
void read_block(cache_block *block) {
    file4 *file = block->file;
    const uint32_t block_size = file->engine->cache.block_size;
    uint32_t got = 0;
    if (file->on_disk && file->handle >= 0) {
        cache_flush_run_of(file, block->position, block_size);
        if (nqplat::file_seek(file->handle, block->position)) {
            nqplat::file_read(file->handle, block->position, block->data, block_size, &got);
        }
    }
    std::memset(block->data + got, 0, block_size - got);
    if (file->known_length >= 0) {
        const int64_t available = static_cast<int64_t>(file->known_length) - block->position;
        block->length = available <= 0 ? 0
                        : available >= block_size ? block_size
                                                  : static_cast<uint32_t>(available);
    } else {
        block->length = got;
    }
}

// A block shorter than a block whose file has grown past it since: fetched again, or, while
// it holds bytes the disk lacks, lengthened with the zeros a longer file reads as.
void refresh_short_block(cache_block *block, int64_t file_length) {
    const uint32_t block_size = block->file->engine->cache.block_size;
    if (file_length <= static_cast<int64_t>(block->position) + block->length) return;
    if (!block->changed) {
        read_block(block);
        return;
    }
    const int64_t available = file_length - block->position;
    block->length = available >= block_size ? block_size : static_cast<uint32_t>(available);
}

bool reads_ahead(const cache4 &cache, const file4 *file) {
    return (cache.read_ahead_mode == 1 && file->cache_type == 1) ||
           (cache.read_ahead_mode > 1 && file->cache_type == 2);
}

// Reads the buffer-sized range around a missing block at once and cuts it into blocks:
// forward from the block, then backward to the start of the range.
void read_ahead(file4 *file, uint32_t block_position) {
    engine4 *engine = file->engine;
    cache4 &cache = engine->cache;
    if (cache.read_ahead_busy || !file->on_disk || file->handle < 0) return;
    const uint32_t block_size = cache.block_size;
    const uint32_t start = block_position - block_position % cache.buffer_size;
    cache.read_ahead_busy = 1;
    cache_flush_run_of(file, start, cache.buffer_size);
    uint32_t got = 0;
    if (nqplat::file_seek(file->handle, start)) {
        nqplat::file_read(file->handle, start, cache.read_ahead_buffer, cache.buffer_size, &got);
    }
    std::memset(cache.read_ahead_buffer + got, 0, cache.buffer_size - got);
    cache.read_ahead_position = start;
    uint32_t available = got;
    if (file->known_length >= 0) {
        const int64_t known = static_cast<int64_t>(file->known_length) - start;
        available = known <= 0 ? 0
                    : known >= cache.buffer_size ? cache.buffer_size
                                                 : static_cast<uint32_t>(known);
    }
    ReadAhead state{file, start, start + cache.buffer_size};
    g_read_ahead = &state;
    auto cut = [&](uint32_t position) {
        const uint32_t offset = position - start;
        if (offset >= available || lookup(file, position)) return true;
        cache_block *block = take(engine);
        if (!block) return false;
        if (state.stale) {
            l4_add(&cache.free_blocks, &block->usage_link);
            return false;
        }
        const uint32_t length = available - offset < block_size ? available - offset : block_size;
        std::memcpy(block->data, cache.read_ahead_buffer + offset, length);
        std::memset(block->data + length, 0, block_size - length);
        block->length = length;
        enter(block, file, position);
        touch(block, false);
        return true;
    };
    bool going = true;
    for (uint32_t position = block_position; going && position < start + cache.buffer_size;
         position += block_size) {
        going = cut(position);
    }
    for (uint32_t position = block_position; going && position > start;) {
        position -= block_size;
        going = cut(position);
    }
    g_read_ahead = nullptr;
    cache.read_ahead_busy = 0;
}

// ---- allocation -----------------------------------------------------------------------

void free_all(cache4 &cache) {
    if (cache.buffers) {
        for (int32_t i = 0; i < cache.buffer_count; ++i) mem4_free(cache.buffers[i]);
    }
    mem4_free(cache.buffers);
    mem4_free(cache.hash_lists);
    mem4_free(cache.block_records);
    mem4_free(cache.write_buffer);
    mem4_free(cache.read_ahead_buffer);
    cache.buffers = nullptr;
    cache.hash_lists = nullptr;
    cache.block_records = nullptr;
    cache.write_buffer = nullptr;
    cache.read_ahead_buffer = nullptr;
    cache.buffer_count = 0;
    cache.free_blocks = {};
    cache.data_blocks = {};
    cache.index_blocks = {};
    cache.memo_blocks = {};
    cache.write_file = nullptr;
    cache.write_blocks = 0;
}

// Allocates the structures for n buffers and as many buffers as can be had, up to n.
// Returns the number of buffers obtained.
int32_t allocate(cache4 &cache, int64_t n) {
    const uint32_t per_buffer = cache.blocks_per_buffer;
    cache.buffers = static_cast<char **>(mem4_alloc(static_cast<size_t>(n + 2) * sizeof(char *)));
    cache.hash_lists = static_cast<l4list *>(mem4_alloc(cache.hash_size * sizeof(l4list)));
    cache.block_records = static_cast<cache_block *>(
        mem4_alloc(static_cast<size_t>(n) * per_buffer * sizeof(cache_block)));
    cache.write_buffer = static_cast<char *>(mem4_alloc(cache.buffer_size));
    cache.read_ahead_buffer = static_cast<char *>(mem4_alloc(cache.buffer_size));
    cache.buffer_count = 0;
    if (!cache.buffers || !cache.hash_lists || !cache.block_records || !cache.write_buffer ||
        !cache.read_ahead_buffer) {
        return 0;
    }
    for (int64_t i = 0; i < n; ++i) {
        char *buffer = static_cast<char *>(mem4_alloc(cache.buffer_size));
        if (!buffer) break;
        cache.buffers[cache.buffer_count] = buffer;
        for (uint32_t b = 0; b < per_buffer; ++b) {
            cache_block *block = &cache.block_records[cache.buffer_count * per_buffer + b];
            block->data = buffer + b * cache.block_size;
            l4_add(&cache.free_blocks, &block->usage_link);
        }
        ++cache.buffer_count;
    }
    return cache.buffer_count;
}

bool power_of_two(uint32_t value) { return value && (value & (value - 1)) == 0; }

}  // namespace

namespace file4_detail {

int64_t current_length(file4 *file) {
    if (file->known_length >= 0) return file->known_length;
    if (!file->on_disk || file->handle < 0) return 0;
    const uint32_t size = nqplat::file_size(file->handle);
    return size == nqplat::kInvalidFileSize ? 0 : size;
}

void cache_place(engine4 *engine, file4 *file) {
    cache4 &cache = engine->cache;
    file->hash_start = static_cast<int32_t>(cache.block_size * cache.hash_cursor);
    const int64_t length = current_length(file);
    const uint32_t blocks = static_cast<uint32_t>(length / cache.block_size);
    cache.hash_cursor = cache.block_count ? (cache.hash_cursor + blocks) % cache.block_count : 0;
}

int cache_flush_run_of(file4 *file, uint32_t position, uint32_t length) {
    engine4 *engine = file->engine;
    cache4 &cache = engine->cache;
    if (cache.write_file != file) return 0;
    if (length != 0) {
        const uint64_t end = static_cast<uint64_t>(position) + length;
        if (end <= cache.write_start || position >= cache.write_pos) return 0;
    }
    return flush_run(engine);
}

uint32_t cache_read(file4 *file, uint32_t position, char *buffer, uint32_t length) {
    engine4 *engine = file->engine;
    cache4 &cache = engine->cache;
    const uint32_t block_size = cache.block_size;
    uint32_t total = 0;
    while (total < length) {
        const uint32_t at = position + total;
        const uint32_t block_position = block_of(cache, at);
        const uint32_t offset = at - block_position;
        const uint32_t want = block_size - offset < length - total ? block_size - offset
                                                                    : length - total;
        cache_block *block = lookup(file, block_position);
        bool on_list = block != nullptr;
        if (!block) {
            if (reads_ahead(cache, file)) {
                read_ahead(file, block_position);
                block = lookup(file, block_position);
                on_list = block != nullptr;
            }
            if (!block) {
                block = take(engine);
                if (!block) break;
                enter(block, file, block_position);
                read_block(block);
            }
        } else if (engine->read_fresh && !block->changed && !file->is_exclusive &&
                   !file->is_read_only && !file->write_delay) {
            read_block(block);
        } else if (block->length < block_size) {
            refresh_short_block(block, current_length(file));
        }
        touch(block, on_list);
        const uint32_t available = block->length > offset ? block->length - offset : 0;
        const uint32_t count = want < available ? want : available;
        std::memcpy(buffer + total, block->data + offset, count);
        total += count;
        if (block->length < block_size) break;
    }
    return total;
}

uint32_t cache_write(file4 *file, uint32_t position, const char *buffer, uint32_t length) {
    engine4 *engine = file->engine;
    cache4 &cache = engine->cache;
    const uint32_t block_size = cache.block_size;
    // While writes stay in the cache it owns the length.
    if (file->write_delay && file->known_length < 0) {
        file->known_length = static_cast<int32_t>(current_length(file));
    }
    int64_t file_length = -1;  // read when first needed, then kept up to date
    auto length_now = [&]() {
        if (file_length < 0) file_length = current_length(file);
        return file_length;
    };
    uint32_t total = 0;
    while (total < length) {
        const uint32_t at = position + total;
        const uint32_t block_position = block_of(cache, at);
        const uint32_t offset = at - block_position;
        const uint32_t count = block_size - offset < length - total ? block_size - offset
                                                                     : length - total;
        cache_block *block = lookup(file, block_position);
        const bool on_list = block != nullptr;
        if (!block) {
            block = take(engine);
            if (!block) break;
            enter(block, file, block_position);
            if (count < block_size && length_now() > block_position) {
                // A part of a block: the rest of it comes from the file first.
                read_block(block);
            } else if (length_now() >= static_cast<int64_t>(block_position) + block_size) {
                block->length = block_size;  // the write fills it
            } else {
                block->length = 0;
                std::memset(block->data, 0, block_size);
            }
        } else if (block->length < block_size) {
            refresh_short_block(block, length_now());
        }
        touch(block, on_list);
        block->changed |= file->write_delay;
        std::memcpy(block->data + offset, buffer + total, count);
        const uint32_t end = offset + count;
        if (end > block->length) {
            if (static_cast<int64_t>(block_position) + end > length_now()) {
                block->length = end;
                file_length = static_cast<int64_t>(block_position) + end;
                if (file->write_delay || file->known_length >= 0) {
                    file->known_length = static_cast<int32_t>(file_length);
                }
            } else {
                const int64_t available = length_now() - block_position;
                block->length = available >= block_size ? block_size
                                                        : static_cast<uint32_t>(available);
            }
        }
        total += count;
        if (block->length < block_size) break;
    }
    return total;
}

int cache_flush_file(file4 *file, int drop) {
    engine4 *engine = file->engine;
    cache4 &cache = engine->cache;
    int result = cache_flush_run_of(file, 0, 0);
    if (result) return result;
    l4list *list = usage_list_of(cache, file);
    void *walk = l4_next(list, nullptr);
    while (walk) {
        void *next = l4_next(list, walk);
        cache_block *block = from_usage(walk);
        if (block->file == file) {
            if (block->changed) {
                block->changed = 0;
                HoldBuffering hold(file, false);
                result = file4_write(file, block->position, block->data, block->length);
                if (result) return result;
            }
            if (drop) release_block(block);
        }
        walk = next;
    }
    if (file->known_length >= 0 && file->on_disk && file->handle >= 0) {
        const uint32_t real = nqplat::file_size(file->handle);
        if (real != static_cast<uint32_t>(file->known_length)) {
            HoldBuffering hold(file, false);
            result = file4_set_length(file, static_cast<uint32_t>(file->known_length));
            if (result) return result;
        }
    }
    return 0;
}

void cache_cut(file4 *file, uint32_t length) {
    cache4 &cache = file->engine->cache;
    cache_flush_run_of(file, 0, 0);
    l4list *list = usage_list_of(cache, file);
    void *walk = l4_next(list, nullptr);
    while (walk) {
        void *next = l4_next(list, walk);
        cache_block *block = from_usage(walk);
        if (block->file == file) {
            if (block->position >= length) {
                release_block(block);
            } else if (block->position + block->length > length) {
                const uint32_t keep = length - block->position;
                std::memset(block->data + keep, 0, block->length - keep);
                block->length = keep;
            }
        }
        walk = next;
    }
}

void cache_forget(file4 *file) {
    cache4 &cache = file->engine->cache;
    if (cache.write_file == file) {
        cache.write_file = nullptr;
        cache.write_blocks = 0;
        cache.write_start = cache.write_pos = 0;
    }
    if (!cache.hash_lists) return;
    l4list *list = usage_list_of(cache, file);
    void *walk = l4_next(list, nullptr);
    while (walk) {
        void *next = l4_next(list, walk);
        cache_block *block = from_usage(walk);
        if (block->file == file) release_block(block);
        walk = next;
    }
}

}  // namespace file4_detail

cache_block *file4_cache_find(file4 *file, uint32_t position) {
    if (!file || !file->engine || !file->do_buffer || !file->engine->cache_on ||
        !file->engine->cache.hash_lists) {
        return nullptr;
    }
    return lookup(file, block_of(file->engine->cache, position));
}

void file4_cache_drop(file4 *file, uint32_t position) {
    if (cache_block *block = file4_cache_find(file, position)) release_block(block);
}

int engine4_cache_start(engine4 *engine) {
    if (!engine) return -1;
    cache4 &cache = engine->cache;
    if (cache.buffer_count || engine->cache_on) return 0;
    if (engine->error_code < 0) return -1;
    const uint32_t block_size = engine->cache_block_size;
    if (block_size == 0 || engine->big_buffer_size == 0 ||
        engine->big_buffer_size < block_size || !power_of_two(block_size)) {
        return -1;
    }
    cache = cache4{};
    cache.block_size = block_size;
    cache.buffer_size = engine->big_buffer_size - engine->big_buffer_size % block_size;
    cache.hash_cursor = 0;
    cache.evict_first = &cache.memo_blocks;
    cache.evict_second = &cache.index_blocks;
    cache.evict_third = &cache.data_blocks;
    engine->usage_flags = usage4_cache_start;
    cache.miss_count = 10;
    cache.keep_blocks = 0;

    auto fitting = [&]() {
        return static_cast<int64_t>(engine->cache_memory / cache.buffer_size) - 2;
    };
    int64_t n = fitting();
    while (n < 4) {
        cache.buffer_size -= block_size;
        if (cache.buffer_size == 0) {
            cache = cache4{};
            return -1;
        }
        n = fitting();
    }
    int32_t obtained = 0;
    for (;;) {
        engine->cache_on = 1;
        cache.blocks_per_buffer = cache.buffer_size / block_size;
        cache.block_shift = static_cast<uint8_t>(u4log2(block_size));
        cache.offset_shift = static_cast<uint8_t>(32 - cache.block_shift);
        cache.hash_size = 2u << u4log2(static_cast<unsigned long>(cache.blocks_per_buffer * n));
        obtained = allocate(cache, n);
        if (obtained >= 4) break;
        free_all(cache);
        if (obtained < 1) {
            engine->cache_on = 0;
            cache = cache4{};
            return -1;
        }
        // A few buffers only: try four of half the size.
        if (n > 4) n = 4;
        cache.buffer_size /= 2;
        cache.buffer_size -= cache.buffer_size % block_size;
        if (cache.buffer_size == 0) {
            engine->cache_on = 0;
            cache = cache4{};
            return -1;
        }
    }
    cache.block_count = static_cast<uint32_t>(obtained) * cache.blocks_per_buffer;
    cache.hash_size = 2u << u4log2(cache.block_count);
    cache.hash_mask = cache.hash_size - 1;
    for (void *walk = l4_first(&engine->cache_files); walk;
         walk = l4_next(&engine->cache_files, walk)) {
        file4 *file = static_cast<file4 *>(walk);
        file->known_length = -1;
        file->do_buffer = 1;
        if (file->is_exclusive && file->write_mode == 1) file->write_delay = 1;
        if (file->hash_start == -1) cache_place(engine, file);
    }
    return 0;
}

int engine4_cache_stop(engine4 *engine) {
    if (!engine) return -1;
    cache4 &cache = engine->cache;
    if (!engine->cache_on && cache.buffer_count == 0) return 0;
    // The cached data goes out even after an earlier failure.
    const int32_t saved = engine->error_code;
    engine->error_code = 0;
    int result = flush_run(engine) ? -1 : 0;
    for (void *walk = l4_first(&engine->cache_files); walk;
         walk = l4_next(&engine->cache_files, walk)) {
        file4 *file = static_cast<file4 *>(walk);
        if (file->do_buffer && flush_file(file, 1) != 0) result = -1;
    }
    for (void *walk = l4_first(&engine->cache_files); walk;
         walk = l4_next(&engine->cache_files, walk)) {
        file4 *file = static_cast<file4 *>(walk);
        file->do_buffer = 0;
        file->write_delay = 0;
    }
    engine->cache_on = 0;
    free_all(cache);
    cache = cache4{};
    if (result < 0) return err4report(engine, -620, nullptr);
    if (saved != 0) engine->error_code = saved;
    return 0;
}
