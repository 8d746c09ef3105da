/// A 4x4 transformation matrix. Row vectors: a point p is transformed to p * M, and the translation
/// is in row 3. The memory layout is that of glLoadMatrixd.
#pragma once

#include <maya/MStatus.h>

class MHOST_EXPORT MMatrix {
public:
    double matrix[4][4];

    /// Constructs the identity.
    MMatrix();
    MMatrix(const double values[4][4]);
    MMatrix(const float values[4][4]);

    double* operator[](unsigned int row) { return matrix[row]; }
    const double* operator[](unsigned int row) const { return matrix[row]; }
    double operator()(unsigned int row, unsigned int column) const { return matrix[row][column]; }
    double& operator()(unsigned int row, unsigned int column) { return matrix[row][column]; }

    MStatus get(double values[4][4]) const;
    MStatus get(float values[4][4]) const;

    MMatrix operator*(const MMatrix& right) const;
    MMatrix& operator*=(const MMatrix& right);
    bool operator==(const MMatrix& other) const;
    bool operator!=(const MMatrix& other) const;
    bool isEquivalent(const MMatrix& other, double tolerance = 1.0e-10) const;

    MMatrix transpose() const;
    /// The inverse; the identity if the matrix is singular.
    MMatrix inverse() const;
    double det4x4() const;
    MMatrix& setToIdentity();

    static const MMatrix identity;
};
