#include <dynamics/bullet/JointMaker.h>

#include <dynamics/bullet/BulletBody.h>
#include <dynamics/bullet/BulletJoint.h>
#include <dynamics/bullet/JointCore.h>

#include <logging/Logger.h>

#include <algorithm>
#include <utility>

namespace tessarin::dynamics::bullet {

namespace {

using logging::Logger;

/// The square of a distance has to fit single precision.
constexpr double farthestPlace = 1e15;

Affine rigid(const Affine& placement) {
    return {polarPartsOf(placement.linear).rotation, placement.translation};
}

JointCore::Side makeSide(const collada::Attachment& attachment, const std::vector<MadeBody>& bodies,
                         const Affine& placement) {
    const Affine local = attachment.placement.value_or(Affine());
    if (!attachment.body) {
        return {nullptr, rigid(placement * local)};
    }
    const MadeBody& made = bodies[*attachment.body];
    return {made.body, {polarPartsOf(local.linear).rotation, made.stretch * local.translation}};
}

/// Puts a side that has no place of its own where the other one is.
void meet(JointCore::Side& side, const JointCore::Side& other) {
    const Affine world = other.body ? other.body->getPose() * other.frame : other.frame;
    side.frame = side.body ? rigidInverse(side.body->getPose()) * world : world;
}

} // namespace

std::unique_ptr<DynamicsJoint> makeJoint(const collada::ConstraintInstance& description,
                                         const std::vector<MadeBody>& bodies, const Affine& placement,
                                         const std::shared_ptr<WorldCore>& core, const Report& report) {
    for (const collada::Attachment* attachment : {&description.first, &description.second}) {
        if (attachment->body && !bodies[*attachment->body].body) {
            report(Logger::errorLevel, "a body that it is attached to was left out, and so is the joint");
            return nullptr;
        }
    }
    JointCore::Side first = makeSide(description.first, bodies, placement);
    JointCore::Side second = makeSide(description.second, bodies, placement);
    if (first.body == second.body) {
        report(Logger::errorLevel, "both its attachments are to one body, the joint is left out");
        return nullptr;
    }
    for (const JointCore::Side* side : {&first, &second}) {
        if (!isFinite(side->frame) || !(length(side->frame.translation) < farthestPlace)) {
            report(Logger::errorLevel, "the place of an attachment is out of range, the joint is left out");
            return nullptr;
        }
    }
    if (!description.first.placement) {
        meet(first, second);
    } else if (!description.second.placement) {
        meet(second, first);
    }
    auto joint = std::make_unique<JointCore>(core, description, first, second);
    const auto countFree = [&](std::size_t begin) {
        int count = 0;
        for (std::size_t axis = begin; axis < begin + 3; ++axis) {
            count += joint->isLocked(axis) ? 0 : 1;
        }
        return count;
    };
    const int translations = countFree(0);
    const int rotations = countFree(3);
    std::unique_ptr<DynamicsJoint> result;
    if (translations == 0 && rotations == 1) {
        result = std::make_unique<BulletRevoluteJoint>(std::move(joint));
    } else if (translations == 1 && rotations == 0) {
        result = std::make_unique<BulletPrismaticJoint>(std::move(joint));
    } else {
        result = std::make_unique<BulletD6Joint>(std::move(joint));
    }
    result->name = description.name;
    return result;
}

} // namespace tessarin::dynamics::bullet
