#pragma once

#include <agent/VisualModelComponent.h>
#include <agent/VisualModelComponentModelLoader.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tessarin::doubles {

/// Gives the models that the test has put under their paths, and is every component's loader as long as it lives.
class ModelLoaderDouble : public agent::VisualModelComponentModelLoader {
public:
    ModelLoaderDouble() { agent::VisualModelComponent::setModelLoader(this); }
    ModelLoaderDouble(const ModelLoaderDouble&) = delete;
    ModelLoaderDouble& operator=(const ModelLoaderDouble&) = delete;
    ~ModelLoaderDouble() override { agent::VisualModelComponent::setModelLoader(nullptr); }

    osg::ref_ptr<osg::Node> loadModel(const std::string& path) override {
        paths.push_back(path);
        if (whileLoading)
            whileLoading();
        const auto found = models.find(path);
        return found == models.end() ? nullptr : found->second;
    }

    std::map<std::string, osg::ref_ptr<osg::Node>> models;
    std::vector<std::string> paths;
    std::function<void()> whileLoading;
};

} // namespace tessarin::doubles
