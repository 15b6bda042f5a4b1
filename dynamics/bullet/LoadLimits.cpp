#include <dynamics/bullet/LoadLimits.h>

#include <dynamics/bullet/ColladaCount.h>
#include <dynamics/bullet/ColladaDocument.h>

#include <exception>

namespace tessarin::dynamics::bullet {

std::string findExcess(const std::string& filePath, const LoadLimits& limits) {
    try {
        collada::Document document(filePath);
        if (const collada::Element* root = document.load()) {
            collada::Counter(document).check(*root, limits);
        }
        return {};
    } catch (const std::exception& excess) {
        return excess.what();
    }
}

} // namespace tessarin::dynamics::bullet
