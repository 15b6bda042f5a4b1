#pragma once

#include <dynamics/Export.h>

namespace tessarin::dynamics {

/// What a body can point back at: whoever owns a body derives from this class and hands itself to
/// DynamicsBody::setUserData. An engine keeps the pointer and may cast it at run time; it never deletes it.
class TESSARIN_DYNAMICS_EXPORT DynamicsUserData {
public:
    virtual ~DynamicsUserData() = 0;

protected:
    DynamicsUserData() = default;
    DynamicsUserData(const DynamicsUserData&) = default;
    DynamicsUserData& operator=(const DynamicsUserData&) = default;
};

inline DynamicsUserData::~DynamicsUserData() = default;

} // namespace tessarin::dynamics
