#include <dynamics/bullet/Affine.h>

#include <algorithm>
#include <cmath>

namespace tessarin::dynamics::bullet {

Vector3 operator*(const Matrix3& a, const Vector3& b) {
    return {dot(a[0], b), dot(a[1], b), dot(a[2], b)};
}

Matrix3 operator*(const Matrix3& a, const Matrix3& b) {
    const Matrix3 columns = transposed(b);
    return {columns * a[0], columns * a[1], columns * a[2]};
}

Matrix3 operator+(const Matrix3& a, const Matrix3& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

Matrix3 operator*(const Matrix3& a, double factor) {
    return {a[0] * factor, a[1] * factor, a[2] * factor};
}

Affine operator*(const Affine& a, const Affine& b) {
    return {a.linear * b.linear, a.linear * b.translation + a.translation};
}

Vector3 transformPoint(const Affine& a, const Vector3& point) {
    return a.linear * point + a.translation;
}

double length(const Vector3& a) {
    return std::hypot(a[0], a[1], a[2]);
}

Vector3 normalized(const Vector3& a) {
    const double norm = length(a);
    return norm > 0 ? a * (1 / norm) : a;
}

Matrix3 transposed(const Matrix3& a) {
    return {{{a[0][0], a[1][0], a[2][0]}, {a[0][1], a[1][1], a[2][1]}, {a[0][2], a[1][2], a[2][2]}}};
}

Matrix3 diagonal(const Vector3& a) {
    return {{{a[0], 0, 0}, {0, a[1], 0}, {0, 0, a[2]}}};
}

Matrix3 outerProduct(const Vector3& a, const Vector3& b) {
    return {b * a[0], b * a[1], b * a[2]};
}

double determinant(const Matrix3& a) {
    return dot(a[0], cross(a[1], a[2]));
}

Matrix3 axisRotation(const Vector3& axis, double radians) {
    const Vector3 n = normalized(axis);
    if (dot(n, n) == 0) {
        return identityMatrix3;
    }
    const double c = std::cos(radians);
    const double s = std::sin(radians);
    const Matrix3 crossMatrix = {{{0, -n[2], n[1]}, {n[2], 0, -n[0]}, {-n[1], n[0], 0}}};
    return identityMatrix3 * c + crossMatrix * s + outerProduct(n, n) * (1 - c);
}

Affine rigidInverse(const Affine& a) {
    const Matrix3 back = transposed(a.linear);
    return {back, back * a.translation * -1};
}

bool isFinite(const Vector3& a) {
    return std::isfinite(a[0]) && std::isfinite(a[1]) && std::isfinite(a[2]);
}

bool isFinite(const Affine& a) {
    return isFinite(a.linear[0]) && isFinite(a.linear[1]) && isFinite(a.linear[2]) && isFinite(a.translation);
}

bool isDiagonal(const Matrix3& a) {
    const double on = std::max({std::abs(a[0][0]), std::abs(a[1][1]), std::abs(a[2][2])});
    const double off = std::max({std::abs(a[0][1]), std::abs(a[0][2]), std::abs(a[1][0]), std::abs(a[1][2]),
                                 std::abs(a[2][0]), std::abs(a[2][1])});
    return off <= 1e-6 * on;
}

Eigen eigenOf(const Matrix3& symmetric) {
    // Jacobi's rotations: for three rows they converge to the last digit within a few sweeps.
    Matrix3 a = symmetric;
    Matrix3 vectors = identityMatrix3;
    for (int sweep = 0; sweep < 32; ++sweep) {
        const double off = std::abs(a[0][1]) + std::abs(a[0][2]) + std::abs(a[1][2]);
        const double on = std::abs(a[0][0]) + std::abs(a[1][1]) + std::abs(a[2][2]);
        if (!(off > 1e-18 * on)) {
            break;
        }
        constexpr std::array<std::array<std::size_t, 2>, 3> pairs = {{{0, 1}, {0, 2}, {1, 2}}};
        for (const auto& [p, q] : pairs) {
            if (a[p][q] == 0) {
                continue;
            }
            const double theta = (a[q][q] - a[p][p]) / (2 * a[p][q]);
            const double t = std::copysign(1 / (std::abs(theta) + std::hypot(theta, 1.0)), theta);
            const double c = 1 / std::hypot(t, 1.0);
            Matrix3 turn = identityMatrix3;
            turn[p][p] = turn[q][q] = c;
            turn[p][q] = t * c;
            turn[q][p] = -t * c;
            a = transposed(turn) * a * turn;
            vectors = vectors * turn;
        }
    }
    return {vectors, {a[0][0], a[1][1], a[2][2]}};
}

PolarParts polarPartsOf(const Matrix3& a) {
    const Eigen eigen = eigenOf(transposed(a) * a);
    const Matrix3 axes = transposed(eigen.vectors); // one axis of the stretch per row
    Vector3 factors;
    Matrix3 images;
    std::array<std::size_t, 3> order = {0, 1, 2};
    for (std::size_t i = 0; i < 3; ++i) {
        images[i] = a * axes[i];
        factors[i] = length(images[i]);
    }
    std::sort(order.begin(), order.end(), [&](std::size_t i, std::size_t j) { return factors[i] > factors[j]; });

    // The images of the axes are orthogonal but for rounding; where a factor is nothing, the axis is free.
    const auto [first, second, third] = order;
    const double smallest = 1e-12 * factors[first];
    const Vector3 u = factors[first] > 0 ? normalized(images[first]) : axes[first];
    Vector3 v = images[second] - u * dot(u, images[second]);
    if (!(factors[second] > smallest)) {
        v = axes[second] - u * dot(u, axes[second]);
        if (length(v) < 0.5) {
            v = axes[third] - u * dot(u, axes[third]);
        }
    }
    v = normalized(v);
    const Vector3 w = cross(u, v);
    // Made this way the images are right-handed; the axes may be left-handed in this order.
    const double handed = dot(cross(axes[first], axes[second]), axes[third]) < 0 ? -1 : 1;
    // A mirroring matrix is taken as a rotation of the mirrored stretch, so two images change sides.
    const double sign = determinant(a) < 0 ? -1 : 1;
    const Matrix3 rotation = outerProduct(u * sign, axes[first]) + outerProduct(v * sign, axes[second]) +
                             outerProduct(w * handed, axes[third]);
    const Matrix3 stretch = transposed(rotation) * a;
    return {rotation, (stretch + transposed(stretch)) * 0.5};
}

Affine fromGmtl(const gmtl::Matrix<double, 4, 4>& matrix) {
    Affine result;
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) {
            result.linear[row][column] = matrix(row, column);
        }
        result.translation[row] = matrix(row, 3);
    }
    return result;
}

void toGmtl(const Affine& a, gmtl::Matrix<double, 4, 4>& matrix) {
    matrix.set(a.linear[0][0], a.linear[0][1], a.linear[0][2], a.translation[0], //
               a.linear[1][0], a.linear[1][1], a.linear[1][2], a.translation[1], //
               a.linear[2][0], a.linear[2][1], a.linear[2][2], a.translation[2], //
               0, 0, 0, 1);
}

} // namespace tessarin::dynamics::bullet
