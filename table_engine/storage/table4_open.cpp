// Opening a data file: the header, the field descriptors, the record buffers, the production
// index and the memo file; and closing it again.
#include <cctype>
#include <cstring>

#include "byte4.h"
#include "date4.h"
#include "error4.h"
#include "file4.h"
#include "index4.h"
#include "table4.h"
#include "table4_internal.h"

using namespace table4_detail;

namespace {

bool is_memo_type(int type) { return type == 'M' || type == 'G' || type == 'B'; }

// The alias: the base name without path or extension, upper case, at most 10 characters.
// The slash ends a path component here as well, since names of the operating system's own
// form reach the engine too.
void make_alias(char *alias, const char *name) {
    const char *start = name;
    for (const char *at = name; *at; ++at) {
        if (*at == '\\' || *at == '/' || *at == ':') start = at + 1;
    }
    const char *point = std::strrchr(start, '.');
    const size_t length = point ? static_cast<size_t>(point - start) : std::strlen(start);
    size_t n = 0;
    for (; n < length && n < 10; ++n) {
        alias[n] = static_cast<char>(std::toupper(static_cast<unsigned char>(start[n])));
    }
    alias[n] = '\0';
}

int not_a_data_file(table4 *table) {
    return err4describe(table->engine, -200, table->file.name, nullptr, nullptr);
}

// Length and decimals as a descriptor gives them: one byte each for N and F, one byte with
// no decimals for L, D and the memo types, and two bytes as one number for every other
// letter (a character field wider than 255 keeps its high byte in the decimals' place).
void read_shape(const unsigned char *descriptor, int type, uint32_t *length, uint32_t *decimals) {
    switch (type) {
        case 'N':
        case 'F':
            *length = descriptor[16];
            *decimals = descriptor[17];
            break;
        case 'L':
        case 'D':
        case 'M':
        case 'G':
        case 'B':
            *length = descriptor[16];
            *decimals = 0;
            break;
        default:
            *length = byte4::get_le16(descriptor + 16);
            *decimals = 0;
            break;
    }
}

// Reads the header and the descriptors and builds the columns; 0 or the error.
int read_structure(table4 *table) {
    engine4 *engine = table->engine;
    unsigned char header[kHeaderSize];
    if (file4_read(&table->file, 0, header, kHeaderSize) != kHeaderSize) {
        return engine->error_code < 0 ? engine->error_code : not_a_data_file(table);
    }
    table->version = header[0];
    std::memcpy(table->update_date, header + 1, 3);
    table->record_count = -1;
    table->known_count = static_cast<int32_t>(byte4::get_le32(header + 4));
    table->header_length = static_cast<uint16_t>(byte4::get_le16(header + 8));
    table->has_production = header[28];
    const uint32_t stated_width = byte4::get_le16(header + 10);

    if (table->header_length < kHeaderSize + 1) return not_a_data_file(table);
    const uint32_t block_length = table->header_length - kHeaderSize;
    unsigned char *block = static_cast<unsigned char *>(mem4_alloc_or_error(engine, block_length));
    if (!block) return -920;
    if (file4_read(&table->file, kHeaderSize, block, block_length) != block_length) {
        mem4_free(block);
        return engine->error_code < 0 ? engine->error_code : not_a_data_file(table);
    }

    // The descriptors run until a first byte 13 or the end of the block; a descriptor cut
    // short by the end of the block makes the header impossible.
    uint32_t fields = 0;
    while (fields * kDescriptorSize < block_length && block[fields * kDescriptorSize] != kDescriptorEnd) {
        ++fields;
    }
    if (fields * kDescriptorSize > block_length) {
        mem4_free(block);
        return not_a_data_file(table);
    }

    uint32_t memo_count = 0;
    if (fields) {
        table->columns = static_cast<column4 *>(mem4_alloc_or_error(engine, fields * sizeof(column4)));
        if (!table->columns) {
            mem4_free(block);
            return -920;
        }
    }
    table->column_count = fields;
    uint64_t offset = 1;
    for (uint32_t i = 0; i < fields; ++i) {
        const unsigned char *descriptor = block + i * kDescriptorSize;
        column4 &column = table->columns[i];
        size_t n = 0;
        for (; n < 10 && descriptor[n]; ++n) column.name[n] = static_cast<char>(descriptor[n]);
        while (n > 0 && column.name[n - 1] == ' ') --n;
        column.name[n] = '\0';
        column.type = std::toupper(descriptor[11]);
        read_shape(descriptor, column.type, &column.length, &column.decimals);
        column.offset = static_cast<uint32_t>(offset);
        column.table = table;
        offset += column.length;
        if (is_memo_type(column.type)) ++memo_count;
    }
    mem4_free(block);

    if (memo_count) {
        table->memo_columns =
            static_cast<memo_column *>(mem4_alloc_or_error(engine, memo_count * sizeof(memo_column)));
        if (!table->memo_columns) return -920;
        uint32_t k = 0;
        for (uint32_t i = 0; i < fields; ++i) {
            column4 &column = table->columns[i];
            if (!is_memo_type(column.type)) continue;
            memo_column &memo = table->memo_columns[k++];
            memo.needs_read = 1;
            memo.contents = memo4_empty;
            memo.column = &column;
            column.memo = &memo;
        }
        table->memo_column_count = memo_count;
    }

    // The fields must fill the record exactly: anything else would read outside it.
    if (offset != stated_width) return not_a_data_file(table);
    table->record_width = stated_width;
    return 0;
}

}  // namespace

namespace table4_detail {

void free_table_memory(table4 *table) {
    mem4_free(table->record);
    table->record = nullptr;
    mem4_free(table->record_old);
    table->record_old = nullptr;
    for (uint32_t i = 0; table->memo_columns && i < table->memo_column_count; ++i) {
        if (table->memo_columns[i].allocated) mem4_free(table->memo_columns[i].contents);
    }
    mem4_free(table->memo_columns);
    table->memo_columns = nullptr;
    table->memo_column_count = 0;
    mem4_free(table->columns);
    table->columns = nullptr;
    table->column_count = 0;
    if (table->locks && table->locks != &table->single_lock) mem4_free(table->locks);
    table->locks = &table->single_lock;
    table->locks_capacity = 1;
}

}  // namespace table4_detail

table4 *table4_open(engine4 *engine, const char *name) {
    if (!engine || !name || engine->error_code < 0) return nullptr;
    table4 *table = static_cast<table4 *>(pool4_get(engine, &engine->table_pool, engine->table_start,
                                                    sizeof(table4), engine->table_expand, 0));
    if (!table) {
        if (engine->error_code >= 0) err4report(engine, -920, nullptr);
        return nullptr;
    }
    table->engine = engine;
    table->locks = &table->single_lock;
    table->locks_capacity = 1;
    table->memo_file.file.handle = -1;
    table->file.handle = -1;
    table->record_number = -1;
    table->record_number_old = -1;
    table->record_count = -1;

    char data_name[kNameBuffer];
    bool fits = std::strlen(name) < sizeof(data_name);
    if (fits) {
        std::strcpy(data_name, name);
        fits = u4name_ext(data_name, sizeof(data_name), "DBF", 0) == 0;
    }
    if (!fits) {
        pool4_give_back(engine->table_pool, table);
        if (!engine->err_open) {
            engine->error_code = result4_no_open;
            return nullptr;
        }
        err4describe(engine, -60, "File Name:", name, nullptr);
        return nullptr;
    }
    if (file4_open(&table->file, engine, data_name, 1) != 0) {
        pool4_give_back(engine->table_pool, table);
        return nullptr;
    }
    l4_add(&engine->table_list, table);
    make_alias(table->alias, data_name);

    if (read_structure(table) != 0) {
        table4_close(table);
        return nullptr;
    }

    table->record = static_cast<char *>(mem4_alloc_or_error(engine, table->record_width + 1));
    table->record_old = static_cast<char *>(mem4_alloc_or_error(engine, table->record_width + 1));
    if (!table->record || !table->record_old) {
        table4_close(table);
        return nullptr;
    }
    std::memset(table->record, ' ', table->record_width);
    std::memset(table->record_old, ' ', table->record_width);

    file4_cache_type(&table->file, engine->optimize_default, 1);

    if (table->has_production && engine->auto_open) {
        if (!i4open(table, nullptr)) {
            table4_close(table);
            return nullptr;
        }
    }

    if (table->version & 0x80) {
        char memo_name[kNameBuffer];
        std::strcpy(memo_name, data_name);
        if (u4name_ext(memo_name, sizeof(memo_name), "FPT", 1) != 0 ||
            memo4_open(&table->memo_file, table, memo_name) != 0) {
            table4_close(table);
            return nullptr;
        }
    }
    return table;
}

int table4_close(table4 *table) {
    if (!table || !table->engine) return -1;
    engine4 *engine = table->engine;
    // The close goes through after an earlier failure; that failure stands unless a step of
    // the close fails later.
    int32_t last = engine->error_code;
    engine->error_code = 0;
    // A pending record whose unique key failed is thrown away.
    if (last == -340) table->record_changed = 0;
    auto note = [&]() {
        if (engine->error_code != 0) last = engine->error_code;
        engine->error_code = 0;
    };

    if (table->file.handle >= 0) {
        table4_update(table);
        if (engine->error_code == -340) table->record_changed = 0;
        note();
        if (table->file_changed) {
            table4_update_header(table, 1, 0);
            note();
        }
        table4_unlock(table);
        note();
    }
    while (void *walk = l4_first(&table->index_list)) {
        index4_close(static_cast<index4 *>(walk));
        note();
        if (l4_first(&table->index_list) == walk) {
            l4_remove(&table->index_list, walk);  // never loop on an index that stays
        }
    }
    l4_remove(&engine->table_list, table);
    file4_close(&table->file);
    note();
    if (memo_open(table)) {
        file4_close(&table->memo_file.file);
        note();
    }
    free_table_memory(table);
    pool4_give_back(engine->table_pool, table);
    engine->error_code = last;
    return last;
}
