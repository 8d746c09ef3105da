#include <maya/MMatrix.h>

#include <cmath>
#include <utility>

const MMatrix MMatrix::identity;

MMatrix::MMatrix() { setToIdentity(); }

MMatrix::MMatrix(const double values[4][4]) {
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            matrix[row][column] = values[row][column];
}

MMatrix::MMatrix(const float values[4][4]) {
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            matrix[row][column] = static_cast<double>(values[row][column]);
}

MStatus MMatrix::get(double values[4][4]) const {
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            values[row][column] = matrix[row][column];
    return MS::kSuccess;
}

MStatus MMatrix::get(float values[4][4]) const {
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            values[row][column] = static_cast<float>(matrix[row][column]);
    return MS::kSuccess;
}

MMatrix MMatrix::operator*(const MMatrix& right) const {
    MMatrix result;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            result.matrix[row][column] = matrix[row][0] * right.matrix[0][column] +
                                         matrix[row][1] * right.matrix[1][column] +
                                         matrix[row][2] * right.matrix[2][column] +
                                         matrix[row][3] * right.matrix[3][column];
    return result;
}

MMatrix& MMatrix::operator*=(const MMatrix& right) { return *this = *this * right; }

bool MMatrix::operator==(const MMatrix& other) const {
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            if (matrix[row][column] != other.matrix[row][column])
                return false;
    return true;
}

bool MMatrix::operator!=(const MMatrix& other) const { return !(*this == other); }

bool MMatrix::isEquivalent(const MMatrix& other, double tolerance) const {
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            if (!(std::fabs(matrix[row][column] - other.matrix[row][column]) <= tolerance))
                return false;
    return true;
}

MMatrix MMatrix::transpose() const {
    MMatrix result;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            result.matrix[row][column] = matrix[column][row];
    return result;
}

namespace {

/// Gauss-Jordan elimination with row pivoting. Reduces `left` to the identity and turns `right`
/// (the identity on entry) into its inverse, unless `left` is singular. Returns the determinant.
double eliminate(MMatrix& left, MMatrix& right) {
    double determinant = 1.0;
    for (int column = 0; column < 4; ++column) {
        int pivot = column;
        for (int row = column + 1; row < 4; ++row)
            if (std::fabs(left.matrix[row][column]) > std::fabs(left.matrix[pivot][column]))
                pivot = row;
        const double scale = left.matrix[pivot][column];
        if (scale == 0.0)
            return 0.0;
        determinant *= pivot == column ? scale : -scale;
        for (int k = 0; k < 4; ++k) {
            std::swap(left.matrix[pivot][k], left.matrix[column][k]);
            std::swap(right.matrix[pivot][k], right.matrix[column][k]);
        }
        for (int k = 0; k < 4; ++k) {
            left.matrix[column][k] /= scale;
            right.matrix[column][k] /= scale;
        }
        for (int row = 0; row < 4; ++row) {
            const double factor = row == column ? 0.0 : left.matrix[row][column];
            for (int k = 0; k < 4; ++k) {
                left.matrix[row][k] -= factor * left.matrix[column][k];
                right.matrix[row][k] -= factor * right.matrix[column][k];
            }
        }
    }
    return determinant;
}

} // namespace

MMatrix MMatrix::inverse() const {
    MMatrix left = *this;
    MMatrix right;
    return eliminate(left, right) == 0.0 ? MMatrix() : right;
}

double MMatrix::det4x4() const {
    MMatrix left = *this;
    MMatrix right;
    return eliminate(left, right);
}

MMatrix& MMatrix::setToIdentity() {
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            matrix[row][column] = row == column ? 1.0 : 0.0;
    return *this;
}
