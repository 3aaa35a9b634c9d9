// The memory manager's slots, its null rules and its failure text. The slots cannot be put
// back to the runtime's functions once replaced, so this program installs one counting
// manager for all its tests and steers it through globals.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "../config_test.h"
#include "../msg_test.h"
#include "nq_tls20an.h"

namespace nq {
const nq_wchar *memory_failure_text();
}

namespace {

struct Counts {
    int allocate = 0, resize = 0, clear = 0, release = 0;
    bool fail = false;
    size_t lastSize = 0, lastCount = 0;
    void *lastBlock = nullptr;
};
Counts g;

void *count_allocate(size_t size) {
    ++g.allocate;
    g.lastSize = size;
    return g.fail ? nullptr : std::malloc(size ? size : 1);
}
void *count_resize(void *block, size_t size) {
    ++g.resize;
    g.lastSize = size;
    g.lastBlock = block;
    if (g.fail) return nullptr;
    if (size == 0) {
        std::free(block);  // the runtime's own choice for size 0; the null result still counts as failure
        return nullptr;
    }
    return std::realloc(block, size);
}
void *count_clear(size_t count, size_t size) {
    ++g.clear;
    g.lastCount = count;
    g.lastSize = size;
    return g.fail ? nullptr : std::calloc(count, size);
}
void count_release(void *block) {
    ++g.release;
    g.lastBlock = block;
    std::free(block);
}

using nqmt::S;

std::u16string failure() { return nq::memory_failure_text(); }

class Memory : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        nq_MemoryManager_set(count_allocate, count_resize, count_clear, count_release);
        // The failure texts ask the message system for their words; its first message settles
        // the language, here English from an empty configuration, before any request fails.
        nqmt::Scene english;
        nq_Msg("", "TOOL", 1);
    }
    void SetUp() override { g = Counts{}; }
};

}  // namespace

TEST_F(Memory, MallocGoesThroughTheAllocateSlot) {
    void *block = nq_Malloc(24);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(g.allocate, 1);
    EXPECT_EQ(g.lastSize, 24u);
    nq_Free(block);
    EXPECT_EQ(g.release, 1);
    EXPECT_EQ(g.lastBlock, block);
}

TEST_F(Memory, CallocGivesZeroedBlockFromItsSlot) {
    auto *block = static_cast<unsigned char *>(nq_Calloc(4, 8));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(g.clear, 1);
    EXPECT_EQ(g.lastCount, 4u);
    EXPECT_EQ(g.lastSize, 8u);
    for (int i = 0; i < 32; ++i) EXPECT_EQ(block[i], 0);
    nq_Free(block);
}

TEST_F(Memory, ReallocOfLiveBlockUsesResizeSlot) {
    auto *block = static_cast<char *>(nq_Malloc(4));
    block[0] = 'x';
    auto *moved = static_cast<char *>(nq_Realloc(block, 4000));
    ASSERT_NE(moved, nullptr);
    EXPECT_EQ(g.resize, 1);
    EXPECT_EQ(moved[0], 'x');
    nq_Free(moved);
}

TEST_F(Memory, ReallocOfNullBehavesAsMalloc) {
    void *block = nq_Realloc(nullptr, 16);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(g.allocate, 1);
    EXPECT_EQ(g.resize, 0);
    nq_Free(block);
}

TEST_F(Memory, FreeOfNullCallsNoSlot) {
    nq_Free(nullptr);
    EXPECT_EQ(g.release, 0);
}

TEST_F(Memory, MallocOfZeroReturnsWhatTheSlotGives) {
    void *block = nq_Malloc(0);
    EXPECT_NE(block, nullptr);  // this slot gives a block for 0
    EXPECT_EQ(g.allocate, 1);
    nq_Free(block);
}

TEST_F(Memory, FailedMallocComposesAllocateText) {
    g.fail = true;
    EXPECT_EQ(nq_Malloc(1234), nullptr);
    EXPECT_EQ(failure(), u"Unable to allocate 1234 bytes of memory");
    EXPECT_EQ(g.allocate, 1);  // no retry
}

TEST_F(Memory, FailedCallocReportsElementSizeOnly) {
    g.fail = true;
    EXPECT_EQ(nq_Calloc(10, 7), nullptr);
    EXPECT_EQ(failure(), u"Unable to callocate 7 bytes of memory");
}

TEST_F(Memory, FailedReallocComposesReallocateText) {
    void *block = nq_Malloc(8);
    g.fail = true;
    EXPECT_EQ(nq_Realloc(block, 99), nullptr);
    EXPECT_EQ(failure(), u"Unable to re-allocate 99 bytes of memory");
    g.fail = false;
    nq_Free(block);
}

TEST_F(Memory, ReallocOfNullThatFailsComposesAllocateText) {
    g.fail = true;
    EXPECT_EQ(nq_Realloc(nullptr, 55), nullptr);
    EXPECT_EQ(failure(), u"Unable to allocate 55 bytes of memory");
}

TEST_F(Memory, ReallocToZeroCountsNullResultAsFailure) {
    void *block = nq_Malloc(8);
    EXPECT_EQ(nq_Realloc(block, 0), nullptr);  // the slot released the block itself
    EXPECT_EQ(failure(), u"Unable to re-allocate 0 bytes of memory");
}

TEST_F(Memory, RuntimeFunctionDoesNotReplaceHostSlot) {
    nq_MemoryManager_set(std::malloc, std::realloc, std::calloc, std::free);
    void *block = nq_Malloc(3);
    EXPECT_EQ(g.allocate, 1);  // still the counting function
    nq_Free(block);
    EXPECT_EQ(g.release, 1);
}

TEST_F(Memory, StatisticsAndClearDoNothing) {
    nq_Memory_statistics();
    nq_Memory_clear();
    EXPECT_EQ(g.allocate + g.resize + g.clear + g.release, 0);
    void *block = nq_Malloc(5);
    EXPECT_EQ(g.allocate, 1);
    nq_Free(block);
}

TEST_F(Memory, FailingAllocatorMakesEveryCreateReturnNullWithoutLeaks) {
    g.fail = true;
    int value = 1;
    EXPECT_EQ(nq_Array_create(3, sizeof(int), &value), nullptr);
    EXPECT_EQ(nq_LnkList_create(nullptr), nullptr);
    EXPECT_EQ(nq_Str_dup(u"abc"), nullptr);
    EXPECT_EQ(g.release, 0);
    g.fail = false;
}

TEST_F(Memory, FailedArrayDataKeepsEmptyRecord) {
    // The record succeeds, the data block fails: the record comes back with count 0.
    struct Once {
        static void *allocate(size_t size) {
            ++g.allocate;
            return g.allocate == 2 ? nullptr : std::malloc(size);
        }
    };
    nq_MemoryManager_set(Once::allocate, count_resize, count_clear, count_release);
    int value = 7;
    nq_Array *array = nq_Array_create(3, sizeof(int), &value);
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(array->count, 0u);
    EXPECT_EQ(array->data, nullptr);
    EXPECT_EQ(nq_Array_size(array), 0u);
    EXPECT_EQ(nq_Array_getNth(array, 0), nullptr);
    EXPECT_EQ(nq_Array_destroy(array, nullptr), 1);
    nq_MemoryManager_set(count_allocate, count_resize, count_clear, count_release);
}

TEST_F(Memory, FailedNodeLeavesListUnchanged) {
    LnkList *list = nq_LnkList_create(reinterpret_cast<void *>(1), nullptr);
    g.fail = true;
    EXPECT_EQ(nq_LnkList_insEnd(list, reinterpret_cast<void *>(2)), 0);
    EXPECT_EQ(nq_LnkList_insStart(list, reinterpret_cast<void *>(2)), 0);
    EXPECT_EQ(nq_LnkList_insBefore(list, reinterpret_cast<void *>(2)), 0);
    EXPECT_EQ(nq_LnkList_insAfter(list, reinterpret_cast<void *>(2)), 0);
    EXPECT_EQ(nq_LnkList_length(list), 1);
    EXPECT_EQ(nq_Array_swap(nullptr, 0, 0), 0);
    g.fail = false;
    nq_LnkList_destroy(list, nullptr);
}

TEST_F(Memory, FailedSwapBufferDoesNothing) {
    int values[2] = {1, 2};
    nq_Array *array = nq_Array_create(2, sizeof(int), &values[0]);
    nq_Array_setNth(array, 1, &values[1], nullptr);
    g.fail = true;
    EXPECT_EQ(nq_Array_swap(array, 0, 1), 0);
    g.fail = false;
    EXPECT_EQ(*static_cast<int *>(nq_Array_getNth(array, 0)), 1);
    nq_Array_destroy(array, nullptr);
}

// Last: the null slot is stored and from then on fails the requests it would serve.
TEST_F(Memory, ZNullSlotIsStoredAndFails) {
    nq_MemoryManager_set(nullptr, count_resize, count_clear, count_release);
    EXPECT_EQ(nq_Malloc(10), nullptr);
    EXPECT_EQ(failure(), u"Unable to allocate 10 bytes of memory");
    nq_MemoryManager_set(count_allocate, count_resize, count_clear, count_release);
    void *block = nq_Malloc(10);
    EXPECT_NE(block, nullptr);
    nq_Free(block);
}

// The words of the failure text come from the message system, group "TOOL", format 1: with a
// translator they are translated. Each scene settles the language, so it runs in a process of
// its own ("DISABLED_", run nowhere else).

namespace {

const std::string kToolTable =
    "TOOL\tUnable to allocate\tKein Speicher f\xc3\xbcr\n"
    "TOOL\tbytes of memory\tBytes\n"
    "OTHER\tUnable to re-allocate\tnicht in dieser Gruppe\n";

bool fresh(const std::string &test) { return nqct::passes_in_fresh_process("MemoryWordsScene.DISABLED_" + test); }

}  // namespace

TEST(MemoryWordsScene, DISABLED_FailureTextTakesTranslatedWords) {
    nq_MemoryManager_set(count_allocate, count_resize, count_clear, count_release);
    nqmt::Scene german("LANGUAGE=DEU\n", kToolTable, NQ_TEST_EXAMPLE_TRANSLATOR);
    nq_Msg("", "TOOL", 1);  // settles the language while memory is still there
    void *block = nq_Malloc(8);
    g = Counts{};
    g.fail = true;
    EXPECT_EQ(nq_Malloc(1234), nullptr);
    EXPECT_EQ(failure(), u"Kein Speicher für 1234 Bytes");
    EXPECT_EQ(nq_Calloc(3, 7), nullptr);
    EXPECT_EQ(failure(), u"Unable to callocate 7 Bytes");  // not in the table: English
    EXPECT_EQ(nq_Realloc(block, 9), nullptr);
    EXPECT_EQ(failure(), u"Unable to re-allocate 9 Bytes");  // the table has it in another group
    EXPECT_EQ(g.allocate, 1);
    g.fail = false;
    nq_Free(block);
}

TEST(MemoryWordsScene, DISABLED_FirstMessageInsideAFailedAllocationIsEnglish) {
    nq_MemoryManager_set(count_allocate, count_resize, count_clear, count_release);
    nqmt::Scene english;
    // The language is settled inside the failure, where reading the configuration may fail too.
    g = Counts{};
    g.fail = true;
    EXPECT_EQ(nq_Malloc(10), nullptr);
    g.fail = false;
    EXPECT_EQ(failure(), u"Unable to allocate 10 bytes of memory");
    EXPECT_EQ(S(nq_Msg("Unable to allocate", "TOOL", 2)), u"Unable to allocate ");
}

TEST(MemoryWords, FailureTextTakesTranslatedWords) { EXPECT_TRUE(fresh("FailureTextTakesTranslatedWords")); }
TEST(MemoryWords, FirstMessageInsideAFailedAllocationIsEnglish) {
    EXPECT_TRUE(fresh("FirstMessageInsideAFailedAllocationIsEnglish"));
}
