// The fields of the current record: finding them, assigning values in their fixed-width
// text forms, and reading them back.
#include <cctype>
#include <cmath>
#include <cstring>

#include "date4.h"
#include "error4.h"
#include "table4.h"
#include "table4_internal.h"

using namespace table4_detail;

namespace {

bool is_number_type(int type) { return type == 'N' || type == 'F'; }

void mark_changed(column4 *column) { column->table->record_changed = 1; }

bool usable(const column4 *column) { return column && column->table && column->table->record; }

}  // namespace

column4 *table4_column(table4 *table, const char *name) {
    if (in_error(table) || !name) return nullptr;
    char wanted[11];
    size_t n = 0;
    for (; n < 10 && name[n]; ++n) {
        wanted[n] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[n])));
    }
    while (n > 0 && wanted[n - 1] == ' ') --n;
    wanted[n] = '\0';
    for (uint32_t i = 0; i < table->column_count; ++i) {
        char have[11];
        std::memcpy(have, table->columns[i].name, sizeof(have));
        c4upper(have);
        if (std::strcmp(have, wanted) == 0) return &table->columns[i];
    }
    if (table->engine->err_field) err4describe(table->engine, -210, name, nullptr, nullptr);
    return nullptr;
}

column4 *table4_column_j(table4 *table, int32_t number) {
    if (!table || number < 1 || static_cast<uint32_t>(number) > table->column_count) return nullptr;
    return &table->columns[number - 1];
}

char *column4_ptr(const column4 *column) {
    if (!usable(column)) return nullptr;
    return column->table->record + column->offset;
}

void column4_assign_n(column4 *column, const char *text, uint32_t length) {
    if (!usable(column)) return;
    if (column->memo) {
        column4_memo_assign(column, text ? text : "", text ? length : 0);
        return;
    }
    char *field = column4_ptr(column);
    uint32_t n = 0;
    if (text) {
        for (; n < length && n < column->length && text[n]; ++n) field[n] = text[n];
    }
    std::memset(field + n, ' ', column->length - n);
    mark_changed(column);
}

void column4_assign(column4 *column, const char *text) {
    column4_assign_n(column, text, text ? static_cast<uint32_t>(std::strlen(text)) : 0);
}

void column4_assign_double(column4 *column, double value) {
    if (!usable(column) || column->memo) return;
    char *field = column4_ptr(column);
    switch (column->type) {
        case 'D':
            column4_assign_julian(column, static_cast<int32_t>(value));
            return;
        case 'L':
            column4_assign_logical(column, value != 0.0);
            return;
        default:
            // Numbers, and text fields given a number, take it right-justified by the field's
            // decimals.
            c4dtoa(value, field, static_cast<int>(column->length),
                   is_number_type(column->type) ? static_cast<int>(column->decimals) : 0);
            mark_changed(column);
            return;
    }
}

void column4_assign_long(column4 *column, int32_t value) {
    if (!usable(column) || column->memo) return;
    char *field = column4_ptr(column);
    switch (column->type) {
        case 'D':
            column4_assign_julian(column, value);
            return;
        case 'L':
            column4_assign_logical(column, value != 0);
            return;
        default:
            if (is_number_type(column->type) && column->decimals > 0) {
                c4dtoa(static_cast<double>(value), field, static_cast<int>(column->length),
                       static_cast<int>(column->decimals));
            } else {
                c4ltoa(value, field, static_cast<int>(column->length));
            }
            mark_changed(column);
            return;
    }
}

void column4_assign_date(column4 *column, const char *date) {
    if (!usable(column) || column->memo) return;
    column4_assign_n(column, date, date ? 8 : 0);
}

void column4_assign_julian(column4 *column, int32_t julian_day) {
    if (!usable(column) || column->memo) return;
    char date[8];
    date4assign(date, julian_day);
    column4_assign_n(column, date, sizeof(date));
}

void column4_assign_logical(column4 *column, int truth) {
    if (!usable(column) || column->memo) return;
    column4_assign_n(column, truth ? "T" : "F", 1);
}

uint32_t column4_text(const column4 *column, char *out, uint32_t size) {
    if (!out || size == 0) return 0;
    out[0] = '\0';
    if (!usable(column)) return 0;
    const char *from;
    uint32_t length;
    if (column->memo) {
        column4 *memo_field = const_cast<column4 *>(column);
        from = column4_memo_ptr(memo_field);
        length = column4_memo_len(memo_field);
    } else {
        from = column4_ptr(column);
        length = column->length;
    }
    if (!from) length = 0;
    if (length > size - 1) length = size - 1;
    if (length) std::memcpy(out, from, length);
    out[length] = '\0';
    return length;
}

double column4_double(const column4 *column) {
    if (!usable(column) || column->memo) return 0.0;
    const char *field = column4_ptr(column);
    switch (column->type) {
        case 'D':
            return static_cast<double>(date4julian(field));
        case 'L':
            return column4_true(column) ? 1.0 : 0.0;
        default:
            return c4atod(field, static_cast<int>(column->length));
    }
}

int32_t column4_long(const column4 *column) {
    if (!usable(column) || column->memo) return 0;
    const char *field = column4_ptr(column);
    switch (column->type) {
        case 'D':
            return date4julian(field);
        case 'L':
            return column4_true(column);
        case 'N':
        case 'F': {
            // A number field may hold decimals: its value, cut toward zero.
            const double value = c4atod(field, static_cast<int>(column->length));
            if (!(value > -2147483648.0 && value < 2147483648.0)) return 0;
            return static_cast<int32_t>(value);
        }
        default:
            return c4atol(field, static_cast<int>(column->length));
    }
}

int32_t column4_julian(const column4 *column) {
    if (!usable(column) || column->type != 'D' || column->length < 8) return -1;
    return date4julian(column4_ptr(column));
}

int column4_true(const column4 *column) {
    if (!usable(column) || column->length < 1) return 0;
    const char c = column4_ptr(column)[0];
    return c == 'Y' || c == 'y' || c == 'T' || c == 't';
}
