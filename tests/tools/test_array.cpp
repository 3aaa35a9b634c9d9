// The Array family: creation, the element-size bound of addresses, set, swap, search.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "nq_tls20an.h"
#include "test_support.h"

namespace {

std::vector<void *> g_destroyed;
int record_destroy(void *element) {
    g_destroyed.push_back(element);
    return 1;
}

struct Wide {
    char bytes[16];
};

int compare_int(void *element, void *key) { return *static_cast<int *>(element) - *static_cast<int *>(key); }

class Array : public ::testing::Test {
protected:
    void SetUp() override { g_destroyed.clear(); }
};

}  // namespace

TEST_F(Array, CreateFillsEveryElementWithTheInitialOne) {
    int seven = 7;
    nq_Array *array = nq_Array_create(4, sizeof(int), &seven);
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(nq_Array_size(array), 4u);
    EXPECT_EQ(array->elementSize, sizeof(int));
    for (uint32_t i = 0; i < 4; ++i) EXPECT_EQ(*static_cast<int *>(nq_Array_getNth(array, i)), 7);
    EXPECT_EQ(nq_Array_destroy(array, nullptr), 1);
}

TEST_F(Array, CreateWithZeroCountYieldsNull) {
    int x = 0;
    EXPECT_EQ(nq_Array_create(0, 4, &x), nullptr);
}

TEST_F(Array, NullArrayResults) {
    EXPECT_EQ(nq_Array_size(nullptr), 0u);
    EXPECT_EQ(nq_Array_destroy(nullptr, record_destroy), 0);
    EXPECT_EQ(nq_Array_getAddress(nullptr, 0), nullptr);
    EXPECT_EQ(nq_Array_getNth(nullptr, 0), nullptr);
    int x = 1;
    EXPECT_EQ(nq_Array_setNth(nullptr, 0, &x, record_destroy), 0);
    EXPECT_TRUE(g_destroyed.empty());
    EXPECT_EQ(nq_Array_swap(nullptr, 0, 1), 0);
    EXPECT_EQ(nq_Array_search(nullptr, &x, compare_int), 0);
}

TEST_F(Array, GetNthAtCountYieldsNull) {
    int x = 1;
    nq_Array *array = nq_Array_create(3, sizeof(int), &x);
    EXPECT_NE(nq_Array_getNth(array, 2), nullptr);
    EXPECT_EQ(nq_Array_getNth(array, 3), nullptr);
    EXPECT_EQ(nq_Array_getNth(array, 0xFFFFFFFFu), nullptr);
    nq_Array_destroy(array, nullptr);
}

TEST_F(Array, AddressesAreBoundedByElementSizeNotCount) {
    // 10 elements of 4 bytes: only indices 0 to 3 have addresses.
    int x = 5;
    nq_Array *array = nq_Array_create(10, sizeof(int), &x);
    auto *base = static_cast<char *>(array->data);
    for (uint32_t i = 0; i < 4; ++i) EXPECT_EQ(nq_Array_getAddress(array, i), base + i * 4);
    EXPECT_EQ(nq_Array_getAddress(array, 4), nullptr);
    EXPECT_EQ(nq_Array_getNth(array, 5), nullptr);
    // Creation filled what it could address and left the rest alone without a fault.
    EXPECT_EQ(*static_cast<int *>(nq_Array_getNth(array, 3)), 5);
    nq_Array_destroy(array, nullptr);
}

TEST_F(Array, AddressesPastTheCountBelowElementSize) {
    // 3 elements of 16 bytes: getAddress hands out indices 3 to 15 as computed addresses.
    Wide w{};
    nq_Array *array = nq_Array_create(3, sizeof(Wide), &w);
    auto base = reinterpret_cast<uintptr_t>(array->data);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(nq_Array_getAddress(array, 3)), base + 48);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(nq_Array_getAddress(array, 15)), base + 15 * 16);
    EXPECT_EQ(nq_Array_getAddress(array, 16), nullptr);
    EXPECT_EQ(nq_Array_getNth(array, 3), nullptr);  // both bounds apply here
    nq_Array_destroy(array, nullptr);
}

TEST_F(Array, SetNthDestroysOldThenCopiesAndYieldsZero) {
    int x = 1, y = 9;
    nq_Array *array = nq_Array_create(3, sizeof(int), &x);
    EXPECT_EQ(nq_Array_setNth(array, 1, &y, record_destroy), 0);
    ASSERT_EQ(g_destroyed.size(), 1u);
    EXPECT_EQ(g_destroyed[0], nq_Array_getAddress(array, 1));
    EXPECT_EQ(*static_cast<int *>(nq_Array_getNth(array, 1)), 9);
    nq_Array_destroy(array, nullptr);
}

TEST_F(Array, SetNthPastTheDataWritesNothing) {
    Wide w{};
    nq_Array *array = nq_Array_create(3, sizeof(Wide), &w);
    Wide v;
    std::memset(v.bytes, 'v', sizeof v.bytes);
    EXPECT_EQ(nq_Array_setNth(array, 5, &v, record_destroy), 0);
    EXPECT_TRUE(g_destroyed.empty());
    for (uint32_t i = 0; i < 3; ++i) EXPECT_EQ(static_cast<Wide *>(nq_Array_getNth(array, i))->bytes[0], 0);
    nq_Array_destroy(array, nullptr);
}

TEST_F(Array, DestroyCallsDestructorForEachIndexWithItsAddress) {
    Wide w{};
    nq_Array *array = nq_Array_create(3, sizeof(Wide), &w);
    std::vector<void *> expected = {nq_Array_getAddress(array, 0), nq_Array_getAddress(array, 1),
                                    nq_Array_getAddress(array, 2)};
    EXPECT_EQ(nq_Array_destroy(array, record_destroy), 1);
    EXPECT_EQ(g_destroyed, expected);
}

TEST_F(Array, DestroyPassesNullPastTheElementSizeBound) {
    char c = 'a';
    nq_Array *array = nq_Array_create(3, 1, &c);  // element size 1: only index 0 has an address
    void *first = nq_Array_getAddress(array, 0);
    EXPECT_EQ(nq_Array_destroy(array, record_destroy), 1);
    ASSERT_EQ(g_destroyed.size(), 3u);
    EXPECT_EQ(g_destroyed[0], first);
    EXPECT_EQ(g_destroyed[1], nullptr);
    EXPECT_EQ(g_destroyed[2], nullptr);
}

TEST_F(Array, SwapExchangesTwoElements) {
    int values[] = {10, 20, 30};
    nq_Array *array = nq_Array_create(3, sizeof(int), &values[0]);
    nq_Array_setNth(array, 1, &values[1], nullptr);
    nq_Array_setNth(array, 2, &values[2], nullptr);
    EXPECT_EQ(nq_Array_swap(array, 0, 2), 1);
    EXPECT_EQ(*static_cast<int *>(nq_Array_getNth(array, 0)), 30);
    EXPECT_EQ(*static_cast<int *>(nq_Array_getNth(array, 2)), 10);
    EXPECT_EQ(nq_Array_swap(array, 1, 1), 1);
    EXPECT_EQ(*static_cast<int *>(nq_Array_getNth(array, 1)), 20);
    EXPECT_EQ(nq_Array_swap(array, 0, 3), 0);
    EXPECT_EQ(nq_Array_swap(array, 3, 0), 0);
    nq_Array_destroy(array, nullptr);
}

TEST_F(Array, SearchFindsFirstMatchAndConfusesZeroWithNone) {
    int values[] = {4, 8, 8, 15};
    nq_Array *array = nq_Array_create(4, sizeof(int), &values[0]);
    for (uint32_t i = 1; i < 4; ++i) nq_Array_setNth(array, i, &values[i], nullptr);
    int key = 8;
    EXPECT_EQ(nq_Array_search(array, &key, compare_int), 1);
    key = 15;
    EXPECT_EQ(nq_Array_search(array, &key, compare_int), 3);
    key = 4;
    EXPECT_EQ(nq_Array_search(array, &key, compare_int), 0);
    key = 99;
    EXPECT_EQ(nq_Array_search(array, &key, compare_int), 0);
    EXPECT_EQ(nq_Array_search(array, &key, nullptr), 0);
    nq_Array_destroy(array, nullptr);
}

TEST_F(Array, SearchPassesOverIndicesWithoutAddress) {
    char letters[] = "abc";
    nq_Array *array = nq_Array_create(3, 1, &letters[0]);  // only index 0 is addressable
    auto compare_char = [](void *e, void *k) { return *static_cast<char *>(e) == *static_cast<char *>(k) ? 0 : 1; };
    char key = 'a';
    EXPECT_EQ(nq_Array_search(array, &key, compare_char), 0);
    key = 'z';
    EXPECT_EQ(nq_Array_search(array, &key, compare_char), 0);
    nq_Array_destroy(array, nullptr);
}

TEST_F(Array, TracesWithTheRequiredLiterals) {
    nqtest::TempDir dir;
    std::string path = dir.file("array.log");
    std::u16string wpath(path.begin(), path.end());
    nq_Diag_setOutput(2, wpath.c_str());
    nq_Diag_setLevel(3);
    nq_Diag_setCondition(NQ_DIAG_ARRAY);
    int x = 1;
    nq_Array *array = nq_Array_create(1, sizeof(int), &x);
    nq_Diag_setOutput(2, wpath.c_str());
    nq_Array_getAddress(array, 0);
    std::string log = nqtest::read_file(path);
    EXPECT_NE(log.find(") Entering nq_Array_getAddress.\n"), std::string::npos);
    EXPECT_NE(log.find(") Exiting nq_Array_search.\n"), std::string::npos);
    nq_Diag_setOutput(2, wpath.c_str());
    nq_Array_setNth(array, 0, &x, nullptr);
    log = nqtest::read_file(path);
    EXPECT_EQ(log.find("array.cpp ("), 0u);
    EXPECT_NE(log.find(") Entering nq_Array_modNth.\n"), std::string::npos);
    EXPECT_NE(log.find(") Exiting nq_Array_modNth.\n"), std::string::npos);
    EXPECT_EQ(log.find("nq_Array_setNth"), std::string::npos);
    nq_Diag_disable();
    nq_Diag_setOutput(1, nullptr);
    nq_Array_destroy(array, nullptr);
}
