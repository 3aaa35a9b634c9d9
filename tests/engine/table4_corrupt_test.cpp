// Bad input: truncated files, impossible headers, memo numbers and lengths past the end of the
// memo file, and a few thousand randomly corrupted copies of a valid table and memo file.
// Every one must open or be refused with a code, and every record and memo value read back
// must stay inside what was read: the sanitizer build watches for the rest.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>

#include "table4_test_support.h"

namespace {

using tabletest::put_be32;
using tabletest::put_le16;
using tabletest::put_le32;

class Table4Corrupt : public tabletest::TableTest {
protected:
    std::string good_data;
    std::string good_memo;

    void SetUp() override {
        engine->memo_block_default = 64;
        const column_info columns[] = {{"NAME", 'C', 12, 0}, {"AMOUNT", 'N', 9, 2}, {"SEEN", 'D', 8, 0},
                                       {"OK", 'L', 1, 0},    {"NOTE", 'M', 10, 0},  {"MORE", 'M', 10, 0},
                                       {nullptr, 0, 0, 0}};
        table4 *table = create("GOOD.DBF", columns);
        ASSERT_NE(table, nullptr);
        for (int i = 1; i <= 8; ++i) {
            ASSERT_EQ(table4_append_start(table, 0), 0);
            column4_assign(table4_column(table, "NAME"), ("name" + std::to_string(i)).c_str());
            column4_assign_double(table4_column(table, "AMOUNT"), i * 3.25);
            column4_assign_date(table4_column(table, "SEEN"), "20200102");
            column4_assign_logical(table4_column(table, "OK"), i & 1);
            const std::string note(static_cast<size_t>(i * 45), static_cast<char>('a' + i));
            column4_memo_assign(table4_column(table, "NOTE"), note.data(), static_cast<uint32_t>(note.size()));
            if (i % 3) column4_memo_assign(table4_column(table, "MORE"), "more", 4);
            ASSERT_EQ(table4_append(table), 0);
        }
        if (i_delete_one) {
            ASSERT_EQ(table4_go(table, 4), 0);
            table4_delete(table);
        }
        ASSERT_EQ(table4_close(table), 0);
        good_data = bytes("GOOD.DBF");
        good_memo = bytes("GOOD.FPT");
        engine->off_error = 1;  // thousands of failures ahead: no boxes
    }

    bool i_delete_one = true;

    // Opens the copy, reads every record (at most a bound of them) and every memo value; the
    // result is the open's error code, or 0 when the table opened.
    int read_everything(const std::string &name, int *records_read = nullptr) {
        engine->error_code = 0;
        table4 *table = open(name);
        if (!table) {
            const int code = engine->error_code;
            engine->error_code = 0;
            return code == 0 ? -9999 : code;
        }
        const int32_t count = table4_count(table);
        int read = 0;
        for (int32_t n = 1; n <= count && n <= 64; ++n) {
            engine->error_code = 0;
            if (table4_go(table, n) != 0) continue;
            ++read;
            char text[80];
            for (uint32_t j = 1; j <= table->column_count; ++j) {
                column4 *column = table4_column_j(table, static_cast<int32_t>(j));
                column4_text(column, text, sizeof(text));
                column4_double(column);
                column4_long(column);
                column4_true(column);
                if (column->memo) {
                    const char *value = column4_memo_ptr(column);
                    const uint32_t length = column4_memo_len(column);
                    // Touch every byte handed out, and the zero behind it.
                    volatile char sink = 0;
                    for (uint32_t k = 0; value && k <= length; ++k) sink = static_cast<char>(sink ^ value[k]);
                    (void)sink;
                }
            }
        }
        engine->error_code = 0;
        table4_top(table);
        for (int steps = 0; steps < 70 && !table->eof && table->record_number > 0; ++steps) {
            if (table4_skip(table, 1) < 0) break;
        }
        engine->error_code = 0;
        table4_close(table);
        engine->error_code = 0;
        if (records_read) *records_read = read;
        return 0;
    }

    void write_pair(const std::string &data, const std::string &memo) {
        nqtest::write_file(path("BAD.DBF"), data);
        nqtest::write_file(path("BAD.FPT"), memo);
    }
};

TEST_F(Table4Corrupt, TheValidTableReadsWhole) {
    write_pair(good_data, good_memo);
    int read = 0;
    EXPECT_EQ(read_everything("BAD.DBF", &read), 0);
    EXPECT_EQ(read, 8);
}

TEST_F(Table4Corrupt, EveryTruncationOfTheDataFileOpensOrIsRefused) {
    for (size_t length = 0; length < good_data.size(); ++length) {
        write_pair(good_data.substr(0, length), good_memo);
        int read = 0;
        const int result = read_everything("BAD.DBF", &read);
        const uint32_t header = 32 * 7 + 1;
        if (length < header) {
            EXPECT_EQ(result, -200) << length;
        } else {
            EXPECT_EQ(result, 0) << length;
            // Only whole records can be read; the rest give -70.
            EXPECT_EQ(read, static_cast<int>((length - header) / 51))
                << length;
        }
    }
}

TEST_F(Table4Corrupt, EveryTruncationOfTheMemoFileOpensOrIsRefused) {
    for (size_t length = 0; length < good_memo.size(); length += 7) {
        write_pair(good_data, good_memo.substr(0, length));
        const int result = read_everything("BAD.DBF");
        if (length < 8) {
            EXPECT_EQ(result, -70) << length;
        } else {
            EXPECT_EQ(result, 0) << length;
        }
    }
}

TEST_F(Table4Corrupt, MemoNumbersAndLengthsPastTheEndReadAsFailures) {
    write_pair(good_data, good_memo);
    table4 *table = open("BAD.DBF");
    ASSERT_NE(table, nullptr);
    ASSERT_EQ(table4_go(table, 2), 0);
    column4 *note = table4_column(table, "NOTE");
    // A block number far past the end of the file.
    std::memcpy(column4_ptr(note), "  99999999", 10);
    column4_memo_reset(note);
    EXPECT_EQ(column4_memo_load(note), -1);
    EXPECT_EQ(column4_memo_len(note), 0u);
    // The largest number a field can hold.
    std::memcpy(column4_ptr(note), "9999999999", 10);
    column4_memo_reset(note);
    EXPECT_EQ(column4_memo_len(note), 0u);
    // A negative one.
    std::memcpy(column4_ptr(note), "        -5", 10);
    column4_memo_reset(note);
    EXPECT_EQ(column4_memo_len(note), 0u);
    table->record_changed = 0;
    table4_close(table);

    // A length that reaches past the end of the file.
    std::string memo = good_memo;
    put_be32(memo, 8 * 64 + 4, 0x7FFFFFF0u);
    write_pair(good_data, memo);
    table = open("BAD.DBF");
    ASSERT_EQ(table4_go(table, 1), 0);
    EXPECT_EQ(column4_memo_load(table4_column(table, "NOTE")), -1);
    EXPECT_EQ(column4_memo_len(table4_column(table, "NOTE")), 0u);
    EXPECT_EQ(engine->error_code, 0);
    table4_close(table);
}

TEST_F(Table4Corrupt, ImpossibleHeadersAreRefusedWithMinus200) {
    struct Case {
        const char *what;
        size_t at;
        uint32_t value;
        int bytes;
    } cases[] = {
        {"header length 0", 8, 0, 2},
        {"header length 32", 8, 32, 2},
        {"header length past the file", 8, 65535, 2},
        {"record width 0", 10, 0, 2},
        {"record width too large", 10, 60000, 2},
        {"field wider than the record", 32 + 16, 250, 1},
    };
    for (const Case &c : cases) {
        std::string data = good_data;
        if (c.bytes == 2) {
            put_le16(data, c.at, c.value);
        } else {
            data[c.at] = static_cast<char>(c.value);
        }
        write_pair(data, good_memo);
        EXPECT_EQ(read_everything("BAD.DBF"), -200) << c.what;
    }
    // No terminator and descriptors running into the records.
    std::string data = good_data;
    data[32 * 7] = 'X';
    put_le16(data, 8, 32 * 7 + 20);
    write_pair(data, good_memo);
    EXPECT_EQ(read_everything("BAD.DBF"), -200);
    // A record count far beyond the file: the records that are there read, the rest do not.
    data = good_data;
    put_le32(data, 4, 0x7FFFFFFFu);
    write_pair(data, good_memo);
    int read = 0;
    EXPECT_EQ(read_everything("BAD.DBF", &read), 0);
    EXPECT_EQ(read, 8);
}

TEST_F(Table4Corrupt, ThousandsOfRandomlyCorruptedCopiesOpenOrAreRefusedCleanly) {
    std::mt19937 random(20240229);
    int opened = 0, refused = 0;
    for (int round = 0; round < 3000; ++round) {
        std::string data = good_data;
        std::string memo = good_memo;
        const int kind = round % 6;
        const int flips = 1 + static_cast<int>(random() % 8);
        for (int f = 0; f < flips; ++f) {
            std::string &target = (kind == 4 || (kind == 5 && f % 2)) ? memo : data;
            size_t at;
            if (kind == 0) {
                at = random() % 32;  // the header
            } else if (kind == 1) {
                at = 32 + random() % (32 * 6 + 1);  // the descriptors
            } else if (kind == 4) {
                at = random() % 2 ? random() % 8 : random() % target.size();  // memo header or values
            } else {
                at = random() % target.size();
            }
            target[at] = static_cast<char>(random() & 0xFF);
        }
        if (kind == 3) data.resize(random() % data.size());
        if (kind == 5 && random() % 2) memo.resize(random() % memo.size());
        write_pair(data, memo);
        const int result = read_everything("BAD.DBF");
        if (result == 0) {
            ++opened;
        } else {
            ++refused;
            EXPECT_TRUE(result == -200 || result == -70 || result == -60 || result == -1010 || result == -920)
                << "round " << round << ": " << result;
        }
    }
    EXPECT_GT(opened, 0);
    EXPECT_GT(refused, 0);
    EXPECT_EQ(engine->table_list.count, 0u);
}

}  // namespace
