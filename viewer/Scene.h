#pragma once

#include <osg/Group>
#include <osg/ref_ptr>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace tessarin::agent {
class AgentNode;
}
namespace tessarin::dynamics::bullet {
class BulletDynamicsWorld;
}

namespace tessarin::viewer {

/// What a file holds, alive: a tree of agents and the dynamics world that their bodies move in.
///
/// The file is an agent document, by its extension "xml", or a model. A model alone becomes an agent with a visual
/// model component; each of its bodies' agents gets the geometry of its node, and the agent itself what belongs to no
/// body.
///
/// There is one scene at a time in the program: its world is that of all agents.
class Scene {
public:
    /// @param patches documents that are applied to the root, in this order.
    /// @throws ViewerError if a file is missing, malformed or of another kind.
    explicit Scene(std::filesystem::path file, std::vector<std::filesystem::path> patches = {});
    ~Scene();
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    /// Begins anew from the files. If that fails, the scene stays as it was.
    /// @throws ViewerError as the constructor does.
    void reload();

    /// Applies a document to the root agent.
    /// @throws ViewerError as the constructor does.
    void apply(const std::filesystem::path& patch);

    /// How many lines of faults were logged by what was read last: by all files together when the scene began, by the
    /// document that was applied since. The log tells the number for each file too.
    int getFaultCount() const;

    /// Writes the agents as they stand as a document.
    /// @throws ViewerError if the file can't be written.
    void write(const std::filesystem::path& document);

    agent::AgentNode& getRoot();
    dynamics::bullet::BulletDynamicsWorld& getWorld();

    /// What is to be drawn; the same group after a reload.
    osg::Group& getGraph() { return *graph; }

    const std::filesystem::path& getFile() const { return file; }

private:
    struct Content;

    std::unique_ptr<Content> load() const;

    std::filesystem::path file;
    std::vector<std::filesystem::path> patches;
    osg::ref_ptr<osg::Group> graph = new osg::Group;
    std::unique_ptr<Content> content;
};

} // namespace tessarin::viewer
