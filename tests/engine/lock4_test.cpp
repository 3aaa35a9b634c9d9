// Locks and share modes: byte ranges between opens of this process and of another one,
// the rounds of lock_attempts, and exclusive opens.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "engine_test_support.h"
#include "plat_file.h"

namespace {

using enginetest::BoxCapture;
using enginetest::Engine;
using enginetest::FakeClock;
using nqtest::TempDir;

// A pipe to a forked process, one character at a time.
struct Channel {
    int to_child[2] = {-1, -1};
    int to_parent[2] = {-1, -1};
    Channel() {
        if (::pipe(to_child) != 0 || ::pipe(to_parent) != 0) ADD_FAILURE() << "pipe";
    }
    ~Channel() {
        for (int fd : {to_child[0], to_child[1], to_parent[0], to_parent[1]}) {
            if (fd >= 0) ::close(fd);
        }
    }
    static void send(int fd, char c) {
        if (::write(fd, &c, 1) != 1) _exit(99);
    }
    static char receive(int fd) {
        char c = 0;
        if (::read(fd, &c, 1) != 1) return 0;
        return c;
    }
    void tell_child(char c) { send(to_child[1], c); }
    char hear_child() { return receive(to_parent[0]); }
    void tell_parent(char c) { send(to_parent[1], c); }
    char hear_parent() { return receive(to_child[0]); }
};

int wait_child(pid_t pid) {
    int status = 0;
    if (::waitpid(pid, &status, 0) != pid) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 200;
}

class Lock4 : public ::testing::Test {
protected:
    TempDir dir;
    std::string name = dir.file("LOCKED.DBF");
    void SetUp() override { nqtest::write_file(name, std::string(100, 'x')); }
};

TEST_F(Lock4, TheByteRangesOfTheProtocol) {
    EXPECT_EQ(lock4_file_offset, 0x40000000u);
    EXPECT_EQ(lock4_file_length, 0x3FFFFFFFu);
    EXPECT_EQ(lock4_append_offset, 0x7FFFFFFEu);
    EXPECT_EQ(lock4_record_base, 0x7FFFFFFEu);
    EXPECT_EQ(lock4_position_base, 0x40000000u);
}

TEST_F(Lock4, ASecondOpenInThisProcessGets50AndSucceedsOnceTheFirstUnlocks) {
    Engine first, second;
    second->lock_attempts = 1;
    file4 a, b;
    ASSERT_EQ(file4_open(&a, first, name.c_str(), 0), 0);
    ASSERT_EQ(file4_open(&b, second, name.c_str(), 0), 0);
    ASSERT_EQ(file4_lock(&a, lock4_record_base - 3, 1), 0);
    EXPECT_EQ(file4_lock(&b, lock4_record_base - 3, 1), 50);
    EXPECT_EQ(second->error_code, 0);  // locked is an outcome, not an error
    // Other bytes are free.
    EXPECT_EQ(file4_lock(&b, lock4_record_base - 4, 1), 0);
    EXPECT_EQ(file4_unlock(&a, lock4_record_base - 3, 1), 0);
    EXPECT_EQ(file4_lock(&b, lock4_record_base - 3, 1), 0);
    EXPECT_EQ(file4_unlock(&b, lock4_record_base - 3, 1), 0);
    EXPECT_EQ(file4_unlock(&b, lock4_record_base - 4, 1), 0);
    // The whole-file range covers every record byte of the position scheme.
    EXPECT_EQ(file4_lock(&a, lock4_position_base + 500, 1), 0);
    EXPECT_EQ(file4_unlock(&a, lock4_position_base + 500, 1), 0);
    EXPECT_EQ(file4_lock(&b, lock4_file_offset, lock4_file_length), 0);
    first->lock_attempts = 1;
    EXPECT_EQ(file4_lock(&a, lock4_position_base + 500, 1), 50);
    file4_close(&a);
    file4_close(&b);
}

TEST_F(Lock4, AHandleCannotLockARangeItAlreadyHolds) {
    Engine engine;
    engine->lock_attempts = 1;
    file4 a;
    ASSERT_EQ(file4_open(&a, engine, name.c_str(), 0), 0);
    ASSERT_EQ(file4_lock(&a, lock4_append_offset, 1), 0);
    EXPECT_EQ(file4_lock(&a, lock4_append_offset, 1), 50);
    EXPECT_EQ(file4_unlock(&a, lock4_append_offset, 1), 0);
    EXPECT_EQ(file4_lock(&a, lock4_append_offset, 1), 0);
    file4_close(&a);
}

TEST_F(Lock4, LockAttemptsCountTheRounds) {
    Engine first, second;
    file4 a, b;
    ASSERT_EQ(file4_open(&a, first, name.c_str(), 0), 0);
    ASSERT_EQ(file4_open(&b, second, name.c_str(), 0), 0);
    ASSERT_EQ(file4_lock(&a, lock4_append_offset, 1), 0);
    FakeClock clock;
    second->lock_attempts = 3;
    EXPECT_EQ(file4_lock(&b, lock4_append_offset, 1), 50);
    EXPECT_EQ(FakeClock::pauses(), 2);  // three rounds, a wait between each two
    // 0 is read as 1: one round still.
    FakeClock::pauses() = 0;
    second->lock_attempts = 0;
    EXPECT_EQ(file4_lock(&b, lock4_append_offset, 1), 50);
    EXPECT_EQ(FakeClock::pauses(), 0);
    file4_close(&a);
    file4_close(&b);
}

file4 *g_holder = nullptr;
int g_release_after = 0;

void release_after_some_rounds() {
    if (FakeClock::pauses() == g_release_after) file4_unlock(g_holder, lock4_append_offset, 1);
}

TEST_F(Lock4, MinusOneAttemptsWaitsForEver) {
    Engine first, second;
    file4 a, b;
    ASSERT_EQ(file4_open(&a, first, name.c_str(), 0), 0);
    ASSERT_EQ(file4_open(&b, second, name.c_str(), 0), 0);
    ASSERT_EQ(file4_lock(&a, lock4_append_offset, 1), 0);
    FakeClock clock;
    g_holder = &a;
    g_release_after = 7;
    FakeClock::on_pause() = release_after_some_rounds;
    EXPECT_EQ(second->lock_attempts, -1);
    EXPECT_EQ(file4_lock(&b, lock4_append_offset, 1), 0);
    EXPECT_EQ(FakeClock::pauses(), 7);
    FakeClock::on_pause() = nullptr;
    file4_close(&a);
    file4_close(&b);
}

TEST_F(Lock4, ReadOnlyAndExclusiveFilesLockWithoutAPlatformCall) {
    Engine engine;
    engine->read_only = 1;
    file4 ro;
    ASSERT_EQ(file4_open(&ro, engine, name.c_str(), 0), 0);
    engine->read_only = 0;
    // Another open holds the very byte: a platform call would see it.
    Engine other;
    file4 holder;
    ASSERT_EQ(file4_open(&holder, other, name.c_str(), 0), 0);
    ASSERT_EQ(file4_lock(&holder, lock4_append_offset, 1), 0);
    const auto before = nqplat::file_call_counts();
    EXPECT_EQ(file4_lock(&ro, lock4_append_offset, 1), 0);
    EXPECT_EQ(file4_unlock(&ro, lock4_append_offset, 1), 0);
    const auto after = nqplat::file_call_counts();
    EXPECT_EQ(after.locks, before.locks);
    EXPECT_EQ(after.unlocks, before.unlocks);
    file4_close(&ro);
    file4_close(&holder);

    const std::string alone = dir.file("ALONE.DBF");
    nqtest::write_file(alone, "");
    engine->exclusive = 1;
    file4 ex;
    ASSERT_EQ(file4_open(&ex, engine, alone.c_str(), 0), 0);
    const auto before2 = nqplat::file_call_counts();
    EXPECT_EQ(file4_lock(&ex, 0, 1), 0);
    EXPECT_EQ(file4_unlock(&ex, 5, 1), 0);
    EXPECT_EQ(nqplat::file_call_counts().locks, before2.locks);
    EXPECT_EQ(nqplat::file_call_counts().unlocks, before2.unlocks);
    file4_close(&ex);
}

TEST_F(Lock4, LocksTurnTheWriteDelayOnAndUnlocksOff) {
    Engine engine;
    ASSERT_EQ(engine4_cache_start(engine), 0);
    file4 a;
    ASSERT_EQ(file4_open(&a, engine, name.c_str(), 0), 0);
    ASSERT_EQ(file4_cache_type(&a, 1, 1), 0);
    EXPECT_EQ(a.write_mode, 0);
    ASSERT_EQ(file4_lock(&a, lock4_append_offset, 1), 0);
    EXPECT_EQ(a.write_delay, 0);  // write mode off: no delay
    ASSERT_EQ(file4_unlock(&a, lock4_append_offset, 1), 0);
    ASSERT_EQ(file4_write_mode(&a, 1), 0);
    EXPECT_EQ(a.write_delay, 0);  // a shared file delays only under a lock
    ASSERT_EQ(file4_lock(&a, lock4_append_offset, 1), 0);
    EXPECT_EQ(a.write_delay, 1);
    ASSERT_EQ(file4_unlock(&a, lock4_append_offset, 1), 0);
    EXPECT_EQ(a.write_delay, 0);
    file4_close(&a);
}

TEST_F(Lock4, AFailureOtherThanALockedRangeIsMinus50) {
    Engine engine;
    BoxCapture boxes;
    file4 a;
    ASSERT_EQ(file4_open(&a, engine, name.c_str(), 1), 0);
    const int32_t handle = a.handle;
    a.handle = 123456;  // no such handle
    EXPECT_EQ(file4_lock(&a, lock4_append_offset, 1), -50);
    EXPECT_EQ(boxes.last().text, "Error #:  -50\nLocking File\n" + name + "\n");
    EXPECT_EQ(engine->error_code, -50);
    engine->error_code = 0;
    a.handle = handle;
    file4_close(&a);
}

TEST_F(Lock4, UnlockingGoesOnAfterAFailure) {
    Engine engine, other;
    other->lock_attempts = 1;
    file4 a, b;
    ASSERT_EQ(file4_open(&a, engine, name.c_str(), 0), 0);
    ASSERT_EQ(file4_open(&b, other, name.c_str(), 0), 0);
    ASSERT_EQ(file4_lock(&a, lock4_append_offset, 1), 0);
    engine->error_code = -70;
    EXPECT_EQ(file4_lock(&a, lock4_record_base - 1, 1), -1);  // no new locks
    EXPECT_EQ(file4_unlock(&a, lock4_append_offset, 1), 0);   // but the old one goes
    EXPECT_EQ(engine->error_code, -70);
    EXPECT_EQ(file4_lock(&b, lock4_append_offset, 1), 0);
    engine->error_code = 0;
    file4_close(&a);
    file4_close(&b);
}

TEST_F(Lock4, UnlockingARangeNotHeldIsMinus110) {
    Engine engine;
    BoxCapture boxes;
    file4 a;
    ASSERT_EQ(file4_open(&a, engine, name.c_str(), 1), 0);
    EXPECT_EQ(file4_unlock(&a, lock4_append_offset, 1), -110);
    EXPECT_EQ(boxes.last().text, "Error #: -110\nUnlocking File\n" + name + "\n");
    engine->error_code = 0;
    // Only the range as it was locked can be released.
    ASSERT_EQ(file4_lock(&a, 100, 10), 0);
    EXPECT_EQ(file4_unlock(&a, 100, 5), -110);
    engine->error_code = 0;
    EXPECT_EQ(file4_unlock(&a, 100, 10), 0);
    file4_close(&a);
}

TEST_F(Lock4, ASecondProcessGets50AndSucceedsOnceTheFirstUnlocks) {
    Channel channel;
    const pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        engine4 *engine = engine4_new(1);
        file4 held;
        if (file4_open(&held, engine, name.c_str(), 0) != 0) _exit(10);
        if (file4_lock(&held, lock4_record_base - 1, 1) != 0) _exit(11);
        channel.tell_parent('L');
        if (channel.hear_parent() != 'U') _exit(12);
        if (file4_unlock(&held, lock4_record_base - 1, 1) != 0) _exit(13);
        channel.tell_parent('D');
        if (channel.hear_parent() != 'Q') _exit(14);
        file4_close(&held);
        _exit(0);
    }
    ASSERT_EQ(channel.hear_child(), 'L');
    Engine engine;
    engine->lock_attempts = 1;
    file4 mine;
    ASSERT_EQ(file4_open(&mine, engine, name.c_str(), 0), 0);
    EXPECT_EQ(file4_lock(&mine, lock4_record_base - 1, 1), 50);
    EXPECT_EQ(file4_lock(&mine, lock4_record_base - 2, 1), 0);
    channel.tell_child('U');
    ASSERT_EQ(channel.hear_child(), 'D');
    EXPECT_EQ(file4_lock(&mine, lock4_record_base - 1, 1), 0);
    channel.tell_child('Q');
    EXPECT_EQ(wait_child(pid), 0);
    file4_close(&mine);
}

TEST_F(Lock4, ThisProcessHoldsAndTheOtherWaits) {
    Engine engine;
    file4 mine;
    ASSERT_EQ(file4_open(&mine, engine, name.c_str(), 0), 0);
    ASSERT_EQ(file4_lock(&mine, lock4_file_offset, lock4_file_length), 0);
    Channel channel;
    const pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        engine4 *child = engine4_new(1);
        child->lock_attempts = 1;
        file4 other;
        if (file4_open(&other, child, name.c_str(), 0) != 0) _exit(10);
        const int first = file4_lock(&other, lock4_position_base + 40, 1);
        channel.tell_parent(first == 50 ? 'B' : 'X');
        if (channel.hear_parent() != 'U') _exit(12);
        const int second = file4_lock(&other, lock4_position_base + 40, 1);
        file4_close(&other);
        _exit(second == 0 ? 0 : 13);
    }
    EXPECT_EQ(channel.hear_child(), 'B');
    ASSERT_EQ(file4_unlock(&mine, lock4_file_offset, lock4_file_length), 0);
    channel.tell_child('U');
    EXPECT_EQ(wait_child(pid), 0);
    file4_close(&mine);
}

TEST_F(Lock4, AnExclusiveOpenRefusesAnOpenInAnotherProcess) {
    Engine engine;
    engine->exclusive = 1;
    file4 mine;
    ASSERT_EQ(file4_open(&mine, engine, name.c_str(), 0), 0);
    const pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        engine4 *child = engine4_new(1);
        child->err_open = 0;
        child->off_error = 1;
        file4 other;
        const int shared = file4_open(&other, child, name.c_str(), 0);
        child->exclusive = 1;
        const int exclusive = file4_open(&other, child, name.c_str(), 0);
        _exit(shared == 70 && exclusive == 70 ? 0 : 1);
    }
    EXPECT_EQ(wait_child(pid), 0);
    file4_close(&mine);
    // Once it is closed the other process gets in.
    const pid_t again = ::fork();
    ASSERT_GE(again, 0);
    if (again == 0) {
        engine4 *child = engine4_new(1);
        file4 other;
        _exit(file4_open(&other, child, name.c_str(), 0) == 0 ? 0 : 1);
    }
    EXPECT_EQ(wait_child(again), 0);
}

TEST_F(Lock4, AnExclusiveOpenRefusesASecondOpenInThisProcess) {
    Engine first, second;
    BoxCapture boxes;
    first->exclusive = 1;
    file4 a, b;
    ASSERT_EQ(file4_open(&a, first, name.c_str(), 0), 0);
    EXPECT_EQ(file4_open(&b, second, name.c_str(), 0), -60);
    EXPECT_EQ(boxes.last().text, "Error #:  -60\nOpening File\nFile Name:\n" + name + "\n");
    second->error_code = 0;
    // Even the same engine cannot open it twice.
    first->err_open = 0;
    EXPECT_EQ(file4_open(&b, first, name.c_str(), 0), 70);
    first->error_code = 0;
    // Nor may a create that would truncate it.
    second->safety = 0;
    second->err_create = 0;
    EXPECT_EQ(file4_create(&b, second, name.c_str(), 0), 60);
    second->error_code = 0;
    EXPECT_EQ(nqtest::read_file(name), std::string(100, 'x'));
    file4_close(&a);
    EXPECT_EQ(file4_open(&b, second, name.c_str(), 0), 0);
    file4_close(&b);
}

TEST_F(Lock4, ASharedOpenKeepsAnExclusiveOneOut) {
    Engine shared, alone;
    file4 a, b;
    ASSERT_EQ(file4_open(&a, shared, name.c_str(), 0), 0);
    file4 c;
    ASSERT_EQ(file4_open(&c, shared, name.c_str(), 0), 0);  // shared opens live together
    alone->exclusive = 1;
    alone->err_open = 0;
    EXPECT_EQ(file4_open(&b, alone, name.c_str(), 0), 70);
    file4_close(&a);
    file4_close(&c);
    alone->error_code = 0;
    EXPECT_EQ(file4_open(&b, alone, name.c_str(), 0), 0);
    file4_close(&b);
}

TEST_F(Lock4, AReadOnlyExclusiveOpenStillKeepsOthersOut) {
    Engine reader, other;
    BoxCapture boxes;
    reader->exclusive = 1;
    reader->read_only = 1;
    file4 a, b;
    ASSERT_EQ(file4_open(&a, reader, name.c_str(), 0), 0);
    EXPECT_EQ(a.is_read_only, 1);
    other->err_open = 0;
    EXPECT_EQ(file4_open(&b, other, name.c_str(), 0), 70);
    EXPECT_EQ(file4_write(&a, 0, "x", 1), -930);  // the handle refuses writes all the same
    reader->error_code = 0;
    file4_close(&a);
}

}  // namespace
