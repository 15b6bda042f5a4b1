#pragma once

#include <dynamics/bullet/ColladaDocument.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace tessarin::dynamics::bullet::collada {

/// Finds what models hold, by the paths in which instances of bodies and constraints name it.
///
/// A model that is instanced several times holds each of its bodies as many times. Which of them is meant tells the
/// scope: a number for each instance of a model within the instances around it, 0 for the world.
class Models {
public:
    struct Found {
        /// Null if there is none.
        const Element* element = nullptr;
        int scope = 0;
    };

    Models(const Document& document, const Element& root);

    /// The scope of an instance of a model in another scope.
    int enter(int outer, const Element& instance);

    /// The child with that tag of a model, or of those instanced in it, else of any model of the file, by sid, id or
    /// name. Without a name it is the only one that the model has.
    /// @param index of those of one name; the last of them if there aren't as many.
    Found find(int scope, const Element* model, std::string_view tag, const std::string& reference,
               std::size_t index = 0);

private:
    /// What a model holds itself, by tag and name, in document order.
    using Names = std::unordered_map<std::string, std::vector<const Element*>>;

    /// The first that holds something with that tag and name: a model, or the instance of one.
    using Holders = std::unordered_map<std::string, const Element*>;

    Found findByPath(int scope, const Element* model, std::string_view tag, const std::vector<std::string>& steps,
                     std::size_t index);
    const Element* modelOf(const Element& instance) const;
    const Element* namedIn(const Element* model, std::string_view tag, const std::string& name, std::size_t index);
    const Names& namesIn(const Element* model);
    const Holders& nestedIn(const Element* model);
    const Holders& all();
    static void noteNames(const Element* model, const Element* holder, Holders& holders);

    const Document& document;
    const Element& root;
    std::map<std::pair<int, const Element*>, int> scopes;
    std::unordered_map<const Element*, Names> names;
    std::unordered_map<const Element*, Holders> nested;
    std::optional<Holders> anywhere;
};

} // namespace tessarin::dynamics::bullet::collada
