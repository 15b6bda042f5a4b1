#include <dynamics/bullet/ColladaPrimitives.h>

#include <dynamics/bullet/ColladaNumbers.h>

#include <algorithm>
#include <limits>

namespace tessarin::dynamics::bullet::collada {

namespace {

/// Where the vertex stands among the indices of one corner, and how many those are.
struct CornerLayout {
    long vertexOffset = 0;
    long size = 1;
};

CornerLayout layoutOf(const Element& primitives) {
    CornerLayout layout;
    for (const Element* input : childrenOf(&primitives, "input")) {
        long offset = 0;
        NumberReader(input->getAttributeValue("offset")).next(offset);
        offset = std::clamp(offset, 0L, 1000L);
        layout.size = std::max(layout.size, offset + 1);
        if (input->getAttributeValue("semantic") == "VERTEX") {
            layout.vertexOffset = offset;
        }
    }
    return layout;
}

Indices vertexIndices(const Element& list, const CornerLayout& layout) {
    Indices result;
    NumberReader reader(list.text);
    long index = 0;
    for (long place = 0; reader.next(index); place = place + 1 == layout.size ? 0 : place + 1) {
        if (place == layout.vertexOffset) {
            constexpr long largest = std::numeric_limits<unsigned>::max();
            result.push_back(static_cast<unsigned>(index < 0 ? largest : std::min(index, largest)));
        }
    }
    return result;
}

void appendStrip(const Indices& corners, Triangles& triangles) {
    for (std::size_t i = 2; i < corners.size(); ++i) {
        // Each second triangle of a strip runs the other way round.
        const std::size_t odd = i % 2;
        triangles.push_back({corners[i - 2 + odd], corners[i - 1 - odd], corners[i]});
    }
}

void appendPolylist(const Element& primitives, const Indices& corners, const std::vector<Vector3>& vertices,
                    Triangles& triangles) {
    const Element* counts = childOf(&primitives, "vcount");
    NumberReader reader(counts ? std::string_view(counts->text) : std::string_view());
    auto first = corners.begin();
    long count = 0;
    while (reader.next(count) && count >= 0 && count <= corners.end() - first) {
        appendPolygon(vertices, Indices(first, first + count), {}, triangles);
        first += count;
    }
}

void appendPolygons(const Element& primitives, const CornerLayout& layout, const std::vector<Vector3>& vertices,
                    Triangles& triangles) {
    for (const Element* polygon : childrenOf(&primitives, "p")) {
        appendPolygon(vertices, vertexIndices(*polygon, layout), {}, triangles);
    }
    for (const Element* polygonWithHoles : childrenOf(&primitives, "ph")) {
        std::vector<Indices> holes;
        for (const Element* hole : childrenOf(polygonWithHoles, "h")) {
            holes.push_back(vertexIndices(*hole, layout));
        }
        if (const Element* outline = childOf(polygonWithHoles, "p")) {
            appendPolygon(vertices, vertexIndices(*outline, layout), holes, triangles);
        }
    }
}

} // namespace

void appendTriangles(const Element& primitives, const std::vector<Vector3>& vertices, Triangles& triangles) {
    const std::string_view tag = localTag(primitives);
    const CornerLayout layout = layoutOf(primitives);
    if (tag == "polygons") {
        appendPolygons(primitives, layout, vertices, triangles);
        return;
    }
    if (tag != "triangles" && tag != "polylist" && tag != "tristrips" && tag != "trifans") {
        return;
    }
    for (const Element* list : childrenOf(&primitives, "p")) {
        const Indices corners = vertexIndices(*list, layout);
        if (tag == "triangles") {
            for (std::size_t i = 0; i + 3 <= corners.size(); i += 3) {
                appendFan(corners, i, 3, triangles);
            }
        } else if (tag == "polylist") {
            appendPolylist(primitives, corners, vertices, triangles);
        } else if (tag == "tristrips") {
            appendStrip(corners, triangles);
        } else {
            appendFan(corners, 0, corners.size(), triangles);
        }
    }
}

} // namespace tessarin::dynamics::bullet::collada
