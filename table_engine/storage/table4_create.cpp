// Creating a data file: the 32-byte header, one 32-byte descriptor a field, the descriptor
// end byte 13 and the end-of-file byte 26; then the memo file when a field keeps its value
// there, and the table opened.
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

constexpr unsigned char kVersionPlain = 3;
constexpr unsigned char kVersionMemo = 0xF5;
// Where counting the fields stops: far more than any header can describe.
constexpr uint32_t kFieldCountLimit = 1u << 20;

bool is_memo_type(int type) { return type == 'M' || type == 'G' || type == 'B'; }

int upper_type(int32_t type) { return std::toupper(static_cast<unsigned char>(type & 0xFF)); }

// The length and decimals a descriptor stores for a field, and what it adds to the record.
struct FieldShape {
    uint32_t length = 0;
    uint32_t decimals = 0;
    bool storable = true;
};

FieldShape shape_of(const column_info &column) {
    FieldShape shape;
    const int type = upper_type(column.type);
    switch (type) {
        case 'C':
            // Bytes 16 and 17 together hold it.
            shape.storable = column.length >= 0 && column.length <= 0xFFFF;
            shape.length = shape.storable ? static_cast<uint32_t>(column.length) : 0;
            break;
        case 'N':
        case 'F':
            // One byte each: a wider number would not read back as it was asked for.
            shape.storable = column.length >= 0 && column.length <= 0xFF && column.decimals >= 0 &&
                             column.decimals <= 0xFF;
            shape.length = shape.storable ? static_cast<uint32_t>(column.length) : 0;
            shape.decimals = shape.storable ? static_cast<uint32_t>(column.decimals) : 0;
            break;
        case 'D':
            shape.length = 8;
            break;
        case 'L':
            shape.length = 1;
            break;
        case 'M':
        case 'G':
        case 'B':
            shape.length = 10;
            break;
        default:
            // An unknown letter is written as it is, with nothing in the record.
            break;
    }
    return shape;
}

void write_descriptor(unsigned char *at, const column_info &column, const FieldShape &shape) {
    std::memset(at, 0, kDescriptorSize);
    size_t n = 0;
    for (; n < 10 && column.name[n]; ++n) {
        at[n] = static_cast<unsigned char>(std::toupper(static_cast<unsigned char>(column.name[n])));
    }
    while (n > 0 && at[n - 1] == ' ') at[--n] = 0;
    const int type = upper_type(column.type);
    at[11] = static_cast<unsigned char>(type);
    at[16] = static_cast<unsigned char>(shape.length & 0xFF);
    at[17] = static_cast<unsigned char>(type == 'C' ? (shape.length >> 8) & 0xFF : shape.decimals & 0xFF);
}

// The create's failure report, silent with err_create off.
table4 *refuse_create(engine4 *engine, const char *word, const char *name) {
    if (!engine->err_create) {
        engine->error_code = result4_no_create;
        return nullptr;
    }
    err4describe(engine, -20, word, name, nullptr);
    return nullptr;
}

int write_file_image(file4 *file, const column_info *columns, uint32_t fields, uint32_t width,
                     bool has_memo) {
    char buffer[2048];
    seq_writer writer;
    int result = file4_seq_write_init(&writer, file, 0, buffer, sizeof(buffer));
    if (result) return result;

    unsigned char header[kHeaderSize] = {};
    header[0] = has_memo ? kVersionMemo : kVersionPlain;
    u4yymmdd(header + 1);
    byte4::put_le32(header + 4, 0);
    byte4::put_le16(header + 8, kHeaderSize * (fields + 1) + 1);
    byte4::put_le16(header + 10, width);
    result = file4_seq_write(&writer, header, sizeof(header));
    for (uint32_t i = 0; result == 0 && i < fields; ++i) {
        unsigned char descriptor[kDescriptorSize];
        write_descriptor(descriptor, columns[i], shape_of(columns[i]));
        result = file4_seq_write(&writer, descriptor, sizeof(descriptor));
    }
    const unsigned char ends[2] = {kDescriptorEnd, kFileEnd};
    if (result == 0) result = file4_seq_write(&writer, ends, sizeof(ends));
    if (result == 0) result = file4_seq_write_flush(&writer);
    return result;
}

}  // namespace

table4 *table4_create(engine4 *engine, const char *name, const column_info *columns,
                      const tag_info *tags) {
    if (!engine || !name || !columns || engine->error_code < 0) return nullptr;

    uint64_t width = 1;
    uint32_t fields = 0;
    bool has_memo = false;
    bool storable = true;
    for (const column_info *column = columns; column->name && fields < kFieldCountLimit; ++column) {
        ++fields;
        const FieldShape shape = shape_of(*column);
        storable = storable && shape.storable;
        width += shape.length;
        if (is_memo_type(upper_type(column->type))) has_memo = true;
    }
    if (!storable || width >= 65535) {
        err4describe(engine, -230, name, nullptr, nullptr);
        return nullptr;
    }
    if (static_cast<uint64_t>(fields) * kDescriptorSize + 34 >= 65535) {
        return refuse_create(engine, "Too Many Fields", name);
    }

    char data_name[kNameBuffer];
    if (std::strlen(name) >= sizeof(data_name)) return refuse_create(engine, "File Name:", name);
    std::strcpy(data_name, name);
    if (u4name_ext(data_name, sizeof(data_name), "DBF", 0) != 0) {
        return refuse_create(engine, "File Name:", name);
    }

    file4 file;
    if (file4_create(&file, engine, data_name, 1) != 0) return nullptr;
    const int written = write_file_image(&file, columns, fields, static_cast<uint32_t>(width), has_memo);
    file4_close(&file);
    if (written != 0 || engine->error_code < 0) return nullptr;

    if (has_memo) {
        char memo_name[kNameBuffer];
        std::strcpy(memo_name, data_name);
        if (u4name_ext(memo_name, sizeof(memo_name), "FPT", 1) != 0) {
            return refuse_create(engine, "File Name:", memo_name);
        }
        memo4 memo;
        std::memset(&memo, 0, sizeof(memo));
        memo.file.handle = -1;
        memo4_create(&memo, engine, nullptr, memo_name);
        file4_close(&memo.file);
    }

    table4 *table = table4_open(engine, data_name);
    if (!table || !tags) return table;
    if (!index4_create(table, nullptr, tags)) {
        table4_close(table);
        return nullptr;
    }
    return table;
}
