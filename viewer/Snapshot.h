#pragma once

#include <osgViewer/ViewerEventHandlers>

#include <filesystem>

namespace tessarin::viewer {

/// Writes a captured frame to one file, of the format that its extension says.
class Snapshot : public osgViewer::ScreenCaptureHandler::CaptureOperation {
public:
    explicit Snapshot(std::filesystem::path file);

    /// Remembers a failure instead of throwing it through the viewer.
    void operator()(const osg::Image& image, unsigned int contextId) override;

    /// True once the picture is written.
    bool isWritten() const { return written; }

private:
    std::filesystem::path file;
    bool written = false;
};

} // namespace tessarin::viewer
