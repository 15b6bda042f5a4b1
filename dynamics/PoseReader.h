#pragma once

#include <dynamics/Export.h>
#include <dynamics/PoseSource.h>

#include <cstdint>
#include <memory>

namespace tessarin::dynamics {

/// Follows the poses of a body for somebody who carries them on, to an agent for example: as long as this stands, the
/// body is active until the present pose has been confirmed. A reader that follows nobody does nothing.
class TESSARIN_DYNAMICS_EXPORT PoseReader {
public:
    PoseReader() = default;
    ~PoseReader() { leave(); }
    PoseReader(const PoseReader&) = delete;
    PoseReader& operator=(const PoseReader&) = delete;

    /// Follows a source, of which no pose has been taken over yet, instead of the one before. The source may end
    /// earlier than the reader.
    /// @param source null to follow nobody.
    void follow(const PoseSource* source) {
        leave();
        ledger = source ? source->ledger : nullptr;
        if (ledger)
            ++ledger->readers;
    }

    /// The present pose has been taken over.
    void confirm() {
        if (!ledger || isUpToDate())
            return;
        taken = ledger->pose;
        ++ledger->upToDate;
    }

    /// The pose that was taken over is lost: it has to come once more.
    void forget() {
        if (ledger && isUpToDate())
            --ledger->upToDate;
        taken = 0;
    }

private:
    bool isUpToDate() const { return taken == ledger->pose; }

    void leave() {
        forget();
        if (ledger)
            --ledger->readers;
        ledger.reset();
    }

    std::shared_ptr<PoseSource::Ledger> ledger;
    std::uint64_t taken = 0; // the number of the pose
};

} // namespace tessarin::dynamics
