#include "faultpoint/faultpoint.h"

#include <maya/MDoubleArray.h>
#include <maya/MFloatArray.h>
#include <maya/MFloatVectorArray.h>
#include <maya/MIntArray.h>
#include <maya/MPointArray.h>
#include <maya/MStringArray.h>
#include <maya/MUintArray.h>

#include <gtest/gtest.h>
#include <string>

namespace {

template <class A>
struct Sample;
template <>
struct Sample<MIntArray> {
    static constexpr const char* name = "MIntArray";
    static int at(int i) { return i; }
};
template <>
struct Sample<MUintArray> {
    static constexpr const char* name = "MUintArray";
    static unsigned int at(int i) { return static_cast<unsigned int>(i); }
};
template <>
struct Sample<MFloatArray> {
    static constexpr const char* name = "MFloatArray";
    static float at(int i) { return 0.5f * static_cast<float>(i); }
};
template <>
struct Sample<MDoubleArray> {
    static constexpr const char* name = "MDoubleArray";
    static double at(int i) { return 0.25 * i; }
};
template <>
struct Sample<MStringArray> {
    static constexpr const char* name = "MStringArray";
    static MString at(int i) { return MString("text ") + i; }
};
template <>
struct Sample<MPointArray> {
    static constexpr const char* name = "MPointArray";
    static MPoint at(int i) { return MPoint(i, -i, 1); }
};
template <>
struct Sample<MFloatVectorArray> {
    static constexpr const char* name = "MFloatVectorArray";
    static MFloatVector at(int i) { return MFloatVector(static_cast<float>(i), 2.0f, 3.0f); }
};

template <class A>
class Arrays : public testing::Test {
protected:
    static A filled(int count) {
        A array;
        for (int i = 0; i < count; ++i)
            array.append(Sample<A>::at(i));
        return array;
    }
    static void expect_ids(const A& array, std::initializer_list<int> ids) {
        ASSERT_EQ(array.length(), ids.size());
        unsigned int i = 0;
        for (const int id : ids)
            EXPECT_EQ(array[i++], Sample<A>::at(id));
    }
};

using AllArrays = testing::Types<MIntArray, MUintArray, MFloatArray, MDoubleArray, MStringArray,
                                 MPointArray, MFloatVectorArray>;
struct ArrayName {
    template <class A>
    static std::string GetName(int) {
        return Sample<A>::name;
    }
};
TYPED_TEST_SUITE(Arrays, AllArrays, ArrayName);

TYPED_TEST(Arrays, IsEmptyAtFirst) { EXPECT_EQ(TypeParam().length(), 0u); }

TYPED_TEST(Arrays, AppendsAtTheEnd) { this->expect_ids(this->filled(3), {0, 1, 2}); }

TYPED_TEST(Arrays, StartsWithElementsOfOneValue) {
    const TypeParam array(2, Sample<TypeParam>::at(5));
    this->expect_ids(array, {5, 5});
}

TYPED_TEST(Arrays, CopiesByValue) {
    TypeParam a = this->filled(2);
    TypeParam b(a);
    TypeParam c;
    c = a;
    a[0] = Sample<TypeParam>::at(9);
    this->expect_ids(b, {0, 1});
    this->expect_ids(c, {0, 1});
}

TYPED_TEST(Arrays, BecomesEqualByCopy) {
    TypeParam array = this->filled(5);
    EXPECT_TRUE(array.copy(this->filled(2)));
    this->expect_ids(array, {0, 1});
}

TYPED_TEST(Arrays, SetsElementsInsideOnly) {
    TypeParam array = this->filled(2);
    EXPECT_TRUE(array.set(Sample<TypeParam>::at(7), 1));
    EXPECT_TRUE(array.set(Sample<TypeParam>::at(7), 2) == MS::kInvalidParameter);
    this->expect_ids(array, {0, 7});
}

TYPED_TEST(Arrays, InsertsBeforeAPlace) {
    TypeParam array = this->filled(2);
    EXPECT_TRUE(array.insert(Sample<TypeParam>::at(7), 1));
    EXPECT_TRUE(array.insert(Sample<TypeParam>::at(8), 3));
    EXPECT_TRUE(array.insert(Sample<TypeParam>::at(9), 5) == MS::kInvalidParameter);
    this->expect_ids(array, {0, 7, 1, 8});
}

TYPED_TEST(Arrays, RemovesInsideOnly) {
    TypeParam array = this->filled(3);
    EXPECT_TRUE(array.remove(1));
    EXPECT_TRUE(array.remove(2) == MS::kInvalidParameter);
    this->expect_ids(array, {0, 2});
}

TYPED_TEST(Arrays, KeepsItsElementsWhenTheLengthChanges) {
    TypeParam array = this->filled(3);
    EXPECT_TRUE(array.setLength(2));
    this->expect_ids(array, {0, 1});
    EXPECT_TRUE(array.setLength(4));
    EXPECT_EQ(array[1], Sample<TypeParam>::at(1));
}

TYPED_TEST(Arrays, KeepsItsMemoryWhenCleared) {
    TypeParam array = this->filled(100);
    const void* const place = &array[0];
    EXPECT_TRUE(array.clear());
    EXPECT_EQ(array.length(), 0u);
    for (int i = 0; i < 100; ++i)
        array.append(Sample<TypeParam>::at(i));
    EXPECT_EQ(&array[0], place);
}

TYPED_TEST(Arrays, CopiesToABuffer) {
    const TypeParam array = this->filled(2);
    decltype(Sample<TypeParam>::at(0)) buffer[2];
    EXPECT_TRUE(array.get(buffer));
    EXPECT_EQ(buffer[1], Sample<TypeParam>::at(1));
}

TYPED_TEST(Arrays, AppendsOneOfItsOwnElementsWhileItGrows) {
    TypeParam array = this->filled(1);
    for (int i = 0; i < 200; ++i)
        array.append(array[0]);
    EXPECT_EQ(array[200], Sample<TypeParam>::at(0));
}

TYPED_TEST(Arrays, StaysAsItIsWhenItCannotGrow) {
    TypeParam array = this->filled(2);
    const std::string point = std::string(Sample<TypeParam>::name) + "::append";
    const faultpoint::Scope scope(point.c_str(), MStatus::kInsufficientMemory);
    EXPECT_TRUE(array.append(Sample<TypeParam>::at(2)) == MS::kInsufficientMemory);
    this->expect_ids(array, {0, 1});
}

TYPED_TEST(Arrays, RemembersItsSizeIncrement) {
    TypeParam array;
    array.setSizeIncrement(64);
    EXPECT_EQ(array.sizeIncrement(), 64u);
}

TEST(PointArray, AppendsCoordinates) {
    MPointArray array;
    EXPECT_TRUE(array.append(1, 2));
    EXPECT_TRUE(array.append(1, 2, 3, 0.5));
    EXPECT_EQ(array[0], MPoint(1, 2, 0, 1));
    EXPECT_EQ(array[1], MPoint(1, 2, 3, 0.5));
}

} // namespace
