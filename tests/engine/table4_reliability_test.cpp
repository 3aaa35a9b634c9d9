// Several processes on one table: appenders under the record and append locks leave every
// record present once and a header that agrees; a writer killed in the middle of its appends
// leaves a table that opens with a count and records that agree.
#include <gtest/gtest.h>

#include <sched.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "table4_test_support.h"

namespace {

using tabletest::le32;

constexpr int kWriters = 4;
constexpr int kAppendsEach = 2000;

// In the forked writers a lock round waits only a moment: the clock moves with each pause.
int64_t g_ticks = 0;
int64_t ticking_clock() { return g_ticks; }
void short_pause() {
    ++g_ticks;
    sched_yield();
}

const column_info kColumns[] = {{"WRITER", 'N', 2, 0}, {"SEQ", 'N', 6, 0}, {"TEXT", 'C', 12, 0}, {nullptr, 0, 0, 0}};
const column_info kMemoColumns[] = {
    {"WRITER", 'N', 2, 0}, {"SEQ", 'N', 6, 0}, {"NOTE", 'M', 10, 0}, {nullptr, 0, 0, 0}};

// The memo value a writer gives its n-th record: its own marks, of a length that varies.
std::string memo_value(int writer, int seq) {
    const std::string mark = "w" + std::to_string(writer) + "s" + std::to_string(seq) + ";";
    std::string value;
    const size_t length = static_cast<size_t>((seq * 37 + writer * 101) % 700 + 1);
    while (value.size() < length) value += mark;
    value.resize(length);
    return value;
}

// One writer's work; the process's exit status says how it went.
[[noreturn]] void append_as(const std::string &name, int writer, int count, bool memos, int signal_fd = -1,
                            int signal_after = -1) {
    u4set_clock(ticking_clock);
    u4set_pause(short_pause);
    engine4 *engine = engine4_new(1);
    engine->off_error = 1;
    table4 *table = table4_open(engine, name.c_str());
    if (!table) _exit(10);
    column4 *writer_column = table4_column(table, "WRITER");
    column4 *seq_column = table4_column(table, "SEQ");
    column4 *third = table4_column_j(table, 3);
    for (int seq = 1; count < 0 || seq <= count; ++seq) {
        if (table4_append_start(table, 0) != 0) _exit(11);
        table4_blank(table);
        column4_assign_long(writer_column, writer);
        column4_assign_long(seq_column, seq);
        if (memos) {
            const std::string value = memo_value(writer, seq);
            if (column4_memo_assign(third, value.data(), static_cast<uint32_t>(value.size())) != 0) _exit(12);
        } else {
            column4_assign(third, ("text" + std::to_string(seq)).c_str());
        }
        if (table4_append(table) != 0) _exit(13);
        if (seq == signal_after) {
            char c = 's';
            if (::write(signal_fd, &c, 1) != 1) _exit(14);
        }
    }
    if (table4_close(table) != 0) _exit(15);
    engine4_end(engine);
    _exit(0);
}

class Table4Reliability : public tabletest::TableTest {
protected:
    void run_writers(const std::string &name, bool memos) {
        std::vector<pid_t> pids;
        for (int w = 1; w <= kWriters; ++w) {
            const pid_t pid = ::fork();
            ASSERT_GE(pid, 0);
            if (pid == 0) append_as(name, w, kAppendsEach, memos);
            pids.push_back(pid);
        }
        for (pid_t pid : pids) {
            int status = 0;
            ASSERT_EQ(::waitpid(pid, &status, 0), pid);
            ASSERT_TRUE(WIFEXITED(status));
            EXPECT_EQ(WEXITSTATUS(status), 0);
        }
    }

    // Every (writer, seq) of the table, each checked to be there once.
    void expect_each_once(table4 *table, int writers, int each, bool memos) {
        std::set<std::pair<int, int>> seen;
        std::vector<int> last(writers + 1, 0);
        for (int n = 1; n <= table4_count(table); ++n) {
            ASSERT_EQ(table4_go(table, n), 0) << n;
            const int writer = column4_long(table4_column(table, "WRITER"));
            const int seq = column4_long(table4_column(table, "SEQ"));
            ASSERT_GE(writer, 1);
            ASSERT_LE(writer, writers);
            EXPECT_TRUE(seen.insert({writer, seq}).second) << writer << "/" << seq;
            // Each writer's records come in its own order.
            EXPECT_EQ(seq, last[writer] + 1) << "record " << n;
            last[writer] = seq;
            if (memos) {
                ASSERT_EQ(memo(table, "NOTE"), memo_value(writer, seq)) << n;
            }
        }
        EXPECT_EQ(seen.size(), static_cast<size_t>(writers * each));
    }
};

TEST_F(Table4Reliability, FourAppendingProcessesLeaveEveryRecordOnceAndAConsistentHeader) {
    table4 *table = create("SHARED.DBF", kColumns);
    ASSERT_NE(table, nullptr);
    const std::string name = table->file.name;
    ASSERT_EQ(table4_close(table), 0);
    run_writers(name, false);

    const std::string file = bytes("SHARED.DBF");
    const uint32_t width = 1 + 2 + 6 + 12;
    EXPECT_EQ(le32(file, 4), static_cast<uint32_t>(kWriters * kAppendsEach));
    ASSERT_EQ(file.size(), 129u + kWriters * kAppendsEach * width + 1);
    EXPECT_EQ(file.back(), '\x1A');
    table = open("SHARED.DBF");
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table4_count(table), kWriters * kAppendsEach);
    expect_each_once(table, kWriters, kAppendsEach, false);
    table4_close(table);
}

TEST_F(Table4Reliability, FourAppendingProcessesWithMemosKeepEveryValueWhole) {
    engine->memo_block_default = 64;
    table4 *table = create("MEMOS.DBF", kMemoColumns);
    ASSERT_NE(table, nullptr);
    const std::string name = table->file.name;
    ASSERT_EQ(table4_close(table), 0);
    run_writers(name, true);

    table = open("MEMOS.DBF");
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table4_count(table), kWriters * kAppendsEach);
    expect_each_once(table, kWriters, kAppendsEach, true);
    // The next free block lies behind every value.
    const std::string memo_file = bytes("MEMOS.FPT");
    EXPECT_EQ(tabletest::be32(memo_file, 0) * 64u, (memo_file.size() + 63) / 64 * 64);
    table4_close(table);
}

TEST_F(Table4Reliability, AWriterKilledInTheMiddleOfItsAppendsLeavesATableThatAgrees) {
    table4 *table = create("KILLED.DBF", kMemoColumns);
    ASSERT_NE(table, nullptr);
    const std::string name = table->file.name;
    ASSERT_EQ(table4_close(table), 0);
    int signal[2];
    ASSERT_EQ(::pipe(signal), 0);
    const pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) append_as(name, 1, -1, true, signal[1], 700);
    char c = 0;
    ASSERT_EQ(::read(signal[0], &c, 1), 1);
    ::kill(pid, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFSIGNALED(status));
    ::close(signal[0]);
    ::close(signal[1]);

    table = open("KILLED.DBF");
    ASSERT_NE(table, nullptr);
    const int32_t count = table4_count(table);
    EXPECT_GE(count, 700);
    // The header never counts a record the file does not hold.
    EXPECT_GE(bytes("KILLED.DBF").size(), 129u + static_cast<size_t>(count) * 19);
    for (int n = 1; n <= count; ++n) {
        ASSERT_EQ(table4_go(table, n), 0) << n;
        EXPECT_EQ(column4_long(table4_column(table, "SEQ")), n);
        ASSERT_EQ(memo(table, "NOTE"), memo_value(1, n)) << n;
    }
    // The table goes on: the locks died with the writer.
    engine->lock_attempts = 1;
    ASSERT_EQ(table4_append_start(table, 0), 0);
    column4_assign_long(table4_column(table, "WRITER"), 2);
    column4_assign_long(table4_column(table, "SEQ"), count + 1);
    ASSERT_EQ(column4_memo_assign(table4_column(table, "NOTE"), "after", 5), 0);
    ASSERT_EQ(table4_append(table), 0);
    EXPECT_EQ(table4_count(table), count + 1);
    ASSERT_EQ(table4_go(table, count + 1), 0);
    EXPECT_EQ(memo(table, "NOTE"), "after");
    table4_close(table);
}

}  // namespace
