#pragma once

#include <dynamics/bullet/ColladaDocument.h>
#include <dynamics/bullet/LoadLimits.h>

#include <cstddef>
#include <unordered_map>

namespace tessarin::dynamics::bullet::collada {

/// How deep models may be nested: each level takes some of the stack.
constexpr std::size_t maxModelDepth = 256;

/// Counts what the physics scenes of a file instance, without reading it: each model is looked at once.
class Counter {
public:
    explicit Counter(const Document& file) : document(file) {}

    /// @throws std::runtime_error that says what a file would become too much of.
    void check(const Element& root, const LoadLimits& limits);

private:
    struct Count {
        double modelInstances = 0;
        double bodies = 0;
        double joints = 0;

        Count& operator+=(const Count& other);
    };

    Count countInstances(const Element& element, std::size_t depth);
    Count countModel(const Element& model, std::size_t depth);

    const Document& document;
    std::unordered_map<const Element*, Count> models;
};

/// @throws std::runtime_error if there is more of something than is allowed.
void requireAtMost(double limit, double count, const char* what);

} // namespace tessarin::dynamics::bullet::collada
