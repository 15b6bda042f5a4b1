#include <dynamics/bullet/BulletDynamicsWorld.h>

#include <dynamics/DynamicsBodyFunctor.h>
#include <dynamics/bullet/BodyShapeBuilder.h>
#include <dynamics/bullet/BulletBody.h>
#include <dynamics/bullet/ColladaDocument.h>
#include <dynamics/bullet/ColladaPhysicsReader.h>
#include <dynamics/bullet/DynamicsLog.h>
#include <dynamics/bullet/JointMaker.h>
#include <dynamics/bullet/WorldCore.h>

#include <cassert>
#include <cmath>
#include <exception>
#include <utility>
#include <vector>

namespace tessarin::dynamics::bullet {

namespace {

using logging::Logger;

/// What a file has brought into a world. Bodies go last, though joints would stand it the other way round.
struct Made {
    std::vector<std::unique_ptr<BulletBody>> bodies;
    std::vector<std::unique_ptr<DynamicsJoint>> joints;
};

/// The square of a distance has to fit single precision.
constexpr double farthestPlace = 1e15;

gmtl::Vec<float, 3> toVelocity(const Vector3& a) {
    return {static_cast<float>(a[0]), static_cast<float>(a[1]), static_cast<float>(a[2])};
}

collada::Material materialOf(const collada::RigidBody& body) {
    if (body.material) {
        return *body.material;
    }
    for (const collada::Shape& shape : body.shapes) {
        if (shape.material) {
            return *shape.material;
        }
    }
    return {};
}

/// Null, which has been reported, if the description gives no shape.
std::unique_ptr<BulletBody> makeBody(const collada::BodyInstance& instance, const Affine& placement,
                                     const PolarParts& parts, const Affine& nodeToWorld,
                                     const std::shared_ptr<WorldCore>& core, const Report& report) {
    BodyShape shape = buildBodyShape(instance.body, parts.stretch, report);
    if (!shape.whole()) {
        report(Logger::errorLevel, "has no shape that can be used, the body is left out");
        return nullptr;
    }
    auto body = std::make_unique<BulletBody>(core, instance.name, std::move(shape), materialOf(instance.body),
                                             Affine{parts.rotation, nodeToWorld.translation});
    const Matrix3 turn = polarPartsOf(placement.linear).rotation;
    body->setLinearVelocity(toVelocity(turn * instance.velocity));
    body->setAngularVelocity(toVelocity(turn * instance.angularVelocity));
    return body;
}

/// @return what joints have to know of the body.
MadeBody addBody(const collada::BodyInstance& instance, const Affine& placement, const std::shared_ptr<WorldCore>& core,
                 const Report& report, Made& made) {
    const Affine nodeToWorld = placement * instance.nodeToWorld;
    if (!isFinite(nodeToWorld) || !(length(nodeToWorld.translation) < farthestPlace)) {
        report(Logger::errorLevel, "its place in the world is out of range, the body is left out");
        return {nullptr, identityMatrix3};
    }
    const PolarParts parts = polarPartsOf(nodeToWorld.linear);
    std::unique_ptr<BulletBody> body = makeBody(instance, placement, parts, nodeToWorld, core, report);
    BulletBody* const raw = body.get();
    if (body) {
        made.bodies.push_back(std::move(body));
    }
    return {raw, parts.stretch};
}

void makeAll(const std::string& filePath, const Affine& placement, const LoadLimits& limits,
             const std::shared_ptr<WorldCore>& core, Made& made) {
    collada::Document document(filePath);
    const collada::Element* root = document.load();
    if (!root) {
        return;
    }
    const collada::Physics physics = collada::PhysicsReader(document, *root, limits).read();
    if (physics.gravity) {
        core->setGravity(*physics.gravity);
    }
    if (physics.timeStep) {
        core->setFixedStep(*physics.timeStep);
    }
    const auto reportFor = [&filePath](const std::string& label) {
        return [&filePath, &label](int level, const std::string& text) {
            TESSARIN_LOG(logCategory(), level, filePath << ": " << label << ": " << text);
        };
    };
    std::vector<MadeBody> bodies;
    for (const collada::BodyInstance& instance : physics.bodies) {
        bodies.push_back(addBody(instance, placement, core, reportFor(instance.label), made));
    }
    for (const collada::ConstraintInstance& constraint : physics.constraints) {
        if (auto joint = makeJoint(constraint, bodies, placement, core, reportFor(constraint.label))) {
            made.joints.push_back(std::move(joint));
        }
    }
}

} // namespace

BulletDynamicsWorld::BulletDynamicsWorld() : core(std::make_shared<WorldCore>()) {}

BulletDynamicsWorld::~BulletDynamicsWorld() = default;

void BulletDynamicsWorld::loadScene(const std::string& filePath, const gmtl::Matrix<double, 4, 4>& placement,
                                    DynamicsBodyFunctor& functor) {
    Made made;
    try {
        makeAll(filePath, fromGmtl(placement), loadLimits, core, made);
    } catch (const std::exception& problem) {
        TESSARIN_LOG(logCategory(), Logger::errorLevel,
                     "no physics read from '" << filePath << "': " << problem.what());
    }
    for (std::unique_ptr<BulletBody>& body : made.bodies) {
        functor.visitBody(body.release());
    }
    for (std::unique_ptr<DynamicsJoint>& joint : made.joints) {
        functor.visitJoint(joint.release());
    }
}

int BulletDynamicsWorld::step(double seconds) {
    return core->step(seconds);
}

double BulletDynamicsWorld::getFixedStep() const {
    return core->getFixedStep();
}

void BulletDynamicsWorld::setFixedStep(double seconds) {
    const bool isStep = seconds >= 1e-6 && std::isfinite(seconds);
    assert(isStep && "a fixed step takes at least a microsecond");
    if (isStep) {
        core->setFixedStep(seconds);
    }
}

gmtl::Vec<double, 3> BulletDynamicsWorld::getGravity() const {
    const Vector3 gravity = core->getGravity();
    return {gravity[0], gravity[1], gravity[2]};
}

void BulletDynamicsWorld::setGravity(const gmtl::Vec<double, 3>& gravity) {
    const Vector3 acceleration = {gravity[0], gravity[1], gravity[2]};
    if (isFinite(acceleration)) {
        core->setGravity(acceleration);
    }
}

const std::vector<BulletContact>& BulletDynamicsWorld::getContacts() const {
    return core->getContacts().get();
}

} // namespace tessarin::dynamics::bullet
