// Helpers of the data and memo file tests: a folder with an engine whose reports are caught,
// tables made from column rows, and the numbers inside file images.
#pragma once

#include <cstdint>
#include <cctype>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "engine_test_support.h"

namespace tabletest {

inline uint32_t le16(const std::string &bytes, size_t at) {
    return static_cast<uint8_t>(bytes[at]) | (static_cast<uint32_t>(static_cast<uint8_t>(bytes[at + 1])) << 8);
}

inline uint32_t le32(const std::string &bytes, size_t at) {
    return le16(bytes, at) | (le16(bytes, at + 2) << 16);
}

inline uint32_t be32(const std::string &bytes, size_t at) {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = (value << 8) | static_cast<uint8_t>(bytes[at + i]);
    return value;
}

inline uint32_t be16(const std::string &bytes, size_t at) {
    return (static_cast<uint32_t>(static_cast<uint8_t>(bytes[at])) << 8) | static_cast<uint8_t>(bytes[at + 1]);
}

inline void put_le16(std::string &bytes, size_t at, uint32_t value) {
    bytes[at] = static_cast<char>(value & 0xFF);
    bytes[at + 1] = static_cast<char>((value >> 8) & 0xFF);
}

inline void put_le32(std::string &bytes, size_t at, uint32_t value) {
    put_le16(bytes, at, value & 0xFFFF);
    put_le16(bytes, at + 2, value >> 16);
}

inline void put_be32(std::string &bytes, size_t at, uint32_t value) {
    for (int i = 0; i < 4; ++i) bytes[at + i] = static_cast<char>((value >> (24 - 8 * i)) & 0xFF);
}

// The text of a report box: the number in four columns, then each line with its line feed.
inline std::string box_text(int code, std::initializer_list<std::string> lines) {
    char number[5] = {};
    c4ltoa(code, number, 4);
    std::string text = std::string("Error #: ") + number + "\n";
    for (const std::string &line : lines) text += line + "\n";
    return text;
}

inline std::string upper(std::string text) {
    for (char &c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

// The usual fields of the tests: C 10, N 8.2, D, L.
inline const column_info *plain_columns() {
    static const column_info columns[] = {
        {"NAME", 'C', 10, 0}, {"AMOUNT", 'N', 8, 2}, {"SEEN", 'D', 8, 0}, {"OK", 'L', 1, 0}, {nullptr, 0, 0, 0}};
    return columns;
}

// The same with a memo field behind them.
inline const column_info *memo_columns() {
    static const column_info columns[] = {{"NAME", 'C', 10, 0}, {"AMOUNT", 'N', 8, 2}, {"NOTE", 'M', 10, 0},
                                          {"OK", 'L', 1, 0},    {nullptr, 0, 0, 0}};
    return columns;
}

// A folder, an engine and the boxes shown.
class TableTest : public ::testing::Test {
protected:
    nqtest::TempDir dir;
    enginetest::Engine engine;
    enginetest::BoxCapture boxes;

    std::string path(const std::string &name) const { return dir.file(name); }
    std::string bytes(const std::string &name) const { return nqtest::read_file(path(name)); }

    table4 *create(const std::string &name, const column_info *columns = plain_columns()) {
        return table4_create(engine, path(name).c_str(), columns, nullptr);
    }

    table4 *open(const std::string &name) { return table4_open(engine, path(name).c_str()); }

    // Appends a record of the plain columns (or the memo columns, with note as the memo).
    int append_row(table4 *table, const char *name, double amount, const char *third, bool ok) {
        if (table4_append_start(table, 0) != 0) return -1;
        table4_blank(table);
        column4_assign(table4_column(table, "NAME"), name);
        column4_assign_double(table4_column(table, "AMOUNT"), amount);
        if (column4 *seen = table4_column_j(table, 3)) {
            if (seen->memo) {
                column4_memo_assign(seen, third, static_cast<uint32_t>(std::strlen(third)));
            } else {
                column4_assign_date(seen, third);
            }
        }
        column4_assign_logical(table4_column(table, "OK"), ok);
        return table4_append(table);
    }

    // The field's text as it stands in the record.
    static std::string field(table4 *table, const char *name) {
        column4 *column = table4_column(table, name);
        if (!column) return "<none>";
        return std::string(column4_ptr(column), column->length);
    }

    static std::string memo(table4 *table, const char *name) {
        column4 *column = table4_column(table, name);
        if (!column) return "<none>";
        return std::string(column4_memo_ptr(column), column4_memo_len(column));
    }
};

}  // namespace tabletest
