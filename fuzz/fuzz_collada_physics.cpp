// Any bytes as the physics of a COLLADA file: reading and stepping end without a fault, and the bodies that come out
// have poses that are numbers.

#include <dynamics/DynamicsBody.h>
#include <dynamics/DynamicsBodyFunctor.h>
#include <dynamics/DynamicsJoint.h>
#include <dynamics/bullet/BulletDynamicsWorld.h>
#include <logging/Logger.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

using namespace tessarin::dynamics;

namespace {

struct Keeper final : DynamicsBodyFunctor {
    void visitJoint(DynamicsJoint* joint) override { joints.emplace_back(joint); }
    void visitBody(DynamicsBody* body) override { bodies.emplace_back(body); }

    std::vector<std::unique_ptr<DynamicsJoint>> joints;
    std::vector<std::unique_ptr<DynamicsBody>> bodies;
};

// A file in memory that holds the input, with a path to open it by.
class InputFile {
public:
    InputFile(const std::uint8_t* data, std::size_t size) : descriptor(memfd_create("input.dae", 0)) {
        if (descriptor < 0 || write(descriptor, data, size) != static_cast<ssize_t>(size))
            std::abort();
    }
    ~InputFile() { close(descriptor); }

    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    std::string getPath() const { return "/proc/self/fd/" + std::to_string(descriptor); }

private:
    int descriptor;
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    tessarin::logging::Logger::instance()->setLevel(0);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const InputFile file(data, size);
    bullet::BulletDynamicsWorld world;
    Keeper keeper;
    world.loadScene(file.getPath(), gmtl::Matrix<double, 4, 4>(), keeper);
    for (int i = 0; i < 3; ++i)
        world.step(world.getFixedStep());

    for (const auto& body : keeper.bodies) {
        gmtl::Matrix<double, 4, 4> pose;
        body->getMatrix(pose);
        for (int i = 0; i < 16; ++i)
            if (!std::isfinite(pose.getData()[i]))
                std::abort();
    }
    return 0;
}
