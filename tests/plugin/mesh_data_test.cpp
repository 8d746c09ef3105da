#include "corelib/memory.h"
#include "plugin/mesh_data.h"
#include "plugin/work_buffer.h"
#include "tests/corelib/support.h"

#include <gtest/gtest.h>

namespace {

TEST(MeshData, FreesTheListOfEveryPolygon) {
    const uint64_t before = live_blocks;
    {
        MeshData data;
        for (uint32_t p = 0; p < 3; ++p) {
            CornerList* const list = new_corner_list();
            ASSERT_NE(list, nullptr);
            ASSERT_TRUE(list->append(p));
            ASSERT_TRUE(data.face_corners.append(list));
        }
        EXPECT_EQ(live_blocks, before + 3 + 3 + 1);
    }
    EXPECT_EQ(live_blocks, before);
}

TEST(MeshData, FreeingTheListsKeepsTheBufferOfTheirList) {
    MeshData data;
    data.face_corners.append(new_corner_list());
    const uint32_t capacity = data.face_corners.capacity();
    free_corner_lists(data.face_corners);
    EXPECT_EQ(data.face_corners.count(), 0u);
    EXPECT_EQ(data.face_corners.capacity(), capacity);
}

TEST(CornerList, IsNullWhenMemoryRunsOut) {
    AllocationWatch watch(0);
    EXPECT_EQ(new_corner_list(), nullptr);
}

TEST(WorkBuffer, HoldsTheRequestedNumberOfElements) {
    WorkBuffer<uint32_t> buffer;
    ASSERT_TRUE(buffer.allocate(5, 7));
    EXPECT_EQ(buffer.count(), 5u);
    for (const uint32_t element : buffer)
        EXPECT_EQ(element, 7u);
}

TEST(WorkBuffer, ZeroElementsNeedNoMemory) {
    WorkBuffer<uint32_t> buffer;
    AllocationWatch watch(0);
    EXPECT_TRUE(buffer.allocate(0, 1));
    EXPECT_EQ(buffer.begin(), buffer.end());
}

TEST(WorkBuffer, StaysEmptyWhenMemoryRunsOut) {
    WorkBuffer<uint32_t> buffer;
    AllocationWatch watch(0);
    EXPECT_FALSE(buffer.allocate(5, 1));
    EXPECT_EQ(buffer.count(), 0u);
}

TEST(WorkBuffer, SizeBeyondTheAddressSpaceFails) {
    WorkBuffer<uint32_t> buffer;
    EXPECT_FALSE(buffer.allocate(SIZE_MAX / 2));
}

TEST(WorkBuffer, FreesItsMemory) {
    const uint64_t before = live_blocks;
    {
        WorkBuffer<uint32_t> buffer;
        ASSERT_TRUE(buffer.allocate(5));
        EXPECT_EQ(live_blocks, before + 1);
    }
    EXPECT_EQ(live_blocks, before);
}

} // namespace
