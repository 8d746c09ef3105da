#include "corelib/array.h"
#include "corelib/vertex.h"
#include "tests/corelib/support.h"

#include <gtest/gtest.h>
#include <random>

namespace {

using List = array<uint32_t>;

List list_of(std::initializer_list<uint32_t> values) {
    List list;
    for (const uint32_t value : values)
        list.append(value);
    return list;
}

std::vector<uint32_t> contents(const List& list) {
    return std::vector<uint32_t>(list.data(), list.data() + list.count());
}

std::string bug(const std::string& operation, const std::string& assertion) {
    return literally(operation + "() BUG at file \"corelib/array\", line ") + fixtures::k_digits +
           literally(": assertion " + assertion + " failed!");
}

std::string bug(const std::string& operation) {
    return literally(operation + "() BUG at file \"corelib/array\", line ") + fixtures::k_digits +
           "!";
}

#define EXPECT_BUG(statement, ...)                                                                 \
    EXPECT_EXIT(statement, fixtures::ended_by_abort(), bug(__VA_ARGS__))

TEST(Array, StartsEmptyWithoutABuffer) {
    const List list;
    EXPECT_EQ(list.count(), 0u);
    EXPECT_EQ(list.capacity(), 0u);
    EXPECT_EQ(list.data(), nullptr);
    EXPECT_FALSE(list.is_constant_size());
    EXPECT_FALSE(list.is_constant_buffer_address());
}

TEST(Array, IsValidWhenAllFieldsAreZero) {
    alignas(List) unsigned char storage[sizeof(List)] = {};
    List& list = *reinterpret_cast<List*>(storage);
    EXPECT_TRUE(list.append(7));
    EXPECT_EQ(list.get(0), 7u);
    list.~List();
}

TEST(ArrayAppend, ThousandAppendsAllocateAtDoublingCapacities) {
    List list;
    {
        AllocationWatch watch;
        for (uint32_t i = 0; i < 1000; ++i)
            ASSERT_TRUE(list.append(i));
    }
    std::vector<size_t> capacities;
    for (const size_t bytes : AllocationWatch::sizes())
        capacities.push_back(bytes / sizeof(uint32_t));
    EXPECT_EQ(capacities, (std::vector<size_t>{2, 6, 14, 30, 62, 126, 254, 510, 1022}));
    for (uint32_t i = 0; i < 1000; ++i)
        ASSERT_EQ(list.get(i), i);
}

TEST(ArrayAppend, SurvivesAppendingAnElementOfItself) {
    List list = list_of({11, 22});
    ASSERT_EQ(list.count(), list.capacity());
    EXPECT_TRUE(list.append(list[0]));
    EXPECT_EQ(contents(list), (std::vector<uint32_t>{11, 22, 11}));
}

TEST(ArrayAppend, LeavesOutTheElementWhenMemoryRunsOut) {
    List list = list_of({1, 2});
    AllocationWatch watch(0);
    EXPECT_FALSE(list.append(3));
    EXPECT_EQ(contents(list), (std::vector<uint32_t>{1, 2}));
    EXPECT_EQ(list.capacity(), 2u);
}

TEST(ArrayAppendDeathTest, ConstantSizeMakesItABug) {
    List list;
    list.set_properties(ARRAY_CONSTANT_SIZE);
    EXPECT_BUG(list.append(1), "array<unsigned long>::append", "!is_constant_size()");
}

TEST(ArrayIndex, GrowsToTwiceTheNeededSize) {
    List list;
    list[9] = 5;
    EXPECT_EQ(list.capacity(), 20u);
    EXPECT_EQ(list.count(), 10u);
    EXPECT_EQ(list.get(9), 5u);
}

TEST(ArrayIndex, ExistingElementNeedsNoGrowth) {
    List list = list_of({1, 2});
    list.set_properties(ARRAY_CONSTANT_SIZE);
    list[1] = 9;
    EXPECT_EQ(contents(list), (std::vector<uint32_t>{1, 9}));
}

TEST(ArrayIndex, GapsAreZeroWithZeroFill) {
    List list;
    list.set_properties(ARRAY_ZERO_FILL);
    list[9] = 5;
    EXPECT_EQ(contents(list), (std::vector<uint32_t>{0, 0, 0, 0, 0, 0, 0, 0, 0, 5}));
}

TEST(ArrayIndexDeathTest, ConstantSizeMakesItABug) {
    List list;
    list.set_properties(ARRAY_CONSTANT_SIZE);
    EXPECT_BUG(list[0], "array<unsigned long>::operator []", "!is_constant_size()");
}

TEST(ArrayIndexDeathTest, RunningOutOfMemoryIsABugWithoutAssertion) {
    List list;
    AllocationWatch watch(0);
    EXPECT_BUG(list[0], "array<unsigned long>::operator []");
}

TEST(ArrayIndexDeathTest, SizeBeyond32BitsCountsAsOutOfMemory) {
    List list;
    EXPECT_BUG(list[0x80000000u], "array<unsigned long>::operator []");
}

TEST(ArrayGet, ReturnsTheElement) { EXPECT_EQ(list_of({4, 5, 6}).get(2), 6u); }

TEST(ArrayGetDeathTest, IndexAtCountIsABug) {
    const List list = list_of({4, 5, 6});
    EXPECT_BUG(list.get(3), "array<unsigned long>::get", "ind < cur_elements");
}

TEST(ArrayReportsDeathTest, NameVertexElements) {
    const array<Vertex> list;
    EXPECT_BUG(list.get(0), "array<struct Vertex>::get", "ind < cur_elements");
}

TEST(ArrayReportsDeathTest, NamePointerElements) {
    array<array<uint32_t>*> list;
    list.set_properties(ARRAY_CONSTANT_SIZE);
    EXPECT_BUG(list[0], "array<class array<unsigned long> *>::operator []", "!is_constant_size()");
}

TEST(ArrayAppendArray, GrowsToTheExactSize) {
    List list = list_of({1, 2, 3});
    EXPECT_TRUE(list.append_array(list_of({4, 5, 6, 7})));
    EXPECT_EQ(contents(list), (std::vector<uint32_t>{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(list.capacity(), 7u);
}

TEST(ArrayAppendArray, UsesSpareCapacityWithoutReallocation) {
    List list = list_of({1, 2, 3});
    ASSERT_EQ(list.capacity(), 6u);
    const List added = list_of({4, 5, 6});
    AllocationWatch watch;
    EXPECT_TRUE(list.append_array(added));
    EXPECT_TRUE(AllocationWatch::sizes().empty());
    EXPECT_EQ(list.capacity(), 6u);
}

TEST(ArrayAppendArray, EmptyListNeedsNoMemory) {
    List list;
    const List empty;
    AllocationWatch watch(0);
    EXPECT_TRUE(list.append_array(empty));
    EXPECT_EQ(list.count(), 0u);
}

TEST(ArrayAppendArray, LeavesTheArrayUnchangedWhenMemoryRunsOut) {
    List list = list_of({1, 2});
    const List added = list_of({3, 4});
    AllocationWatch watch(0);
    EXPECT_FALSE(list.append_array(added));
    EXPECT_EQ(contents(list), (std::vector<uint32_t>{1, 2}));
}

TEST(ArrayAppendArrayDeathTest, OntoItselfIsABug) {
    List list = list_of({1});
    EXPECT_BUG(list.append_array(list), "array<unsigned long>::append_array", "&e != this");
}

TEST(ArrayAppendArrayDeathTest, ConstantSizeMakesItABug) {
    List list;
    list.set_properties(ARRAY_CONSTANT_SIZE);
    EXPECT_BUG(list.append_array(List()), "array<unsigned long>::append_array",
               "!is_constant_size()");
}

TEST(ArrayAlloc, MakesCountAndCapacityExact) {
    List list = list_of({1, 2});
    EXPECT_TRUE(list.alloc(5));
    EXPECT_EQ(list.count(), 5u);
    EXPECT_EQ(list.capacity(), 5u);
    EXPECT_EQ(list.get(1), 2u);
}

TEST(ArrayAlloc, LeavesTheArrayUnchangedWhenMemoryRunsOut) {
    List list = list_of({1, 2});
    AllocationWatch watch(0);
    EXPECT_FALSE(list.alloc(5));
    EXPECT_EQ(contents(list), (std::vector<uint32_t>{1, 2}));
}

TEST(ArrayAllocDeathTest, BelowTheCountIsABug) {
    List list = list_of({1, 2, 3, 4, 5});
    EXPECT_BUG(list.alloc(3), "array<unsigned long>::alloc", "elements >= cur_elements");
}

TEST(ArrayAllocDeathTest, ConstantSizeMakesItABug) {
    List list;
    list.set_properties(ARRAY_CONSTANT_SIZE);
    EXPECT_BUG(list.alloc(3), "array<unsigned long>::alloc", "!is_constant_size()");
}

TEST(ArrayOverwriteAt, GrowsToTheExactSize) {
    List list = list_of({1});
    EXPECT_TRUE(list.overwrite_at(6, 9));
    EXPECT_EQ(list.capacity(), 7u);
    EXPECT_EQ(list.count(), 7u);
    EXPECT_EQ(list.get(6), 9u);
}

TEST(ArrayOverwriteAt, KeepsTheCountForAnExistingIndex) {
    List list = list_of({1, 2, 3});
    EXPECT_TRUE(list.overwrite_at(0, 9));
    EXPECT_EQ(contents(list), (std::vector<uint32_t>{9, 2, 3}));
}

TEST(ArrayOverwriteAt, UsesSpareCapacityOfAConstantSizeArray) {
    List list = list_of({1, 2, 3});
    list.set_properties(ARRAY_CONSTANT_SIZE);
    EXPECT_TRUE(list.overwrite_at(4, 9));
    EXPECT_EQ(list.count(), 5u);
}

TEST(ArrayOverwriteAt, LeavesTheArrayUnchangedWhenMemoryRunsOut) {
    List list = list_of({1, 2});
    AllocationWatch watch(0);
    EXPECT_FALSE(list.overwrite_at(2, 9));
    EXPECT_EQ(contents(list), (std::vector<uint32_t>{1, 2}));
}

TEST(ArrayOverwriteAtDeathTest, ConstantSizeBeyondTheCapacityIsABug) {
    List list;
    list.set_properties(ARRAY_CONSTANT_SIZE);
    EXPECT_BUG(list.overwrite_at(0, 9), "array<unsigned long>::overwrite_at",
               "!is_constant_size()");
}

TEST(ArrayOverwriteAtDeathTest, ValueInsideTheArrayIsABug) {
    List list = list_of({1, 2, 3});
    EXPECT_BUG(list.overwrite_at(9, list.data()[0]), "array<unsigned long>::__check_pointer");
}

TEST(ArrayCheckPointerDeathTest, LastSlotOfTheCapacityIsABug) {
    List list = list_of({1, 2, 3});
    ASSERT_EQ(list.capacity(), 6u);
    EXPECT_BUG(list.check_pointer(list.data() + 5), "array<unsigned long>::__check_pointer");
}

TEST(ArrayCheckPointer, AcceptsAPointerBehindTheStorage) {
    const List list = list_of({1, 2, 3});
    list.check_pointer(list.data() + 6);
}

TEST(ArrayCheckPointer, AcceptsAnyPointerForAnEmptyArray) {
    const uint32_t value = 1;
    const List list;
    list.check_pointer(&value);
    list.check_pointer(nullptr);
}

TEST(ArrayResize, ZeroFreesTheBufferAndAppendAllocatesANewOne) {
    List list = list_of({1, 2, 3});
    const uint64_t live = live_blocks;
    EXPECT_TRUE(list.resize(0));
    EXPECT_EQ(live_blocks, live - 1);
    EXPECT_EQ(list.data(), nullptr);
    EXPECT_EQ(list.count(), 0u);
    EXPECT_TRUE(list.append(4));
    EXPECT_EQ(list.capacity(), 2u);
}

TEST(ArrayResize, CutsTheCount) {
    List list = list_of({1, 2, 3});
    EXPECT_TRUE(list.resize(2));
    EXPECT_EQ(list.capacity(), 2u);
    EXPECT_EQ(contents(list), (std::vector<uint32_t>{1, 2}));
}

TEST(ArrayResize, ZeroFillsFromTheOldCapacityOn) {
    List list = list_of({1, 2});
    list.set_properties(ARRAY_ZERO_FILL);
    EXPECT_TRUE(list.resize(4));
    EXPECT_TRUE(list.alloc(4));
    EXPECT_EQ(contents(list), (std::vector<uint32_t>{1, 2, 0, 0}));
}

TEST(ArrayResize, RoundsTheFirstElementUpToTheAlignment) {
    for (uint32_t alignment = 1; alignment <= 4096; alignment *= 2) {
        List list;
        list.set_alignment(alignment);
        AllocationWatch watch;
        ASSERT_TRUE(list.resize(10));
        EXPECT_EQ(AllocationWatch::sizes().back(), 40 + alignment - 1);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(list.data()) % alignment, 0u);
        for (uint32_t i = 0; i < 10; ++i)
            ASSERT_TRUE(list.append(i));
    }
}

TEST(ArrayResizeDeathTest, SecondAllocationOfAnAlignedArrayIsABug) {
    List list;
    list.set_alignment(16);
    ASSERT_TRUE(list.resize(1));
    ASSERT_TRUE(list.append(1));
    EXPECT_BUG(list.append(2), "array<unsigned long>::resize",
               "cur_elements == 0 && max_elements == 0");
}

TEST(ArrayResizeDeathTest, ConstantSizeMakesItABug) {
    List list;
    list.set_properties(ARRAY_CONSTANT_SIZE);
    EXPECT_BUG(list.resize(1), "array<unsigned long>::resize", "!is_constant_size()");
}

TEST(ArrayResizeDeathTest, ConstantBufferAddressIsABug) {
    List list;
    list.set_properties(ARRAY_CONSTANT_BUFFER_ADDRESS);
    EXPECT_BUG(list.resize(1), "array<unsigned long>::resize", "!is_constant_buffer_address()");
}

TEST(ArrayClear, KeepsTheBuffer) {
    List list = list_of({1, 2, 3});
    list.clear();
    EXPECT_EQ(list.count(), 0u);
    EXPECT_EQ(list.capacity(), 6u);
}

TEST(ArrayClearDeathTest, ConstantSizeMakesItABug) {
    List list;
    list.set_properties(ARRAY_CONSTANT_SIZE);
    EXPECT_BUG(list.clear(), "array<unsigned long>::clear", "!is_constant_size()");
}

TEST(ArrayMemory, DestructionFreesTheBuffer) {
    const uint64_t live = live_blocks;
    {
        const List list = list_of({1});
        EXPECT_EQ(live_blocks, live + 1);
    }
    EXPECT_EQ(live_blocks, live);
}

TEST(ArrayMemory, DestructionDoesNotFreeWhatElementsPointTo) {
    List inner = list_of({7});
    {
        array<List*> outer;
        ASSERT_TRUE(outer.append(&inner));
    }
    EXPECT_EQ(inner.get(0), 7u);
}

TEST(ArrayMemory, MovingTransfersTheBuffer) {
    List from = list_of({1, 2});
    const uint32_t* const buffer = from.data();
    List to(std::move(from));
    EXPECT_EQ(to.data(), buffer);
    EXPECT_EQ(from.data(), nullptr); // NOLINT(bugprone-use-after-move): left empty on purpose
    EXPECT_EQ(from.count(), 0u);
    List other = list_of({3});
    other = std::move(to);
    EXPECT_EQ(contents(other), (std::vector<uint32_t>{1, 2}));
}

TEST(CountingAllocator, NewBlocksCountAndReallocationsDoNot) {
    const uint64_t bytes = allocated_bytes;
    const uint64_t live = live_blocks;
    void* block = core_realloc(nullptr, 100);
    EXPECT_EQ(allocated_bytes, bytes + 100);
    EXPECT_EQ(live_blocks, live + 1);
    block = core_realloc(block, 5000);
    EXPECT_EQ(allocated_bytes, bytes + 100);
    EXPECT_EQ(live_blocks, live + 1);
    core_free(block);
    EXPECT_EQ(allocated_bytes, bytes + 100);
    EXPECT_EQ(live_blocks, live);
}

TEST(CountingAllocator, FailedRequestsCountNothing) {
    const uint64_t bytes = allocated_bytes;
    const uint64_t live = live_blocks;
    AllocationWatch watch(0);
    EXPECT_EQ(core_realloc(nullptr, 100), nullptr);
    EXPECT_EQ(allocated_bytes, bytes);
    EXPECT_EQ(live_blocks, live);
}

TEST(CountingAllocator, FreeingNothingIsAllowed) {
    const uint64_t live = live_blocks;
    core_free(nullptr);
    EXPECT_EQ(live_blocks, live);
}

/// Random operations compared with a std::vector, with occasional allocation failures.
class ArrayModel : public testing::TestWithParam<uint32_t> {};

TEST_P(ArrayModel, BehavesLikeAVectorForAnySequenceOfOperations) {
    std::mt19937 random(GetParam());
    List list;
    std::vector<uint32_t> model;
    for (int step = 0; step < 2000; ++step) {
        const uint32_t value = random();
        const bool memory = random() % 4 != 0;
        AllocationWatch watch(memory ? AllocationWatch::k_never : 0);
        const size_t room = list.capacity();
        switch (random() % 6) {
        case 0:
        case 1:
            ASSERT_EQ(list.append(value), memory || model.size() < room);
            if (memory || model.size() < room)
                model.push_back(value);
            break;
        case 2:
            if (memory) {
                const size_t added = random() % 5;
                List more;
                for (size_t i = 0; i < added; ++i)
                    more.append(value);
                ASSERT_TRUE(list.append_array(more));
                model.insert(model.end(), added, value);
            }
            break;
        case 3: {
            const uint32_t place = random() % (static_cast<uint32_t>(model.size()) + 1);
            const bool fits = memory || place < room;
            ASSERT_EQ(list.overwrite_at(place, value), fits);
            if (fits && place == model.size())
                model.push_back(value);
            else if (fits)
                model[place] = value;
            break;
        }
        case 4:
            if (model.size() > 100) {
                const size_t size = random() % 50;
                const bool done = list.resize(static_cast<uint32_t>(size));
                ASSERT_EQ(done, memory || size == 0);
                if (done)
                    model.resize(size);
            }
            break;
        default:
            if (!model.empty()) {
                const uint32_t place = random() % static_cast<uint32_t>(model.size());
                list[place] = value;
                model[place] = value;
            }
        }
        ASSERT_EQ(contents(list), model) << "seed " << GetParam() << ", step " << step;
        ASSERT_LE(list.count(), list.capacity());
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ArrayModel, testing::Range(1u, 9u));

} // namespace
