#include <dynamics/bullet/ColladaPolygons.h>

#include <algorithm>
#include <limits>

namespace tessarin::dynamics::bullet::collada {

namespace {

/// Cutting takes the square of the number of corners.
constexpr std::size_t maxCorners = 1000;

Vector3 areaOf(const std::vector<Vector3>& vertices, const Indices& ring) {
    Vector3 area = {0, 0, 0};
    for (std::size_t i = 2; i < ring.size(); ++i) {
        const Vector3& origin = vertices[ring[0]];
        area = area + cross(vertices[ring[i - 1]] - origin, vertices[ring[i]] - origin);
    }
    return area;
}

/// Cuts corners off a ring until nothing is left.
class EarCutter {
public:
    EarCutter(const std::vector<Vector3>& points, const Indices& outline)
        : vertices(points), ring(outline), normal(areaOf(points, outline)), nothing(1e-12 * dot(normal, normal)) {}

    bool isConvex() const {
        for (std::size_t i = 0; i < ring.size(); ++i) {
            if (turn(before(i), ring[i], after(i)) < 0) {
                return false;
            }
        }
        return true;
    }

    /// Makes the holes part of the ring, one after the other. False if some are left that no cut leads to.
    bool join(std::vector<Indices> holes) {
        holes.erase(std::remove(holes.begin(), holes.end(), Indices()), holes.end());
        for (std::size_t misses = 0; misses < holes.size();) {
            // One that lies behind others waits until these are part of the ring.
            if (join(holes.front(), holes)) {
                misses = 0;
            } else {
                holes.push_back(holes.front());
                ++misses;
            }
            holes.erase(holes.begin());
        }
        return holes.empty();
    }

    /// False if some corners were left that none can be cut off of.
    bool cut(Triangles& triangles) {
        std::size_t misses = 0;
        for (std::size_t i = 0; ring.size() > 3 && misses < ring.size();) {
            i %= ring.size();
            const double size = turn(before(i), ring[i], after(i));
            if (size > nothing && !isEar(i)) {
                ++misses;
                ++i;
                continue;
            }
            if (size < -nothing) {
                ++misses;
                ++i;
                continue;
            }
            if (size > nothing) {
                triangles.push_back({before(i), ring[i], after(i)});
            }
            ring.erase(ring.begin() + static_cast<std::ptrdiff_t>(i));
            misses = 0;
        }
        if (ring.size() == 3) {
            triangles.push_back({ring[0], ring[1], ring[2]});
        }
        return ring.size() <= 3;
    }

private:
    /// Cuts from the ring to a hole where that is nearest. False if each cut crosses something.
    /// @param holes all that aren't part of the ring, this one included.
    bool join(Indices hole, const std::vector<Indices>& holes) {
        if (dot(areaOf(vertices, hole), normal) > 0) {
            std::reverse(hole.begin(), hole.end());
        }
        double least = std::numeric_limits<double>::infinity();
        std::size_t ringEnd = 0;
        std::size_t holeEnd = 0;
        for (std::size_t i = 0; i < ring.size(); ++i) {
            for (std::size_t j = 0; j < hole.size(); ++j) {
                const Vector3 cut = vertices[hole[j]] - vertices[ring[i]];
                if (dot(cut, cut) < least && leadsInwards(i, hole[j]) && !crosses(ring[i], hole[j], ring) &&
                    !crosses(ring[i], hole[j], holes)) {
                    least = dot(cut, cut);
                    ringEnd = i;
                    holeEnd = j;
                }
            }
        }
        if (least == std::numeric_limits<double>::infinity()) {
            return false;
        }
        std::rotate(hole.begin(), hole.begin() + static_cast<std::ptrdiff_t>(holeEnd), hole.end());
        hole.push_back(hole.front());
        hole.push_back(ring[ringEnd]);
        ring.insert(ring.begin() + static_cast<std::ptrdiff_t>(ringEnd) + 1, hole.begin(), hole.end());
        return true;
    }

    unsigned before(std::size_t i) const { return ring[(i + ring.size() - 1) % ring.size()]; }
    unsigned after(std::size_t i) const { return ring[(i + 1) % ring.size()]; }

    /// Above zero where the three run round as the outline does.
    double turn(unsigned a, unsigned b, unsigned c) const {
        return dot(normal, cross(vertices[b] - vertices[a], vertices[c] - vertices[a]));
    }

    bool isEar(std::size_t i) const {
        const unsigned a = before(i);
        const unsigned b = ring[i];
        const unsigned c = after(i);
        return std::none_of(ring.begin(), ring.end(), [&](unsigned other) {
            return other != a && other != b && other != c && turn(a, b, other) >= 0 && turn(b, c, other) >= 0 &&
                   turn(c, a, other) >= 0;
        });
    }

    /// Cuts leave several corners of the ring at one place, each with another part of what is inside before it.
    bool leadsInwards(std::size_t i, unsigned to) const {
        const bool isLeftOfBefore = turn(before(i), ring[i], to) > 0;
        const bool isLeftOfAfter = turn(ring[i], after(i), to) > 0;
        const bool isNotch = turn(before(i), ring[i], after(i)) < 0;
        return isNotch ? isLeftOfBefore || isLeftOfAfter : isLeftOfBefore && isLeftOfAfter;
    }

    bool crosses(unsigned a, unsigned b, const std::vector<Indices>& rings) const {
        return std::any_of(rings.begin(), rings.end(), [&](const Indices& edges) { return crosses(a, b, edges); });
    }

    bool crosses(unsigned a, unsigned b, const Indices& edges) const {
        for (std::size_t i = 0; i < edges.size(); ++i) {
            const unsigned c = edges[i];
            const unsigned d = edges[(i + 1) % edges.size()];
            if (c != a && c != b && d != a && d != b && turn(a, b, c) * turn(a, b, d) <= 0 &&
                turn(c, d, a) * turn(c, d, b) <= 0) {
                return true;
            }
        }
        return false;
    }

    const std::vector<Vector3>& vertices;
    Indices ring;
    Vector3 normal;
    double nothing;
};

} // namespace

void appendFan(const Indices& corners, std::size_t first, std::size_t count, Triangles& triangles) {
    for (std::size_t i = 2; i < count; ++i) {
        triangles.push_back({corners[first], corners[first + i - 1], corners[first + i]});
    }
}

void appendPolygon(const std::vector<Vector3>& vertices, const Indices& outline, const std::vector<Indices>& holes,
                   Triangles& triangles) {
    const auto isThere = [&](const Indices& ring) {
        return std::all_of(ring.begin(), ring.end(), [&](unsigned index) { return index < vertices.size(); });
    };
    std::size_t corners = outline.size();
    bool canBeCut = isThere(outline);
    for (const Indices& hole : holes) {
        corners += hole.size();
        canBeCut = canBeCut && isThere(hole);
    }
    const std::size_t before = triangles.size();
    if (canBeCut && corners > 3 && corners <= maxCorners) {
        EarCutter cutter(vertices, outline);
        if (!holes.empty() || !cutter.isConvex()) {
            if (cutter.join(holes) && cutter.cut(triangles)) {
                return;
            }
            triangles.resize(before);
        }
    }
    appendFan(outline, 0, outline.size(), triangles);
}

} // namespace tessarin::dynamics::bullet::collada
