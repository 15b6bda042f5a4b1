#include <dynamics/bullet/RoundMesh.h>

#include <cmath>

namespace tessarin::dynamics::bullet {

namespace {

constexpr double pi = 3.14159265358979323846;

/// @param part of the cap's quarter turn, from 0 at the tip to 1 at the rim.
Ring capRing(const std::array<double, 2>& radius, double centre, double side, double part) {
    const double sine = std::sin(part * pi / 2);
    const double rise = std::sqrt(radius[0] * radius[1]) * std::cos(part * pi / 2);
    return {centre + side * rise, radius[0] * sine, radius[1] * sine};
}

} // namespace

std::vector<Ring> makeCapsuleRings(const std::array<double, 2>& lowerRadius, const std::array<double, 2>& upperRadius,
                                   double height, unsigned ringsPerCap) {
    std::vector<Ring> rings;
    for (unsigned i = 0; i < ringsPerCap; ++i) {
        rings.push_back(capRing(lowerRadius, -height / 2, -1, static_cast<double>(i) / (ringsPerCap - 1)));
    }
    for (unsigned i = ringsPerCap; i-- > 0;) {
        rings.push_back(capRing(upperRadius, height / 2, 1, static_cast<double>(i) / (ringsPerCap - 1)));
    }
    return rings;
}

collada::Mesh makeRoundMesh(const std::vector<Ring>& rings, unsigned corners) {
    collada::Mesh mesh;
    const auto count = static_cast<unsigned>(rings.size());
    for (const Ring& ring : rings) {
        for (unsigned i = 0; i < corners; ++i) {
            const double angle = 2 * pi * i / corners;
            mesh.vertices.push_back({ring.radiusX * std::cos(angle), ring.y, ring.radiusZ * std::sin(angle)});
        }
    }
    mesh.vertices.push_back({0, rings.front().y, 0});
    mesh.vertices.push_back({0, rings.back().y, 0});
    const unsigned lowest = count * corners;
    for (unsigned i = 0; i < corners; ++i) {
        const unsigned next = (i + 1) % corners;
        mesh.triangles.push_back({lowest, i, next});
        mesh.triangles.push_back({lowest + 1, (count - 1) * corners + next, (count - 1) * corners + i});
        for (unsigned ring = 0; ring + 1 < count; ++ring) {
            const unsigned low = ring * corners;
            const unsigned high = low + corners;
            mesh.triangles.push_back({low + i, high + i, high + next});
            mesh.triangles.push_back({low + i, high + next, low + next});
        }
    }
    return mesh;
}

} // namespace tessarin::dynamics::bullet
