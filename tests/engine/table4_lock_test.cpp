// The locks of a table: one record by either scheme, groups, the append byte, the whole file,
// everything, and unlocking; between two opens of this process and between processes.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "plat_file.h"
#include "table4_test_support.h"

namespace {

using enginetest::Engine;
using enginetest::FakeClock;

class Table4Lock : public tabletest::TableTest {
protected:
    table4 *table = nullptr;
    Engine other_engine;
    table4 *other = nullptr;
    void SetUp() override {
        table = create("L.DBF");
        ASSERT_NE(table, nullptr);
        for (int i = 1; i <= 4; ++i) ASSERT_EQ(append_row(table, "R", i, "20000101", true), 0);
        ASSERT_EQ(table4_unlock(table), 0);
        other_engine->lock_attempts = 1;
        other = table4_open(other_engine, table->file.name);
        ASSERT_NE(other, nullptr);
    }
    void TearDown() override {
        if (other) table4_close(other);
        if (table) table4_close(table);
    }
    // Whether the other open can take a byte now (and gives it back at once).
    bool free_byte(uint32_t offset, uint32_t length = 1) {
        if (file4_lock(&other->file, offset, length) != 0) return false;
        file4_unlock(&other->file, offset, length);
        return true;
    }
};

TEST_F(Table4Lock, ARecordLockTakesItsByteByThePositionScheme) {
    ASSERT_EQ(table4_lock(table, 3), 0);
    const uint32_t byte = 0x40000000u + 161 + 2 * 28;
    EXPECT_EQ(table4_record_lock_offset(table, 3), byte);
    EXPECT_FALSE(free_byte(byte));
    EXPECT_TRUE(free_byte(byte - 28));
    EXPECT_TRUE(table4_lock_test(table, 3));
    EXPECT_FALSE(table4_lock_test(table, 2));
    EXPECT_EQ(table->locks_held, 1u);
    EXPECT_EQ(table->locks[0], 3);
    // Locking it again costs nothing.
    const auto before = nqplat::file_call_counts();
    EXPECT_EQ(table4_lock(table, 3), 0);
    EXPECT_EQ(nqplat::file_call_counts().locks, before.locks);
    // Another record replaces it.
    ASSERT_EQ(table4_lock(table, 1), 0);
    EXPECT_TRUE(free_byte(byte));
    EXPECT_EQ(table->locks_held, 1u);
    EXPECT_EQ(table4_lock(other, 1), 50);
    EXPECT_EQ(table4_lock(table, 0), -1);
    EXPECT_EQ(table4_lock(table, -2), -1);
}

TEST_F(Table4Lock, WithTheProductionFlagARecordLocksTheByteBelowTheAppendByte) {
    table->has_production = 1;
    EXPECT_EQ(table4_record_lock_offset(table, 1), 0x7FFFFFFDu);
    ASSERT_EQ(table4_lock(table, 7), 0);
    EXPECT_FALSE(free_byte(0x7FFFFFFEu - 7));
    ASSERT_EQ(table4_unlock(table), 0);
    EXPECT_TRUE(free_byte(0x7FFFFFFEu - 7));
    table->has_production = 0;
}

TEST_F(Table4Lock, AGroupLocksEveryRecordOrNone) {
    const int32_t numbers[] = {1, 3, 4};
    ASSERT_EQ(table4_lock_group(table, numbers, 3), 0);
    EXPECT_EQ(table->locks_held, 3u);
    EXPECT_EQ(table->locks_capacity, 3u);
    EXPECT_NE(table->locks, &table->single_lock);
    for (int32_t n : numbers) EXPECT_TRUE(table4_lock_test(table, n));
    EXPECT_FALSE(table4_lock_test(table, 2));
    ASSERT_EQ(table4_unlock(table), 0);
    EXPECT_EQ(table->locks_held, 0u);
    // The other holds record 4: the group fails whole and keeps nothing.
    ASSERT_EQ(table4_lock(other, 4), 0);
    engine->lock_attempts = 2;
    FakeClock clock;
    EXPECT_EQ(table4_lock_group(table, numbers, 3), 50);
    EXPECT_EQ(FakeClock::pauses(), 1);  // two rounds
    EXPECT_EQ(table->locks_held, 0u);
    EXPECT_TRUE(free_byte(table4_record_lock_offset(table, 1)));
    EXPECT_EQ(engine->lock_attempts, 2);
}

TEST_F(Table4Lock, AGroupWaitsForAReleaseWhenAttemptsAreUnlimited) {
    ASSERT_EQ(table4_lock(other, 2), 0);
    FakeClock clock;
    static table4 *holder;
    holder = other;
    FakeClock::on_pause() = [] {
        if (FakeClock::pauses() == 3) table4_unlock(holder);
    };
    const int32_t numbers[] = {1, 2};
    EXPECT_EQ(table4_lock_group(table, numbers, 2), 0);
    EXPECT_EQ(FakeClock::pauses(), 3);
    FakeClock::on_pause() = nullptr;
    EXPECT_EQ(table->locks_held, 2u);
}

TEST_F(Table4Lock, AGroupOnAFileLockedOrExclusiveTableIsFree) {
    ASSERT_EQ(table4_lock_file(table), 0);
    const int32_t numbers[] = {1, 2};
    const auto before = nqplat::file_call_counts();
    EXPECT_EQ(table4_lock_group(table, numbers, 2), 0);
    EXPECT_EQ(nqplat::file_call_counts().locks, before.locks);
    EXPECT_EQ(table->locks_held, 0u);
    EXPECT_TRUE(table4_lock_test(table, 2));
}

TEST_F(Table4Lock, AGroupThatCannotGetMemoryIsMinus920) {
    std::vector<int32_t> numbers = {1, 2, 3};
    mem4_set_fail_hook([](size_t) { return 1; });
    EXPECT_EQ(table4_lock_group(table, numbers.data(), 3), -920);
    mem4_set_fail_hook(nullptr);
    EXPECT_EQ(table->locks, &table->single_lock);
    EXPECT_EQ(table->locks_capacity, 1u);
    engine->error_code = 0;
    EXPECT_EQ(table4_lock_group(table, nullptr, 2), -1);
    EXPECT_EQ(table4_lock_group(table, numbers.data(), -1), -1);
    EXPECT_EQ(table4_lock_group(table, numbers.data(), 0), 0);
}

TEST_F(Table4Lock, TheAppendLockTakesItsByteAndLetsRecordLocksGo) {
    ASSERT_EQ(table4_lock(table, 2), 0);
    ASSERT_EQ(table4_lock_append(table), 0);
    EXPECT_EQ(table->append_locked, 1);
    EXPECT_EQ(table->locks_held, 0u);
    EXPECT_FALSE(free_byte(0x7FFFFFFEu));
    EXPECT_EQ(table4_lock_append(table), 0);  // held already
    EXPECT_EQ(table4_lock_append(other), 50);
    ASSERT_EQ(table4_count(table), 4);
    EXPECT_EQ(table->record_count, 4);  // the append lock makes the count trusted
    ASSERT_EQ(table4_unlock(table), 0);
    EXPECT_EQ(table->append_locked, 0);
    EXPECT_EQ(table->record_count, -1);
    EXPECT_TRUE(free_byte(0x7FFFFFFEu));
}

TEST_F(Table4Lock, TheFileLockCoversEverythingAndIsTakenOverOwnSmallerLocks) {
    ASSERT_EQ(table4_lock(table, 2), 0);
    ASSERT_EQ(table4_lock_append(table), 0);
    ASSERT_EQ(table4_lock_file(table), 0);
    EXPECT_EQ(table->file_locked, 1);
    EXPECT_EQ(table->append_locked, 0);
    EXPECT_EQ(table->locks_held, 0u);
    EXPECT_TRUE(table4_lock_test(table, 3));
    EXPECT_EQ(table4_lock(table, 3), 0);
    EXPECT_EQ(table->locks_held, 0u);
    EXPECT_EQ(table4_lock_append(table), 0);
    EXPECT_EQ(table->append_locked, 0);
    EXPECT_EQ(table4_lock(other, 1), 50);
    EXPECT_EQ(table4_lock_append(other), 50);
    EXPECT_EQ(table4_lock_file(other), 50);
    EXPECT_EQ(table4_lock_file(table), 0);
    table->record_number_old = 3;
    table->memo_validated = 1;
    ASSERT_EQ(table4_unlock(table), 0);
    EXPECT_EQ(table->file_locked, 0);
    EXPECT_EQ(table->record_number_old, -1);
    EXPECT_EQ(table->memo_validated, 0);
    EXPECT_EQ(table4_lock_file(other), 0);
}

TEST_F(Table4Lock, AFileLockWaitsForARecordLockOfAnother) {
    ASSERT_EQ(table4_lock(other, 2), 0);
    engine->lock_attempts = 3;
    FakeClock clock;
    EXPECT_EQ(table4_lock_file(table), 50);
    EXPECT_EQ(FakeClock::pauses(), 2);
    EXPECT_EQ(table->file_locked, 0);
}

TEST_F(Table4Lock, LockAllTakesFileMemoAndIndexAndGivesUpOnFailure) {
    table4 *memo_table = create("M.DBF", tabletest::memo_columns());
    ASSERT_NE(memo_table, nullptr);
    ASSERT_EQ(table4_lock_all(memo_table), 0);
    EXPECT_EQ(memo_table->file_locked, 1);
    EXPECT_EQ(memo_table->memo_file.file_locked, 1);
    ASSERT_EQ(table4_unlock(memo_table), 0);
    EXPECT_EQ(memo_table->file_locked, 0);
    EXPECT_EQ(memo_table->memo_file.file_locked, 0);
    table4_close(memo_table);
    ASSERT_EQ(table4_lock_all(table), 0);
    EXPECT_EQ(table->file_locked, 1);
    ASSERT_EQ(table4_unlock(table), 0);
    EXPECT_EQ(table4_lock_index(table), 0);  // no index files: nothing to take
    EXPECT_EQ(table4_locked_all_index(table), 1);
}

TEST_F(Table4Lock, ExclusiveAndReadOnlyTablesLockWithoutAskingTheSystem) {
    table4_close(other);
    other = nullptr;
    table4_close(table);
    table = nullptr;
    engine->exclusive = 1;
    table = open("L.DBF");
    ASSERT_NE(table, nullptr);
    const auto before = nqplat::file_call_counts();
    EXPECT_EQ(table4_lock(table, 2), 0);
    EXPECT_EQ(table->locks_held, 0u);
    EXPECT_EQ(table4_lock_file(table), 0);
    EXPECT_EQ(table->file_locked, 0);
    EXPECT_EQ(table4_lock_append(table), 0);
    EXPECT_EQ(table4_lock_all(table), 0);
    EXPECT_TRUE(table4_lock_test(table, 99));
    EXPECT_EQ(table4_unlock(table), 0);
    EXPECT_EQ(nqplat::file_call_counts().locks, before.locks);
    EXPECT_EQ(nqplat::file_call_counts().unlocks, before.unlocks);
}

TEST_F(Table4Lock, UnlockWritesAChangedRecordFirst) {
    ASSERT_EQ(table4_go(table, 2), 0);
    column4_assign(table4_column(table, "NAME"), "Two");
    ASSERT_EQ(table4_unlock(table), 0);
    EXPECT_EQ(table->record_changed, 0);
    ASSERT_EQ(table4_go(other, 2), 0);
    EXPECT_EQ(field(other, "NAME"), "Two       ");
}

TEST_F(Table4Lock, UnlockGoesOnAfterAFailure) {
    ASSERT_EQ(table4_lock(table, 2), 0);
    ASSERT_EQ(table4_lock_append(table), 0);
    engine->error_code = -70;
    EXPECT_EQ(table4_unlock(table), -1);
    EXPECT_EQ(table->append_locked, 0);
    EXPECT_TRUE(free_byte(0x7FFFFFFEu));
    engine->error_code = 0;
    EXPECT_EQ(table4_unlock(nullptr), -1);
}

TEST_F(Table4Lock, LockFunctionsRefuseAnEngineInError) {
    engine->error_code = -1;
    EXPECT_EQ(table4_lock(table, 1), -1);
    EXPECT_EQ(table4_lock_append(table), -1);
    EXPECT_EQ(table4_lock_file(table), -1);
    EXPECT_EQ(table4_lock_all(table), -1);
    EXPECT_EQ(table4_lock_index(table), -1);
    const int32_t one = 1;
    EXPECT_EQ(table4_lock_group(table, &one, 1), -1);
    engine->error_code = 0;
    EXPECT_EQ(table->locks_held, 0u);
}

TEST_F(Table4Lock, ARecordLockedInAnotherProcessGives50HereAndFreesWhenItEnds) {
    int ready[2], done[2];
    ASSERT_EQ(::pipe(ready), 0);
    ASSERT_EQ(::pipe(done), 0);
    std::string name = table->file.name;
    const pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        engine4 *child = engine4_new(1);
        child->off_error = 1;
        table4 *mine = table4_open(child, name.c_str());
        int status = (mine && table4_lock(mine, 3) == 0) ? 0 : 1;
        char c = 'r';
        if (::write(ready[1], &c, 1) != 1) _exit(3);
        if (::read(done[0], &c, 1) != 1) _exit(4);
        _exit(status);
    }
    char c = 0;
    ASSERT_EQ(::read(ready[0], &c, 1), 1);
    engine->lock_attempts = 1;
    EXPECT_EQ(table4_lock(table, 3), 50);
    EXPECT_EQ(table4_lock(table, 2), 0);
    c = 'd';
    ASSERT_EQ(::write(done[1], &c, 1), 1);
    int status = 0;
    ASSERT_EQ(::waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(table4_lock(table, 3), 0);  // the lock ended with the process
    for (int fd : {ready[0], ready[1], done[0], done[1]}) ::close(fd);
}

}  // namespace
