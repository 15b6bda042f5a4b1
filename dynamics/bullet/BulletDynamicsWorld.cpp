#include <dynamics/bullet/BulletDynamicsWorld.h>

#include <dynamics/DynamicsBodyFunctor.h>
#include <dynamics/bullet/BodyShapeBuilder.h>
#include <dynamics/bullet/BulletBody.h>
#include <dynamics/bullet/BulletConversions.h>
#include <dynamics/bullet/ColladaCount.h>
#include <dynamics/bullet/ColladaDocument.h>
#include <dynamics/bullet/ColladaPhysicsReader.h>
#include <dynamics/bullet/DynamicsLog.h>
#include <dynamics/bullet/JointMaker.h>
#include <dynamics/bullet/MeetingBounds.h>
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

/// A body of a file that is ready to be made, without shapes if it is left out.
struct Plan {
    BodyShape shape;
    Affine pose;
    Matrix3 stretch = identityMatrix3;
};

Plan planBody(const collada::BodyInstance& instance, const Affine& placement, const Report& report) {
    const Affine nodeToWorld = placement * instance.nodeToWorld;
    if (!isFinite(nodeToWorld) || !(length(nodeToWorld.translation) < farthestPlace)) {
        report(Logger::errorLevel, "its place in the world is out of range, the body is left out");
        return {};
    }
    const PolarParts parts = polarPartsOf(nodeToWorld.linear);
    Plan plan = {
        buildBodyShape(instance.body, parts.stretch, report), {parts.rotation, nodeToWorld.translation}, parts.stretch};
    if (!plan.shape.whole()) {
        report(Logger::errorLevel, "has no shape that can be used, the body is left out");
    }
    return plan;
}

/// @throws std::runtime_error if more pairs of bodies meet than are allowed.
void checkMeetings(const std::vector<Plan>& plans, double limit) {
    std::vector<Bounds> bounds;
    for (const Plan& plan : plans) {
        if (const btCollisionShape* const whole = plan.shape.whole()) {
            bounds.emplace_back();
            bounds.back().isMovable = plan.shape.mass > 0;
            whole->getAabb(toBullet(plan.pose * plan.shape.massFrame), bounds.back().low, bounds.back().high);
        }
    }
    collada::requireAtMost(limit, countMeetings(std::move(bounds), limit), "pairs of bodies that meet, or more");
}

/// @return what joints have to know of the body.
MadeBody addBody(const collada::BodyInstance& instance, Plan plan, const Affine& placement,
                 const std::shared_ptr<WorldCore>& core, Made& made) {
    if (!plan.shape.whole()) {
        return {nullptr, plan.stretch};
    }
    auto body =
        std::make_unique<BulletBody>(core, instance.name, std::move(plan.shape), materialOf(instance.body), plan.pose);
    const Matrix3 turn = polarPartsOf(placement.linear).rotation;
    body->setLinearVelocity(toVelocity(turn * instance.velocity));
    body->setAngularVelocity(toVelocity(turn * instance.angularVelocity));
    made.bodies.push_back(std::move(body));
    return {made.bodies.back().get(), plan.stretch};
}

void makeAll(const std::string& filePath, const Affine& placement, const LoadLimits& limits,
             const std::shared_ptr<WorldCore>& core, Made& made) {
    collada::Document document(filePath);
    const collada::Element* root = document.load();
    if (!root) {
        return;
    }
    const auto reportFor = [&filePath](const std::string& label) {
        return [&filePath, &label](int level, const std::string& text) {
            TESSARIN_LOG(logCategory(), level, filePath << ": " << label << ": " << text);
        };
    };
    const collada::Physics physics = collada::PhysicsReader(document, *root, limits).read();
    std::vector<Plan> plans;
    for (const collada::BodyInstance& instance : physics.bodies) {
        plans.push_back(planBody(instance, placement, reportFor(instance.label)));
    }
    checkMeetings(plans, limits.meetings);
    if (physics.gravity) {
        core->setGravity(*physics.gravity);
    }
    if (physics.timeStep) {
        core->setFixedStep(*physics.timeStep);
    }
    std::vector<MadeBody> bodies;
    for (std::size_t i = 0; i < plans.size(); ++i) {
        bodies.push_back(addBody(physics.bodies[i], std::move(plans[i]), placement, core, made));
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
