#pragma once

#include <gmtl/Matrix.h>

#include <array>

namespace tessarin::dynamics::bullet {

using Vector3 = std::array<double, 3>;

/// Elements by row and column; multiplies column vectors.
using Matrix3 = std::array<Vector3, 3>;

constexpr Matrix3 identityMatrix3 = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

/// A placement in double precision: p' = linear * p + translation.
struct Affine {
    Matrix3 linear = identityMatrix3;
    Vector3 translation = {0, 0, 0};
};

// Bodies that tumble take some hundreds of these in a step.
inline Vector3 operator+(const Vector3& a, const Vector3& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

inline Vector3 operator-(const Vector3& a, const Vector3& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

inline Vector3 operator*(const Vector3& a, double factor) {
    return {a[0] * factor, a[1] * factor, a[2] * factor};
}

inline double dot(const Vector3& a, const Vector3& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

inline Vector3 cross(const Vector3& a, const Vector3& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Vector3 operator*(const Matrix3& a, const Vector3& b);
Matrix3 operator*(const Matrix3& a, const Matrix3& b);
Matrix3 operator+(const Matrix3& a, const Matrix3& b);
Matrix3 operator*(const Matrix3& a, double factor);
Affine operator*(const Affine& a, const Affine& b);
Vector3 transformPoint(const Affine& a, const Vector3& point);

double length(const Vector3& a);

/// The zero vector stays what it is.
Vector3 normalized(const Vector3& a);

Matrix3 transposed(const Matrix3& a);
Matrix3 diagonal(const Vector3& a);
Matrix3 outerProduct(const Vector3& a, const Vector3& b);
double determinant(const Matrix3& a);

/// Right-handed about the axis, which needn't have unit length; the identity if it has none.
Matrix3 axisRotation(const Vector3& axis, double radians);

/// The inverse of a placement whose linear part is a rotation.
Affine rigidInverse(const Affine& a);

bool isFinite(const Vector3& a);
bool isFinite(const Affine& a);

/// True if what stands off the diagonal is nothing against the rest.
bool isDiagonal(const Matrix3& a);

/// The eigenvectors, as columns of a rotation, and the eigenvalues of a symmetric matrix.
struct Eigen {
    Matrix3 vectors;
    Vector3 values;
};
Eigen eigenOf(const Matrix3& symmetric);

/// A matrix as a rotation behind a symmetric stretch: rotation * stretch. Of a mirroring matrix the stretch mirrors.
/// The rotation is one also where the matrix is singular.
struct PolarParts {
    Matrix3 rotation;
    Matrix3 stretch;
};
PolarParts polarPartsOf(const Matrix3& a);

Affine fromGmtl(const gmtl::Matrix<double, 4, 4>& matrix);
void toGmtl(const Affine& a, gmtl::Matrix<double, 4, 4>& matrix);

} // namespace tessarin::dynamics::bullet
