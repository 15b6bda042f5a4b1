#pragma once

#include <dynamics/Export.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tessarin::dynamics {

/// What a DynamicsBody may be besides, so that it knows whether its pose has reached all who follow it: a component
/// finds it by a run-time cast and follows it with a PoseReader.
///
/// Reading a pose changes nothing here. The body says when its pose has changed, each reader says when it has taken the
/// pose over, and as long as one of them is behind, the body answers DynamicsBody::isActive with true.
class TESSARIN_DYNAMICS_EXPORT PoseSource {
public:
    PoseSource(const PoseSource&) = delete;
    PoseSource& operator=(const PoseSource&) = delete;

    /// Whoever has followed doesn't any more. For an owner who gives the body away.
    void dismissReaders() { ledger = std::make_shared<Ledger>(); }

protected:
    PoseSource() = default;
    virtual ~PoseSource() = default;

    /// To be called by the body whenever its pose is or may be another, whoever changed it.
    void poseChanged() {
        ++ledger->pose;
        ledger->upToDate = 0;
    }

    /// Whether anybody follows the poses.
    bool hasPoseReaders() const { return ledger->readers > 0; }

    /// Whether one of those has not taken over the present pose.
    bool isPoseDue() const { return ledger->upToDate < ledger->readers; }

private:
    friend class PoseReader;

    /// Shared with the readers, so that body and readers may end in any order.
    struct Ledger {
        std::uint64_t pose = 1; // the number of the present pose
        std::size_t readers = 0;
        std::size_t upToDate = 0; // so many of them have the present pose
    };

    std::shared_ptr<Ledger> ledger = std::make_shared<Ledger>();
};

} // namespace tessarin::dynamics
