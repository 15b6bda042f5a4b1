#include <viewer/ModelReading.h>

#include <viewer/ChildProcess.h>
#include <viewer/SceneCheck.h>
#include <viewer/ViewerError.h>

#include <logging/Log.h>
#include <logging/Logger.h>

#include <osgDB/Registry>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <sstream>
#include <vector>

namespace tessarin::viewer {

namespace {

constexpr std::size_t mostLines = 20; // a file may name any number of others

bool isChild = false;
std::vector<std::string> linesForParent;

/// What tells one state of a file from another.
using FileState = std::array<std::int64_t, 5>;

struct Kept {
    FileState state;
    std::string message;
};

int passes = 0;
std::map<std::filesystem::path, Kept> keptMessages;

FileState stateOf(const std::filesystem::path& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0)
        return {};
    return {std::int64_t(status.st_dev), std::int64_t(status.st_ino), std::int64_t(status.st_size),
            std::int64_t(status.st_mtim.tv_sec), std::int64_t(status.st_mtim.tv_nsec)};
}

/// A file may take its time and its space. Text takes some fifty times its size while it is read.
ChildLimits limitsFor(const std::filesystem::path& file) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    constexpr double secondsPerByte = 2e-6;
    constexpr std::size_t bytesPerByte = 50;
    ChildLimits limits;
    if (!error) {
        limits.seconds += double(size) * secondsPerByte;
        limits.bytes += std::size_t(size) * bytesPerByte;
    }
    return limits;
}

osgDB::ReaderWriter& sceneFormat() {
    osgDB::ReaderWriter* const format = osgDB::Registry::instance()->getReaderWriterForExtension("osgb");
    if (!format)
        throw ViewerError("can't be read: OpenSceneGraph's plugin for its own format osgb is missing");
    return *format;
}

/// In the child: the lines for the log, each with its end, then a zero and the model.
std::string makeMessage(const std::filesystem::path& file, const ModelLimits& limits,
                        const std::function<osg::ref_ptr<osg::Node>()>& read) {
    isChild = true;
    std::error_code error;
    std::filesystem::current_path(std::filesystem::absolute(file).parent_path(), error);
    const osg::ref_ptr<osg::Node> model = read();
    if (!model)
        throw ViewerError("can't be read");
    if (const unsigned removed = makeSafe(*model, limits))
        tellParent(file.string() + ": " + std::to_string(removed) +
                   " sets of primitives use vertices that aren't there, and are left out");
    std::ostringstream message;
    for (const std::string& line : linesForParent)
        message << line << '\n';
    message << '\0';
    const osg::ref_ptr<osgDB::Options> options = new osgDB::Options("WriteImageHint=IncludeData");
    if (!sceneFormat().writeNode(*model, message, options).success())
        throw ViewerError("can't be passed on by the process that has read it");
    return message.str();
}

osg::ref_ptr<osg::Node> openMessage(const std::string& message) {
    const std::size_t end = message.find('\0');
    std::istringstream stream(message);
    for (std::string line; std::size_t(stream.tellg()) < end && std::getline(stream, line);)
        TESSARIN_LOG(logging::Logger::instance()->getCategory("viewer", true), logging::Logger::errorLevel, line);
    stream.seekg(std::streamoff(end) + 1);
    osgDB::ReaderWriter::ReadResult result = sceneFormat().readNode(stream, nullptr);
    if (!result.validNode())
        throw ViewerError("can't be taken over from the process that has read it");
    return result.getNode();
}

} // namespace

osg::ref_ptr<osg::Node> readInChild(const std::filesystem::path& file, const ModelLimits& limits,
                                    const std::function<osg::ref_ptr<osg::Node>()>& read) {
    try {
        const std::filesystem::path path = std::filesystem::absolute(file).lexically_normal();
        const FileState state = stateOf(path);
        const auto kept = keptMessages.find(path);
        if (kept != keptMessages.end() && kept->second.state == state)
            return openMessage(kept->second.message);
        std::string message = runInChild([&] { return makeMessage(file, limits, read); }, limitsFor(file));
        const osg::ref_ptr<osg::Node> model = openMessage(message);
        message.erase(0, message.find('\0')); // its lines are told once
        if (passes > 0)
            keptMessages[path] = {state, std::move(message)};
        return model;
    } catch (const ChildFailure& failure) {
        throw ViewerError(file.string() + ": can't be read: OpenSceneGraph " + failure.what());
    } catch (const ViewerError& error) {
        throw ViewerError(file.string() + ": " + error.what());
    }
}

bool isReadingChild() {
    return isChild;
}

void tellParent(const std::string& line) {
    std::string text = line;
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\n' || c == '\0'; }, ' ');
    if (std::find(linesForParent.begin(), linesForParent.end(), text) != linesForParent.end())
        return;
    if (linesForParent.size() == mostLines)
        linesForParent.back() = "there is more to be said of the files that it names";
    else
        linesForParent.push_back(text);
}

ModelPass::ModelPass() {
    ++passes;
}

ModelPass::~ModelPass() {
    if (--passes == 0)
        keptMessages.clear();
}

} // namespace tessarin::viewer
