#include <maya/MFloatVector.h>
#include <maya/MMatrix.h>
#include <maya/MPoint.h>
#include <maya/MVector.h>

#include <cmath>
#include <gtest/gtest.h>

namespace {

const double k_pi = 3.14159265358979323846;

MMatrix translation(double x, double y, double z) {
    MMatrix matrix;
    matrix[3][0] = x;
    matrix[3][1] = y;
    matrix[3][2] = z;
    return matrix;
}

/// A quarter turn about z, taking x to y.
MMatrix quarter_turn() {
    MMatrix matrix;
    matrix[0][0] = matrix[1][1] = 0.0;
    matrix[0][1] = 1.0;
    matrix[1][0] = -1.0;
    return matrix;
}

TEST(Vector, CrossProductIsRightHanded) {
    EXPECT_EQ(MVector(1, 0, 0) ^ MVector(0, 1, 0), MVector(0, 0, 1));
}
TEST(Vector, DotProductSumsTheProducts) { EXPECT_EQ(MVector(1, 2, 3) * MVector(4, 5, 6), 32.0); }
TEST(Vector, ScalesFromEitherSide) { EXPECT_EQ(2.0 * MVector(1, 2, 3), MVector(1, 2, 3) * 2.0); }
TEST(Vector, HasALength) { EXPECT_EQ(MVector(2, 3, 6).length(), 7.0); }
TEST(Vector, HasANormal) { EXPECT_EQ(MVector(0, 0, -5).normal(), MVector(0, 0, -1)); }

TEST(Vector, NormalOfAZeroVectorIsUnchanged) {
    MVector zero;
    EXPECT_TRUE(zero.normalize());
    EXPECT_EQ(zero, MVector());
}

TEST(Vector, MeasuresAnglesInRadians) {
    EXPECT_DOUBLE_EQ(MVector(1, 0, 0).angle(MVector(0, 3, 0)), k_pi / 2);
    EXPECT_DOUBLE_EQ(MVector(1, 0, 0).angle(MVector(-2, 0, 0)), k_pi);
    EXPECT_EQ(MVector(1, 0, 0).angle(MVector()), 0.0);
}

TEST(Vector, MeasuresTinyAnglesExactly) {
    EXPECT_NEAR(MVector(1, 0, 0).angle(MVector(1, 1e-9, 0)), 1e-9, 1e-15);
}

TEST(Vector, IsNotAffectedByTranslation) {
    EXPECT_EQ(MVector(1, 2, 3) * translation(5, 6, 7), MVector(1, 2, 3));
}

TEST(Vector, IsEquivalentWithinATolerance) {
    EXPECT_TRUE(MVector(1, 0, 0).isEquivalent(MVector(1.1, 0, 0), 0.2));
    EXPECT_FALSE(MVector(1, 0, 0).isEquivalent(MVector(1.1, 0, 0)));
}

TEST(Vector, IsAccessibleByIndex) {
    MVector vector(1, 2, 3);
    vector[1] = 9;
    EXPECT_EQ(vector[0] + vector[1] + vector[2], 13.0);
    double values[3];
    EXPECT_TRUE(vector.get(values));
    EXPECT_EQ(values[1], 9.0);
}

TEST(FloatVector, RoundsFromDouble) {
    const MFloatVector vector(MVector(0.1, 0.2, 0.3));
    EXPECT_EQ(vector.x, 0.1f);
    EXPECT_EQ(MVector(vector).y, static_cast<double>(0.2f));
}

TEST(FloatVector, HasTheArithmeticOfVectors) {
    EXPECT_EQ(MFloatVector(1, 0, 0) ^ MFloatVector(0, 1, 0), MFloatVector(0, 0, 1));
    EXPECT_EQ(MFloatVector(1, 2, 3) * MFloatVector(1, 1, 1), 6.0f);
    EXPECT_EQ(MFloatVector(3, 4).length(), 5.0f);
    EXPECT_EQ(MFloatVector(0, 2).normal(), MFloatVector(0, 1));
    EXPECT_TRUE(MFloatVector(1, 0).isEquivalent(MFloatVector(1.000001f, 0)));
}

TEST(Point, HasWeightOneByDefault) { EXPECT_EQ(MPoint(1, 2, 3).w, 1.0); }

TEST(Point, DifferenceIsAVector) { EXPECT_EQ(MPoint(4, 4, 4) - MPoint(1, 2, 3), MVector(3, 2, 1)); }

TEST(Point, DifferenceDividesByTheWeights) {
    EXPECT_EQ(MPoint(4, 4, 4, 2) - MPoint(1, 1, 1), MVector(1, 1, 1));
}

TEST(Point, IsMovedByAddingAVector) {
    EXPECT_EQ(MPoint(1, 2, 3) + MVector(1, 1, 1), MPoint(2, 3, 4));
    EXPECT_EQ(MPoint(1, 2, 3) - MVector(1, 1, 1), MPoint(0, 1, 2));
}

TEST(Point, IsMovedByATranslation) {
    EXPECT_EQ(MPoint(1, 2, 3) * translation(5, 6, 7), MPoint(6, 8, 10));
}

TEST(Point, CartesianizeDividesByTheWeight) {
    MPoint point(2, 4, 6, 2);
    EXPECT_EQ(point.cartesianize(), MPoint(1, 2, 3));
    MPoint at_infinity(1, 2, 3, 0);
    EXPECT_EQ(at_infinity.cartesianize(), MPoint(1, 2, 3, 0));
}

TEST(Point, MeasuresDistances) {
    EXPECT_EQ(MPoint(0, 0, 0).distanceTo(MPoint(2, 3, 6)), 7.0);
    EXPECT_TRUE(MPoint(0, 0, 0).isEquivalent(MPoint(0, 0, 1e-11)));
    EXPECT_FALSE(MPoint(0, 0, 0).isEquivalent(MPoint(0, 0, 1e-9)));
}

TEST(Point, IsAccessibleByIndex) {
    MPoint point(1, 2, 3, 4);
    point[3] = 8;
    double values[4];
    EXPECT_TRUE(point.get(values));
    EXPECT_EQ(values[3], 8.0);
    EXPECT_EQ(point[2], 3.0);
}

TEST(Matrix, IsTheIdentityByDefault) {
    EXPECT_EQ(MMatrix(), MMatrix::identity);
    EXPECT_EQ(MPoint(1, 2, 3) * MMatrix(), MPoint(1, 2, 3));
}

TEST(Matrix, ProductAppliesTheLeftFactorFirst) {
    const MPoint moved = MPoint(1, 0, 0) * (translation(1, 0, 0) * quarter_turn());
    EXPECT_EQ(moved, MPoint(0, 2, 0));
}

TEST(Matrix, TimesItsInverseIsTheIdentity) {
    MMatrix matrix = translation(1, 2, 3) * quarter_turn();
    matrix[0][0] = 5.0;
    matrix[1][2] = -0.5;
    EXPECT_TRUE((matrix * matrix.inverse()).isEquivalent(MMatrix::identity, 1e-12));
}

TEST(Matrix, InverseOfASingularMatrixIsTheIdentity) {
    MMatrix flat;
    flat[1][1] = 0.0;
    EXPECT_EQ(flat.inverse(), MMatrix::identity);
    EXPECT_EQ(flat.det4x4(), 0.0);
}

TEST(Matrix, ComputesTheDeterminant) {
    MMatrix matrix = quarter_turn();
    matrix[2][2] = 3.0;
    EXPECT_DOUBLE_EQ(matrix.det4x4(), 3.0);
}

TEST(Matrix, TransposeSwapsRowsAndColumns) {
    EXPECT_EQ(translation(1, 2, 3).transpose()[0][3], 1.0);
}

TEST(Matrix, CopiesItsNumbersRowByRow) {
    const MMatrix matrix = translation(1, 2, 3);
    double wide[4][4];
    float narrow[4][4];
    EXPECT_TRUE(matrix.get(wide));
    EXPECT_TRUE(matrix.get(narrow));
    EXPECT_EQ(wide[3][1], 2.0);
    EXPECT_EQ(narrow[3][2], 3.0f);
    EXPECT_EQ(MMatrix(wide), matrix);
    EXPECT_EQ(MMatrix(narrow), matrix);
    EXPECT_EQ(matrix(3, 0), 1.0);
}

TEST(Matrix, HasTheMemoryLayoutOfOpenGl) {
    const MMatrix matrix = translation(1, 2, 3);
    const double* const numbers = &matrix.matrix[0][0];
    EXPECT_EQ(numbers[12], 1.0);
    EXPECT_EQ(numbers[14], 3.0);
}

} // namespace
