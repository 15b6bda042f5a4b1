#pragma once

#include <gmtl/Matrix.h>
#include <gmtl/Quat.h>
#include <gmtl/Vec.h>

#include <string>

namespace tessarin::xml_parser {
class XMLNode;
}

namespace tessarin::agent {

/// The pose that the Transform of an AgentNode element describes; the origin without rotation where there is none.
struct DocumentTransform {
    enum State { MISSING, READ, UNREADABLE };

    /// Reads the pose from an AgentNode element. One that is incomplete or holds something other than numbers is
    /// logged, with the agent's name, and leaves the pose as it was.
    State read(const xml_parser::XMLNode& agentElement, const std::string& agentName);

    /// Whether a body may be put there.
    bool isUsable() const { return state != UNREADABLE; }

    State state = MISSING;
    gmtl::Vec<double, 3> translation{0.0, 0.0, 0.0};
    gmtl::Quat<double> rotation;
    gmtl::Matrix<double, 4, 4> matrix;
};

} // namespace tessarin::agent
