// Sequential readers and writers: large transfers straight to and from the file, on
// 1024-byte boundaries of the file.
#include <cstring>

#include "error4.h"
#include "file4.h"
#include "file4_internal.h"
#include "plat_file.h"

using namespace file4_detail;

namespace {

constexpr uint32_t kBoundary = 1024;
constexpr uint32_t kSizeMask = 0xFC00;  // whole kilobytes, at most 63 of them

// The first transfer ends on a boundary of the file.
uint32_t first_window(uint32_t full_size, uint32_t position) {
    const uint32_t rest = full_size - position % kBoundary;
    return rest < full_size ? rest : full_size;
}

}  // namespace

int file4_seq_read_init(seq_reader *reader, file4 *file, uint32_t position, char *buffer,
                        uint32_t size) {
    if (!reader) return -1;
    std::memset(reader, 0, sizeof(*reader));
    if (!file || !file->engine || file->engine->error_code < 0) return -1;
    reader->file = file;
    reader->position = position;
    const int flushed = file4_flush(file, 1);
    if (flushed < 0) return flushed;
    reader->full_size = size & kSizeMask;
    if (buffer && reader->full_size) {
        reader->buffer = buffer;
        reader->next_read = first_window(reader->full_size, position);
    }
    return 0;
}

uint32_t file4_seq_read(seq_reader *reader, void *out, uint32_t length) {
    if (!reader || !reader->file || !out) return 0;
    file4 *file = reader->file;
    engine4 *engine = file->engine;
    if (!engine || engine->error_code < 0) return 0;
    if (!reader->buffer) {
        const uint32_t got = file4_read(file, reader->position, out, length);
        reader->position += got;
        return got;
    }
    char *to = static_cast<char *>(out);
    uint32_t total = 0;
    for (;;) {
        const uint32_t count = reader->left < length - total ? reader->left : length - total;
        std::memcpy(to + total, reader->buffer + (reader->got - reader->left), count);
        reader->left -= count;
        total += count;
        if (total == length) return total;
        // Refill straight from the file, or from the cache while it holds bytes the file
        // has not had yet.
        uint32_t got = 0;
        if (file->do_buffer && (file->write_delay || !file->on_disk)) {
            got = file4_read(file, reader->position, reader->buffer, reader->next_read);
            if (engine->error_code < 0) return total;
        } else if (file->on_disk && file->handle >= 0) {
            if (!nqplat::file_seek(file->handle, reader->position) ||
                !nqplat::file_read(file->handle, reader->position, reader->buffer,
                                   reader->next_read, &got)) {
                err4describe(engine, -70, "File Name:", file->name, nullptr);
                return total;
            }
        }
        reader->got = got;
        reader->left = got;
        reader->position += got;
        reader->next_read = reader->full_size;
        if (got == 0) return total;
    }
}

int file4_seq_read_all(seq_reader *reader, void *out, uint32_t length) {
    if (!reader || !reader->file || !reader->file->engine) return -1;
    engine4 *engine = reader->file->engine;
    if (engine->error_code < 0) return -1;
    const uint32_t got = file4_seq_read(reader, out, length);
    if (engine->error_code < 0) return engine->error_code;
    if (got != length) {
        return err4describe(engine, -70, "File Name:", reader->file->name, nullptr);
    }
    return 0;
}

int file4_seq_write_init(seq_writer *writer, file4 *file, uint32_t position, char *buffer,
                         uint32_t size) {
    if (!writer) return -1;
    std::memset(writer, 0, sizeof(*writer));
    if (!file || !file->engine || file->engine->error_code < 0) return -1;
    writer->file = file;
    writer->position = position;
    const int flushed = file4_flush(file, 1);
    if (flushed < 0) return flushed;
    writer->full_size = size & kSizeMask;
    if (buffer && writer->full_size) {
        writer->buffer = buffer;
        writer->write_size = first_window(writer->full_size, position);
        writer->room = writer->write_size;
    }
    return 0;
}

int file4_seq_write_flush(seq_writer *writer) {
    if (!writer || !writer->file || !writer->file->engine) return -1;
    file4 *file = writer->file;
    engine4 *engine = file->engine;
    if (engine->error_code < 0) return -1;
    if (!writer->buffer) return 0;
    const uint32_t filled = writer->write_size - writer->room;
    if (filled) {
        if (file->do_buffer || !file->on_disk) {
            // Through the cache, which must not be left holding older bytes of the range.
            const int result = file4_write(file, writer->position, writer->buffer, filled);
            if (result) return result;
        } else {
            if (file->is_read_only) {
                return err4describe(engine, -930, "Attempt to write to a read-only file",
                                    nullptr, nullptr);
            }
            uint32_t written = 0;
            if (!nqplat::file_seek(file->handle, writer->position) ||
                !nqplat::file_write(file->handle, writer->position, writer->buffer, filled,
                                    &written) ||
                written != filled) {
                return err4describe(engine, -120, file->name, nullptr, nullptr);
            }
        }
    }
    writer->position += filled;
    writer->write_size = writer->full_size;
    writer->room = writer->full_size;
    return 0;
}

int file4_seq_write(seq_writer *writer, const void *data, uint32_t length) {
    if (!writer || !writer->file || !writer->file->engine) return -1;
    file4 *file = writer->file;
    if (file->engine->error_code < 0) return -1;
    if (length == 0) return 0;
    if (!data) return -1;
    if (!writer->buffer) {
        const int result = file4_write(file, writer->position, data, length);
        if (result == 0) writer->position += length;
        return result;
    }
    const char *from = static_cast<const char *>(data);
    while (length > 0) {
        const uint32_t count = length < writer->room ? length : writer->room;
        std::memcpy(writer->buffer + (writer->write_size - writer->room), from, count);
        writer->room -= count;
        from += count;
        length -= count;
        if (writer->room == 0) {
            const int result = file4_seq_write_flush(writer);
            if (result) return result;
        }
    }
    return 0;
}

int file4_seq_fill(seq_writer *writer, uint32_t count, char byte) {
    char piece[512];
    std::memset(piece, byte, sizeof(piece));
    while (count > 0) {
        const uint32_t n = count < sizeof(piece) ? count : static_cast<uint32_t>(sizeof(piece));
        const int result = file4_seq_write(writer, piece, n);
        if (result) return result;
        count -= n;
    }
    return 0;
}
