#pragma once

#include <agent/Accessor.h>
#include <agent/Component.h>

#include <map>

namespace tessarin::bench {

/// A component with one field, as documents know it.
class Engine : public agent::Component {
public:
    const char* getClassName() override { return "Engine"; }
    bool getSupportedEvents(std::list<agent::AgentEvent::_AgentEventEnum>&) override { return true; }
    agent::AccessorWithObject getAccessor(const std::string& fieldName) override;
    void getFieldNames(std::list<std::string>& names) override { names.push_back("power"); }

    double power = 0;

    /// Makes the class known to documents. Further calls do nothing.
    static void registerClass();
};

} // namespace tessarin::bench
