// The memo file: values in chains of blocks, found by the block number a record's memo field
// holds. The header's first word is the next free block; nothing keeps a list of free
// blocks, so a value that moves leaves its old blocks unused until the file is compressed.
// docs/fpt-format.md gives the bytes.
#include <cstring>

#include "byte4.h"
#include "date4.h"
#include "error4.h"
#include "file4.h"
#include "table4.h"
#include "table4_internal.h"

using namespace table4_detail;

namespace {

constexpr uint32_t kHeaderBytes = 8;   // next free block, two zero bytes, block size
constexpr uint32_t kFileStart = 512;   // the header's share of the file
constexpr uint32_t kValueHead = 8;     // type and length in front of each value
constexpr uint32_t kValueType = 1;
constexpr uint64_t kReach = 0x7FFFFFFFu;  // what a 32-bit signed position reaches

bool usable(const memo4 *memo) {
    return memo && memo->file.engine && memo->file.engine->error_code >= 0 && memo->file.handle >= 0 &&
           memo->block_size > 0;
}

uint64_t block_position(const memo4 *memo, int32_t block) {
    return static_cast<uint64_t>(block) * memo->block_size;
}

// The type and length in front of the value at a block; false when they cannot be read.
bool read_value_head(memo4 *memo, int32_t block, uint32_t *length) {
    const uint64_t position = block_position(memo, block);
    if (position + kValueHead > kReach) return false;
    unsigned char head[kValueHead];
    if (file4_read(&memo->file, static_cast<uint32_t>(position), head, kValueHead) != kValueHead) {
        return false;
    }
    *length = byte4::get_be32(head + 4);
    return true;
}

int write_block(memo4 *memo, int32_t block, const char *buffer, uint32_t chunk) {
    const uint64_t position = block_position(memo, block);
    if (position + kValueHead + chunk > kReach) return -1;
    unsigned char head[kValueHead];
    byte4::put_be32(head, kValueType);
    byte4::put_be32(head + 4, chunk);
    if (file4_write(&memo->file, static_cast<uint32_t>(position), head, kValueHead) != 0) return -1;
    if (chunk && file4_write(&memo->file, static_cast<uint32_t>(position + kValueHead), buffer, chunk) != 0) {
        return -1;
    }
    return 0;
}

}  // namespace

uint32_t memo4_blocks_needed(uint32_t block_size, uint32_t length) {
    if (block_size == 0) return 0;
    return static_cast<uint32_t>((static_cast<uint64_t>(block_size) + length + 7) / block_size);
}

int memo4_create(memo4 *memo, engine4 *engine, table4 *table, const char *name) {
    if (!memo || !engine || engine->error_code < 0) return -1;
    memo->table = table;
    const uint16_t block_size = static_cast<uint16_t>(engine->memo_block_default & 0xFFFF);
    if (block_size == 0) return err4report(engine, -930, nullptr);
    unsigned char *work = static_cast<unsigned char *>(mem4_alloc_or_error(engine, kHeaderBytes));
    if (!work) return -920;

    if (name) {
        // The name is given its extension on a copy, and the file is made under the name as
        // it was given: callers pass the memo file's own name.
        char copy[kNameBuffer];
        if (std::strlen(name) < sizeof(copy)) {
            std::strcpy(copy, name);
            u4name_ext(copy, sizeof(copy), "FPT", 1);
        }
        file4_create(&memo->file, engine, name, 1);
    } else {
        // A temporary memo file for compression, beside the table.
        char temp_name[kNameBuffer];
        if (!table || !table->file.name || std::strlen(table->file.name) >= sizeof(temp_name)) {
            mem4_free(work);
            return -1;
        }
        std::strcpy(temp_name, table->file.name);
        u4name_ext(temp_name, sizeof(temp_name), "TMP", 1);
        int created;
        {
            HoldSetting quiet(engine->err_create, 0);
            HoldSetting overwrite(engine->safety, 0);
            created = file4_create(&memo->file, engine, temp_name, 1);
        }
        if (created != 0) {
            mem4_free(work);
            if (engine->error_code == result4_no_create) engine->error_code = 0;
            return -1;
        }
        memo->file.is_temp = 1;
    }
    memo->block_size = block_size;
    memo->file_locked = 0;

    // The first value goes behind the 512 bytes of the header: for blocks larger than that,
    // into block 1, leaving the rest of block 0 unused.
    const uint32_t next_free = block_size <= kFileStart ? kFileStart / block_size : 1;
    byte4::put_be32(work, next_free);
    work[4] = 0;
    work[5] = 0;
    byte4::put_be16(work + 6, block_size);
    // Without a file there is nothing to write to (the create has said why, or was told to
    // keep quiet).
    const int written = memo->file.handle >= 0 ? file4_write(&memo->file, 0, work, kHeaderBytes) : -1;
    if (written == 0) file4_set_length(&memo->file, kFileStart);
    mem4_free(work);
    return written;
}

int memo4_open(memo4 *memo, table4 *table, const char *name) {
    if (!memo || !table || !table->engine || !name || table->engine->error_code < 0) return -1;
    engine4 *engine = table->engine;
    memo->table = table;
    memo->file_locked = 0;
    memo->block_size = 0;
    const int opened = file4_open(&memo->file, engine, name, 1);
    if (opened != 0) return opened;
    file4_cache_type(&memo->file, engine->optimize_default, 3);
    unsigned char header[kHeaderBytes];
    const int result = file4_read_all(&memo->file, 0, header, kHeaderBytes);
    if (result != 0) return result;
    memo->block_size = static_cast<uint16_t>(byte4::get_be16(header + 6));
    if (memo->block_size == 0) {
        // No block arithmetic is possible: the file is not a memo file.
        return err4describe(engine, -70, "File Name:", memo->file.name, nullptr);
    }
    return 0;
}

int memo4_read(memo4 *memo, int32_t block, char **buffer_slot, uint32_t *length_slot) {
    return memo4_read_part(memo, block, buffer_slot, length_slot, 0, 0xFFFFFFFFu);
}

int memo4_read_part(memo4 *memo, int32_t block, char **buffer_slot, uint32_t *length_slot,
                    uint32_t offset, uint32_t limit) {
    if (!buffer_slot || !length_slot) return -1;
    if (block < 1) {
        *length_slot = 0;
        return 0;
    }
    if (!usable(memo)) return -1;
    uint32_t stored = 0;
    if (!read_value_head(memo, block, &stored)) return -1;
    // A value that would reach past the end of the file is not there: nothing is allocated
    // for it.
    const uint64_t start = block_position(memo, block) + kValueHead;
    const int32_t file_length = file4_length(&memo->file);
    if (file_length < 0 || start + stored > static_cast<uint64_t>(file_length)) return -1;

    uint32_t want = offset < stored ? stored - offset : 0;
    if (want > limit) want = limit;
    const uint32_t capacity = *length_slot;
    if (capacity < want) {
        if (capacity != 0) mem4_free(*buffer_slot);
        *buffer_slot = nullptr;
        *length_slot = 0;
        *buffer_slot = static_cast<char *>(mem4_alloc(static_cast<size_t>(stored) + 1));
        if (!*buffer_slot) return err4report(memo->file.engine, -920, nullptr);
    }
    *length_slot = want;
    if (want == 0) return 0;
    if (file4_read(&memo->file, static_cast<uint32_t>(start + offset), *buffer_slot, want) != want) {
        return -1;
    }
    return 0;
}

uint32_t memo4_length(memo4 *memo, int32_t block) {
    if (block < 1) return 0;
    if (!usable(memo)) return 0xFFFFFFFFu;
    uint32_t stored = 0;
    if (!read_value_head(memo, block, &stored)) return 0xFFFFFFFFu;
    return stored;
}

int memo4_write(memo4 *memo, int32_t *block_slot, const char *buffer, uint32_t length) {
    return memo4_write_part(memo, block_slot, buffer, length, 0, length);
}

int memo4_write_part(memo4 *memo, int32_t *block_slot, const char *buffer, uint32_t total,
                     uint32_t offset, uint32_t chunk) {
    if (!block_slot || !usable(memo)) return -1;
    if (chunk && !buffer) return -1;
    if (offset != 0) {
        // A later piece of a value goes straight to its place; the offset counts from the
        // block's start, the value's head included.
        const uint64_t position = block_position(memo, *block_slot) + offset;
        if (*block_slot < 1 || position + chunk > kReach) return -1;
        return file4_write(&memo->file, static_cast<uint32_t>(position), buffer, chunk) == 0 ? 0 : -1;
    }
    if (total == 0) {
        *block_slot = 0;
        return 0;
    }
    const uint32_t block_size = memo->block_size;
    const uint64_t need = (static_cast<uint64_t>(block_size) + total + 7) / block_size;
    bool keep_place = false;
    if (*block_slot > 0) {
        uint32_t old_length = 0;
        if (read_value_head(memo, *block_slot, &old_length)) {
            // The old value is measured without its 8-byte head, the new one with it: a value
            // of the same length whose head pushes it into a next block moves.
            const uint64_t had = (static_cast<uint64_t>(block_size) + old_length - 1) / block_size;
            keep_place = had >= need;
        }
    }
    if (!keep_place) {
        const bool was_locked = memo->file_locked != 0;
        int result = memo4_lock(memo);
        if (result) return result;
        unsigned char header[kHeaderBytes];
        if (file4_read(&memo->file, 0, header, kHeaderBytes) != kHeaderBytes) {
            if (!was_locked) memo4_unlock(memo);
            engine4 *engine = memo->file.engine;
            if (engine->error_code < 0) return -1;
            return err4describe(engine, -70, "File Name:", memo->file.name, nullptr);
        }
        const uint32_t next_free = byte4::get_be32(header);
        const uint64_t after = next_free + need;
        if (next_free < 1 || after > 0x7FFFFFFFu ||
            static_cast<uint64_t>(next_free) * block_size + kValueHead + chunk > kReach) {
            if (!was_locked) memo4_unlock(memo);
            return -1;
        }
        *block_slot = static_cast<int32_t>(next_free);
        byte4::put_be32(header, static_cast<uint32_t>(after));
        result = file4_write(&memo->file, 0, header, kHeaderBytes);
        if (!was_locked) memo4_unlock(memo);
        if (result) return -1;
    }
    return write_block(memo, *block_slot, buffer, chunk);
}

int memo4_lock(memo4 *memo) {
    if (!memo) return -1;
    if (memo->file_locked) return 0;
    if (memo->file.handle < 0 || !memo->file.engine) return -1;
    engine4 *engine = memo->file.engine;
    int result;
    {
        // Only the next-free word is guarded, and only for a moment: wait as long as it takes.
        HoldSetting forever(engine->lock_attempts, -1);
        result = file4_lock(&memo->file, lock4_append_offset, 1);
    }
    if (result) return result;
    memo->file_locked = 1;
    file4_refresh(&memo->file);
    return 0;
}

int memo4_unlock(memo4 *memo) {
    if (!memo || !memo->file_locked) return 0;
    flush_delayed(&memo->file);
    memo->file_locked = 0;
    return file4_unlock(&memo->file, lock4_append_offset, 1);
}
