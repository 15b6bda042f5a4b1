#include <agent/PlainModelLoader.h>

#include <agent/PlainFile.h>

#include <logging/Log.h>

#include <osgDB/Callbacks>
#include <osgDB/FileNameUtils>
#include <osgDB/FileUtils>
#include <osgDB/ReadFile>
#include <osgDB/Registry>

#include <utility>

namespace tessarin::agent {

using logging::Logger;
using osgDB::ReaderWriter;
using Result = ReaderWriter::ReadResult;

static log4cpp::Category* const category = Logger::instance()->getCategory("agent", true);

namespace {

const std::set<std::string> imageKinds = {"bmp", "bw",  "dds",  "gif", "hdr", "int", "inta", "jpeg",
                                          "jpg", "ktx", "pbm",  "pgm", "pic", "png", "pnm",  "ppm",
                                          "pvr", "rgb", "rgba", "sgi", "tga", "tif", "tiff"};

const std::set<std::string> fontKinds = {"cff", "cid", "fnt", "fon", "otf", "pfa", "pfb", "ttc", "ttf", "woff"};

} // namespace

/// Stands before all that osgDB reads. It may outlive its loader where another callback holds it; it lets everything
/// pass then.
class PlainModelLoader::Guard final : public osgDB::ReadFileCallback {
public:
    explicit Guard(PlainModelLoader& owner)
        : loader(&owner), before(osgDB::Registry::instance()->getReadFileCallback()) {
        osgDB::Registry::instance()->setReadFileCallback(this);
    }

    void release() {
        loader = nullptr;
        if (osgDB::Registry::instance()->getReadFileCallback() == this)
            osgDB::Registry::instance()->setReadFileCallback(before);
    }

    Result readNode(const std::string& name, const osgDB::Options* options) override {
        if (!loader)
            return readUnguarded(name, options);
        const std::string path = find(name, options);
        const std::string fault = loader->findFault(path);
        if (!fault.empty()) {
            loader->refused = name;
            return refuse(fault);
        }
        const osg::ref_ptr<osg::Node> node = loader->readModel(path, options);
        return node ? Result(node.get()) : Result(Result::ERROR_IN_READING_FILE);
    }

    /// Tells nothing of a file that has just been refused to another reader.
    osg::ref_ptr<osg::Node> readForLoader(const std::string& name, const osgDB::Options* options) {
        isQuiet = loader->refused == name;
        Result result = readNode(name, options);
        isQuiet = false;
        loader->refused.clear();
        return result.getNode();
    }

    Result readImage(const std::string& name, const osgDB::Options* options) override {
        const std::string path = loader ? find(name, options) : name;
        const std::string fault = loader ? findFaultOfFile(path, imageKinds, "image") : std::string();
        if (!fault.empty())
            return refuse(fault);
        return before ? before->readImage(path, options) : ReadFileCallback::readImage(path, options);
    }

    Result openArchive(const std::string& name, ReaderWriter::ArchiveStatus status, unsigned int blockSize,
                       const osgDB::Options* options) override {
        if (loader)
            return refuse(name + ": archives aren't opened");
        return before ? before->openArchive(name, status, blockSize, options)
                      : ReadFileCallback::openArchive(name, status, blockSize, options);
    }

    Result readObject(const std::string& name, const osgDB::Options* options) override {
        // Fonts come this way.
        const bool isFont = fontKinds.count(osgDB::getLowerCaseFileExtension(name)) > 0;
        if (!loader || !isFont)
            return readOther(&ReadFileCallback::readObject, name, options);
        const std::string path = find(name, options);
        const std::string fault = findFaultOfFile(path, fontKinds, "font");
        if (!fault.empty())
            return refuse(fault);
        return before ? before->readObject(path, options) : ReadFileCallback::readObject(path, options);
    }
    Result readHeightField(const std::string& name, const osgDB::Options* options) override {
        return readOther(&ReadFileCallback::readHeightField, name, options);
    }
    Result readShader(const std::string& name, const osgDB::Options* options) override {
        return readOther(&ReadFileCallback::readShader, name, options);
    }
    Result readScript(const std::string& name, const osgDB::Options* options) override {
        return readOther(&ReadFileCallback::readScript, name, options);
    }

    /// The node as it is read where no loader stands before.
    Result readUnguarded(const std::string& name, const osgDB::Options* options) {
        return before ? before->readNode(name, options) : ReadFileCallback::readNode(name, options);
    }

private:
    using Reading = Result (ReadFileCallback::*)(const std::string&, const osgDB::Options*);

    /// Where osgDB would find the file; the name itself where it wouldn't.
    static std::string find(const std::string& name, const osgDB::Options* options) {
        const std::string path = osgDB::containsServerAddress(name) ? name : osgDB::findDataFile(name, options);
        return path.empty() ? name : path;
    }

    Result refuse(const std::string& line) {
        if (!isQuiet)
            loader->tell(line);
        return Result(Result::FILE_NOT_HANDLED);
    }

    Result readOther(Reading reading, const std::string& name, const osgDB::Options* options) {
        if (loader)
            return refuse(name + ": neither a model nor an image nor a font, so it isn't read");
        // The base's own reading by its name, or it would be called as this class's again.
        if (before)
            return (before.get()->*reading)(name, options);
        const osg::ref_ptr<ReadFileCallback> plain = new ReadFileCallback;
        return (plain.get()->*reading)(name, options);
    }

    PlainModelLoader* loader;
    osg::ref_ptr<ReadFileCallback> before;
    bool isQuiet = false;
};

PlainModelLoader::PlainModelLoader(std::set<std::string> modelKinds)
    : kinds(std::move(modelKinds)), guard(new Guard(*this)) {}

PlainModelLoader::~PlainModelLoader() {
    guard->release();
}

const std::set<std::string>& PlainModelLoader::getUsualKinds() {
    static const std::set<std::string> usual = {"3ds", "ac",  "dae",  "dxf",  "flt", "ive", "lwo",
                                                "obj", "osg", "osgb", "osgt", "ply", "stl"};
    return usual;
}

std::string PlainModelLoader::findFault(const std::string& path) const {
    return findFaultOfFile(path, kinds, "model");
}

osg::ref_ptr<osg::Node> PlainModelLoader::loadModel(const std::string& path) {
    return guard->readForLoader(path, osgDB::Registry::instance()->getOptions());
}

osg::ref_ptr<osg::Node> PlainModelLoader::readModel(const std::string& path, const osgDB::Options* options) {
    Result result = guard->readUnguarded(path, options);
    return result.success() ? osg::ref_ptr<osg::Node>(result.getNode()) : nullptr;
}

void PlainModelLoader::tell(const std::string& line) {
    TESSARIN_LOG(category, Logger::errorLevel, line);
}

} // namespace tessarin::agent
