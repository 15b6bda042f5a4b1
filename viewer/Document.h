#pragma once

#include <xml_parser/XMLNode.h>

#include <filesystem>
#include <memory>
#include <set>
#include <string>

namespace tessarin::viewer {

/// An agent document of a file, made ready for agents: the models that it names are found from the document's folder,
/// and not from wherever the program was started.
class Document {
public:
    /// @throws ViewerError if the file is missing, malformed or no agent document, or if it names a model that is not
    /// there or not well formed.
    explicit Document(const std::filesystem::path& file);
    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    /// A document that makes an agent with a model. The path is taken as it is from the present folder.
    static std::unique_ptr<xml_parser::XMLNode> ofModel(const std::filesystem::path& model,
                                                        const std::string& agentName);

    /// Writes the branch of a document as a file. Models in the file's folder or below are named from there, others by
    /// their whole path, so that the file can be read again from anywhere.
    /// @throws ViewerError if the file can't be written.
    static void write(xml_parser::XMLNode& root, const std::filesystem::path& file);

    xml_parser::XMLNode* getRoot() const;

    /// The models that the document names, by their whole paths.
    const std::set<std::string>& getModels() const;

private:
    class Content;
    std::unique_ptr<Content> content;
};

/// What of a document places agents: names, transforms, geometry and bodies, without any fields. Creation reads no
/// transform and ties no geometry of the agents that it makes; applying this afterwards does both and makes nothing
/// new.
std::unique_ptr<xml_parser::XMLNode> placementOf(const xml_parser::XMLNode& agent);

} // namespace tessarin::viewer
