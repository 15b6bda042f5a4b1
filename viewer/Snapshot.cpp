#include <viewer/Snapshot.h>

#include <osgDB/WriteFile>

namespace tessarin::viewer {

Snapshot::Snapshot(std::filesystem::path fileToWrite) : file(std::move(fileToWrite)) {}

void Snapshot::operator()(const osg::Image& image, unsigned int) {
    written = osgDB::writeImageFile(image, file.string());
}

} // namespace tessarin::viewer
