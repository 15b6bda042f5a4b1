#pragma once

#include <sceneutils/Export.h>

#include <osg/NodeVisitor>
#include <osg/observer_ptr>

#include <string>

namespace tessarin::sceneutils {

enum class PlainNode;

/// Finds the first node with a name, by osg::Node::accept on the root of the branch to search.
///
/// First is meant depth first, a node before its children, children in their order. All children are searched, those
/// that are switched off or masked out too. The walk ends with the first hit.
class TESSARIN_SCENEUTILS_EXPORT FindNodeVisitor : public osg::NodeVisitor {
public:
    /// Names are equal byte for byte. The empty name finds the first node without one.
    explicit FindNodeVisitor(const std::string& name);
    ~FindNodeVisitor() override;

    const char* libraryName() const override { return "tessarin::sceneutils"; }
    const char* className() const override { return "FindNodeVisitor"; }

    /// Forgets what was found, for another search.
    void reset() override;

    using osg::NodeVisitor::apply;
    void apply(osg::Node& node) override;

    /// The node found, null if there was none or it has been deleted since. The visitor doesn't keep it alive.
    osg::Node* getFirst() const { return _first.get(); }

private:
    bool search(osg::Node& node, PlainNode kind);
    bool searchChild(osg::Node& child);

    std::string _name;
    osg::observer_ptr<osg::Node> _first;
};

} // namespace tessarin::sceneutils
