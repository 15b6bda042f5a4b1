#include <dynamics/bullet/ColladaPrimitives.h>

#include <dynamics/bullet/ColladaNumbers.h>

#include <algorithm>
#include <limits>

namespace tessarin::dynamics::bullet::collada {

namespace {

using Indices = std::vector<unsigned>;
using Triangles = std::vector<std::array<unsigned, 3>>;

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

void appendFan(const Indices& corners, std::size_t first, std::size_t count, Triangles& triangles) {
    for (std::size_t i = 2; i < count; ++i) {
        triangles.push_back({corners[first], corners[first + i - 1], corners[first + i]});
    }
}

void appendStrip(const Indices& corners, Triangles& triangles) {
    for (std::size_t i = 2; i < corners.size(); ++i) {
        // Each second triangle of a strip runs the other way round.
        const std::size_t odd = i % 2;
        triangles.push_back({corners[i - 2 + odd], corners[i - 1 - odd], corners[i]});
    }
}

void appendPolylist(const Element& primitives, const Indices& corners, Triangles& triangles) {
    const Element* counts = childOf(&primitives, "vcount");
    NumberReader reader(counts ? std::string_view(counts->text) : std::string_view());
    std::size_t first = 0;
    long count = 0;
    while (reader.next(count) && count >= 0 && static_cast<std::size_t>(count) <= corners.size() - first) {
        appendFan(corners, first, static_cast<std::size_t>(count), triangles);
        first += static_cast<std::size_t>(count);
    }
}

} // namespace

void appendTriangles(const Element& primitives, Triangles& triangles) {
    const std::string_view tag = localTag(primitives);
    if (tag != "triangles" && tag != "polylist" && tag != "polygons" && tag != "tristrips" && tag != "trifans") {
        return;
    }
    const CornerLayout layout = layoutOf(primitives);
    std::vector<const Element*> lists = childrenOf(&primitives, "p");
    for (const Element* polygonWithHoles : childrenOf(&primitives, "ph")) {
        if (const Element* outline = childOf(polygonWithHoles, "p")) {
            lists.push_back(outline);
        }
    }
    for (const Element* list : lists) {
        const Indices corners = vertexIndices(*list, layout);
        if (tag == "triangles") {
            for (std::size_t i = 0; i + 3 <= corners.size(); i += 3) {
                appendFan(corners, i, 3, triangles);
            }
        } else if (tag == "polylist") {
            appendPolylist(primitives, corners, triangles);
        } else if (tag == "tristrips") {
            appendStrip(corners, triangles);
        } else {
            appendFan(corners, 0, corners.size(), triangles);
        }
    }
}

} // namespace tessarin::dynamics::bullet::collada
