// The header image and the record count, record positions, and the raw record transfers.
#include <cstring>

#include "byte4.h"
#include "date4.h"
#include "error4.h"
#include "file4.h"
#include "table4.h"
#include "table4_internal.h"

using namespace table4_detail;

int table4_update_header(table4 *table, int write_date, int write_count) {
    if (in_error(table)) return -1;
    if (write_date) u4yymmdd(table->update_date);
    if (write_count && table->record_count < 0) {
        // The count is written only from a value that may be trusted.
        const int32_t count = table4_count(table);
        if (count < 0) return -1;
        table->record_count = count;
    }
    // Version, date, count and header length lie together at the front of the header.
    unsigned char image[10];
    image[0] = table->version;
    std::memcpy(image + 1, table->update_date, 3);
    byte4::put_le32(image + 4, static_cast<uint32_t>(table->record_count));
    byte4::put_le16(image + 8, table->header_length);
    uint32_t from = write_date ? 0 : 4;
    uint32_t length = write_date ? 10 : 6;
    if (!write_count) length -= 6;
    table->file_changed = 0;
    if (length == 0) return 0;
    return file4_write(&table->file, from, image + from, length);
}

int32_t table4_count(table4 *table) {
    if (in_error(table)) return -1;
    if (table->record_count >= 0) return table->record_count;
    unsigned char bytes[4];
    uint32_t got;
    {
        // Another process may have appended since the header was last seen.
        FreshRead fresh(table->engine);
        got = file4_read(&table->file, 4, bytes, sizeof(bytes));
    }
    if (got != sizeof(bytes)) return -1;
    const int32_t count = static_cast<int32_t>(byte4::get_le32(bytes));
    if (count < 0) return -1;
    table->known_count = count;
    if (table->file_locked || table->append_locked || exclusive(table)) table->record_count = count;
    return count;
}

uint64_t table4_record_position(const table4 *table, int32_t number) {
    return static_cast<uint64_t>(table->header_length) +
           static_cast<uint64_t>(static_cast<int64_t>(number) - 1) * table->record_width;
}

uint32_t table4_record_lock_offset(const table4 *table, int32_t number) {
    if (table->has_production) return lock4_record_base - static_cast<uint32_t>(number);
    return static_cast<uint32_t>(lock4_position_base + table4_record_position(table, number));
}

int table4_eof(const table4 *table) { return table ? table->eof : 0; }
int table4_bof(const table4 *table) { return table ? table->bof : 0; }
int32_t table4_recno(const table4 *table) { return table ? table->record_number : -1; }

namespace table4_detail {

uint32_t read_record_bytes(table4 *table, int32_t number, char *buffer) {
    const uint64_t position = table4_record_position(table, number);
    // Past what a 32-bit position reaches the record cannot be there.
    if (number < 1 || position + table->record_width > 0x7FFFFFFFu) return 0;
    return file4_read(&table->file, static_cast<uint32_t>(position), buffer, table->record_width);
}

int write_record_bytes(table4 *table, int32_t number, const char *buffer, uint32_t length) {
    const uint64_t position = table4_record_position(table, number);
    if (number < 1 || position + length > 0x7FFFFFFFu) {
        return err4describe(table->engine, -120, table->file.name, nullptr, nullptr);
    }
    return file4_write(&table->file, static_cast<uint32_t>(position), buffer, length);
}

void mark_memos(table4 *table) {
    for (uint32_t i = 0; table->memo_columns && i < table->memo_column_count; ++i) {
        column4_memo_reset(table->memo_columns[i].column);
    }
}

}  // namespace table4_detail

column_info *table4_columns_out(table4 *table) {
    if (in_error(table)) return nullptr;
    column_info *out = static_cast<column_info *>(
        mem4_alloc_or_error(table->engine, (table->column_count + 1) * sizeof(column_info)));
    if (!out) return nullptr;
    for (uint32_t i = 0; i < table->column_count; ++i) {
        const column4 &column = table->columns[i];
        out[i].name = column.name;
        out[i].type = column.type;
        // A character field's length is given whole; the create splits it again.
        out[i].length = static_cast<int32_t>(column.length);
        out[i].decimals = static_cast<int32_t>(column.decimals);
    }
    out[table->column_count] = column_info{nullptr, 0, 0, 0};
    return out;
}
