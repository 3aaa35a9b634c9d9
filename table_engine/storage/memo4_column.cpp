// The memo value of a field in memory: read on first use, assigned by the caller, written to
// the memo file with the record.
#include <cstring>

#include "date4.h"
#include "error4.h"
#include "table4.h"
#include "table4_internal.h"

using namespace table4_detail;

char memo4_empty[1] = {'\0'};

namespace {

char *field_of(const column4 *column) { return column->table->record + column->offset; }

int32_t block_of(const column4 *column) {
    return c4atol(field_of(column), static_cast<int>(column->length));
}

// Back to the shared empty text, with no buffer of its own.
void to_empty(memo_column *memo) {
    if (memo->allocated) mem4_free(memo->contents);
    memo->contents = memo4_empty;
    memo->allocated = 0;
    memo->length = 0;
}

bool usable(const column4 *column) { return column && column->table && column->table->record; }

}  // namespace

int column4_memo_read(column4 *column) {
    if (!usable(column) || !column->memo) return -1;
    memo_column *memo = column->memo;
    table4 *table = column->table;
    if (!memo_open(table)) {
        // A table whose memo file is not open has no values to give.
        memo->length = 0;
        return -1;
    }
    char *buffer = memo->allocated ? memo->contents : nullptr;
    uint32_t length = memo->allocated;
    const int result = memo4_read(&table->memo_file, block_of(column), &buffer, &length);
    if (buffer != (memo->allocated ? memo->contents : nullptr)) {
        // The old buffer went; the new one, if any, holds the stored length and a zero byte.
        memo->contents = buffer ? buffer : memo4_empty;
        memo->allocated = buffer ? static_cast<uint32_t>(mem4_size(buffer) - 1) : 0;
    }
    if (result < 0) {
        memo->length = 0;
        if (memo->allocated) memo->contents[0] = '\0';
        return result;
    }
    if (length == 0 || !memo->allocated) {
        to_empty(memo);  // no data: the shared empty text
    } else {
        memo->length = length;
        memo->contents[length] = '\0';
    }
    memo->needs_read = 0;
    return 0;
}

int column4_memo_load(column4 *column) {
    if (!usable(column) || !column->memo) return -1;
    memo_column *memo = column->memo;
    table4 *table = column->table;
    memo->changed = 0;
    if (table->record_number < 0) {
        memo->length = 0;
        return 0;
    }
    if (table->engine->read_lock) {
        const int result = table4_validate_memos(table);
        if (result) return result;
    }
    return column4_memo_read(column);
}

uint32_t column4_memo_len(column4 *column) {
    if (!usable(column)) return 0;
    if (!column->memo) return column->length;
    if (column->memo->needs_read) column4_memo_load(column);
    return column->memo->length;
}

char *column4_memo_ptr(column4 *column) {
    if (!usable(column)) return nullptr;
    if (!column->memo) return field_of(column);
    if (column->memo->needs_read) column4_memo_load(column);
    return column->memo->contents;
}

int column4_memo_set_len(column4 *column, uint32_t length) {
    if (!usable(column) || !column->memo) return -1;
    memo_column *memo = column->memo;
    if (memo->allocated < length) {
        if (memo->allocated) mem4_free(memo->contents);
        memo->contents = memo4_empty;
        memo->allocated = 0;
        char *grown = static_cast<char *>(mem4_alloc(static_cast<size_t>(length) + 1));
        if (!grown) {
            memo->length = 0;
            memo->needs_read = 1;
            return err4report(column->table->engine, -920, nullptr);
        }
        memo->contents = grown;
        memo->allocated = length;
    }
    memo->length = length;
    if (memo->allocated) memo->contents[length] = '\0';
    memo->needs_read = 0;
    memo->changed = 1;
    column->table->record_changed = 1;
    return 0;
}

int column4_memo_assign(column4 *column, const char *text, uint32_t length) {
    if (!usable(column)) return -1;
    if (!column->memo) {
        column4_assign_n(column, text, length);
        return 0;
    }
    if (length && !text) return -1;
    const int result = column4_memo_set_len(column, length);
    if (result) return result;
    if (length) std::memcpy(column->memo->contents, text, length);
    return 0;
}

void column4_memo_free(column4 *column) {
    if (!column || !column->memo) return;
    to_empty(column->memo);
    column->memo->needs_read = 1;
}

void column4_memo_reset(column4 *column) {
    if (!column || !column->memo) return;
    column->memo->length = 0;
    column->memo->needs_read = 1;
}

int column4_memo_flush(column4 *column) {
    if (!usable(column) || !column->memo || !column->memo->changed) return 0;
    memo_column *memo = column->memo;
    table4 *table = column->table;
    int result = table4_validate_memos(table);
    if (result) return result;
    const int32_t before = block_of(column);
    int32_t block = before;
    result = memo4_write(&table->memo_file, &block, memo->contents, memo->length);
    if (result) return result;
    if (block != before) {
        char *field = field_of(column);
        if (block) {
            c4ltoa(block, field, static_cast<int>(column->length));
        } else {
            std::memset(field, ' ', column->length);
        }
    }
    memo->changed = 0;
    return 0;
}
