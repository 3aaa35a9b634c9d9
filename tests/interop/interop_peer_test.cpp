// Tables the engine writes, read by two independent Python libraries (dbfread and dbf), and
// tables one of them writes, read by the engine: the same fields and the same values.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "interop_support.h"

namespace {

using interop::Dump;

// Reports are caught, so that a failure shows in the test and not on the terminal.
int quiet_box(const char *, const char *, unsigned int) { return 1; }

class InteropPeer : public ::testing::Test {
protected:
    nqtest::TempDir dir;
    engine4 *engine = nullptr;
    nq_MessageBoxHandler previous = nullptr;

    void SetUp() override {
        previous = nq_Platform_setMessageBoxHandler(quiet_box);
        engine = engine4_new(1);
        ASSERT_NE(engine, nullptr);
    }
    void TearDown() override {
        engine4_end(engine);
        engine4_free(engine);
        nq_Platform_setMessageBoxHandler(previous);
    }
    std::string path(const std::string &name) const { return dir.file(name); }

    static void expect_same(const Dump &expected, const Dump &actual, const std::string &what) {
        ASSERT_TRUE(expected.ok) << what << "\n" << expected.output;
        ASSERT_TRUE(actual.ok) << what << "\n" << actual.output;
        EXPECT_EQ(expected.fields, actual.fields) << what;
        ASSERT_EQ(expected.live.size(), actual.live.size()) << what << "\n" << actual.output;
        for (size_t i = 0; i < expected.live.size(); ++i) {
            EXPECT_EQ(expected.live[i], actual.live[i]) << what << ", live record " << i;
        }
        ASSERT_EQ(expected.deleted.size(), actual.deleted.size()) << what;
        for (size_t i = 0; i < expected.deleted.size(); ++i) {
            EXPECT_EQ(expected.deleted[i], actual.deleted[i]) << what << ", deleted record " << i;
        }
    }

    // A memo value of a given size, different in each position.
    static std::string memo_of(size_t size, char seed) {
        std::string value(size, ' ');
        for (size_t i = 0; i < size; ++i) value[i] = static_cast<char>('a' + (i * 11 + seed) % 26);
        if (size > 40) value.replace(20, 2, "\r\n");
        return value;
    }

    // Writes the table of every type with the memo sizes of interest; returns the engine's
    // own view of it.
    Dump write_full_table(const std::string &name, int block_size) {
        engine->memo_block_default = block_size;
        const column_info columns[] = {{"NAME", 'C', 20, 0}, {"AMOUNT", 'N', 12, 2}, {"RATE", 'F', 10, 3},
                                       {"SEEN", 'D', 8, 0},  {"OK", 'L', 1, 0},      {"NOTE", 'M', 10, 0},
                                       {"COUNT", 'N', 6, 0}, {nullptr, 0, 0, 0}};
        table4 *table = table4_create(engine, path(name).c_str(), columns, nullptr);
        if (!table) return Dump{};
        const size_t sizes[] = {0, 1, 511, 512, 513, 5000, 40, 0};
        const char *dates[] = {"20240229", "19991231", "        ", "20000101", "18991230", "21001231", "20240101", "        "};
        for (int i = 0; i < 8; ++i) {
            table4_append_start(table, 0);
            table4_blank(table);
            if (i == 7) {
                // A record left blank throughout.
                table4_append(table);
                continue;
            }
            column4_assign(table4_column(table, "NAME"), ("Name " + std::to_string(i)).c_str());
            column4_assign_double(table4_column(table, "AMOUNT"), (i - 3) * 1234.56);
            column4_assign_double(table4_column(table, "RATE"), i / 7.0);
            column4_assign_date(table4_column(table, "SEEN"), dates[i]);
            if (i != 2) column4_assign_logical(table4_column(table, "OK"), i % 2);
            const std::string memo = memo_of(sizes[i], static_cast<char>(i));
            column4_memo_assign(table4_column(table, "NOTE"), memo.data(), static_cast<uint32_t>(memo.size()));
            column4_assign_long(table4_column(table, "COUNT"), i * 1000 - 2500);
            table4_append(table);
        }
        // Deleted records, and one value rewritten into a new place.
        table4_go(table, 2);
        table4_delete(table);
        table4_go(table, 5);
        table4_delete(table);
        table4_go(table, 3);
        const std::string longer = memo_of(1500, 'q');
        column4_memo_assign(table4_column(table, "NOTE"), longer.data(), static_cast<uint32_t>(longer.size()));
        table4_flush_record(table, 1);
        Dump dump = interop::engine_dump(table);
        table4_close(table);
        return dump;
    }
};

TEST_F(InteropPeer, OurTablesOfEveryTypeReadTheSameInBothPeersForEveryBlockSize) {
    for (int block_size : {64, 512, 1024}) {
        const std::string name = "FULL" + std::to_string(block_size) + ".DBF";
        const Dump ours = write_full_table(name, block_size);
        ASSERT_TRUE(ours.ok) << block_size;
        ASSERT_EQ(ours.live.size(), 6u);
        ASSERT_EQ(ours.deleted.size(), 2u);
        expect_same(ours, interop::peer_dump("dbfread", path(name)), "dbfread, block size " + std::to_string(block_size));
        expect_same(ours, interop::peer_dump("dbf", path(name)), "dbf, block size " + std::to_string(block_size));
    }
}

TEST_F(InteropPeer, OurPlainTableReadsTheSameInBothPeers) {
    const column_info columns[] = {{"CODE", 'C', 8, 0}, {"QTY", 'N', 7, 0}, {"PRICE", 'N', 9, 3},
                                   {"SEEN", 'D', 8, 0}, {"OK", 'L', 1, 0},  {nullptr, 0, 0, 0}};
    table4 *table = table4_create(engine, path("PLAIN.DBF").c_str(), columns, nullptr);
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->version, 3);
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(table4_append_start(table, 0), 0);
        column4_assign(table4_column(table, "CODE"), ("C" + std::to_string(i * 37)).c_str());
        column4_assign_long(table4_column(table, "QTY"), i * i - 100);
        column4_assign_double(table4_column(table, "PRICE"), i * 0.125 - 1);
        column4_assign_julian(table4_column(table, "SEEN"), date4julian("20000101") + i * 17);
        column4_assign_logical(table4_column(table, "OK"), i % 3 == 0);
        if (i % 7 == 0) table4_delete(table);
        ASSERT_EQ(table4_append(table), 0);
    }
    const Dump ours = interop::engine_dump(table);
    table4_close(table);
    expect_same(ours, interop::peer_dump("dbfread", path("PLAIN.DBF")), "dbfread");
    expect_same(ours, interop::peer_dump("dbf", path("PLAIN.DBF")), "dbf");
}

TEST_F(InteropPeer, APackedAndCompressedTableStillReadsTheSame) {
    write_full_table("PACKED.DBF", 64);
    table4 *table = table4_open(engine, path("PACKED.DBF").c_str());
    ASSERT_NE(table, nullptr);
    ASSERT_EQ(table4_pack(table), 0);
    ASSERT_EQ(table4_memo_compress(table), 0);
    ASSERT_EQ(table4_unlock(table), 0);
    const Dump ours = interop::engine_dump(table);
    table4_close(table);
    EXPECT_EQ(ours.deleted.size(), 0u);
    EXPECT_EQ(ours.live.size(), 6u);
    expect_same(ours, interop::peer_dump("dbfread", path("PACKED.DBF")), "dbfread");
    // Compression writes the number 0 into the field of a value that is empty; the other
    // peer cannot read such a field (it writes blanks itself) and is left out here.
}

TEST_F(InteropPeer, TablesThePeerWritesReadTheSameHere) {
    struct Case {
        const char *kind;
        int block_size;
    } cases[] = {{"db3", 0}, {"fp", 0}, {"fp", 64}, {"fp", 512}};
    int made = 0;
    for (const Case &c : cases) {
        const std::string name = "PEER" + std::to_string(++made) + ".DBF";
        Dump theirs = interop::peer_write(c.kind, path(name), c.block_size);
        ASSERT_TRUE(theirs.ok) << theirs.output;
        table4 *table = table4_open(engine, path(name).c_str());
        ASSERT_NE(table, nullptr) << c.kind << " " << engine->error_code;
        if (std::string(c.kind) == "fp") {
            EXPECT_GE(table->memo_file.file.handle, 0);
            if (c.block_size) {
                EXPECT_EQ(table->memo_file.block_size, c.block_size);
            }
        }
        Dump ours = interop::engine_dump(table);
        // The peer's own reading gives the field list.
        const Dump read_back = interop::peer_dump("dbfread", path(name));
        theirs.fields = read_back.fields;
        expect_same(theirs, ours, std::string(c.kind) + " " + std::to_string(c.block_size));

        // A record appended here reads back in the peer.
        engine->err_field = 0;  // only the FoxPro table has a memo field
        ASSERT_EQ(table4_append_start(table, 0), 0);
        table4_blank(table);
        column4_assign(table4_column(table, "NAME"), "Appended");
        column4_assign_double(table4_column(table, "AMOUNT"), 99.5);
        column4_assign_date(table4_column(table, "SEEN"), "20240615");
        column4_assign_logical(table4_column(table, "OK"), 1);
        if (column4 *note = table4_column(table, "NOTE")) {
            column4_memo_assign(note, "appended memo", 13);
        }
        ASSERT_EQ(table4_append(table), 0);
        ours = interop::engine_dump(table);
        table4_close(table);
        expect_same(ours, interop::peer_dump("dbfread", path(name)), std::string("appended, ") + c.kind);
        expect_same(ours, interop::peer_dump("dbf", path(name)), std::string("appended, dbf ") + c.kind);
    }
}

}  // namespace
