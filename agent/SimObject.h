#pragma once

#include <agent/Export.h>

#include <string>

namespace tessarin::agent {

/// The base of everything that lives in an agent tree: a name, and the name of the class as text.
///
/// The name is the object's own and need not be unique; documents and searches use it. The class name is the text under
/// which SimObjectDB makes such an object.
class TESSARIN_AGENT_EXPORT SimObject {
public:
    virtual ~SimObject();

    /// The class name as text, with static storage.
    virtual const char* getClassName() = 0;

    SimObject(const SimObject&) = default;
    SimObject& operator=(const SimObject& other) {
        setName(other.objectName);
        return *this;
    }

    const std::string& getName() const { return objectName; }

    void setName(const std::string& newName) {
        if (renaming)
            renaming(*this, newName);
        objectName = newName;
    }

protected:
    SimObject() = default;

private:
    friend class AgentNode;

    std::string objectName; // not called name, so that it shadows no argument in derived classes

    // What wants to hear of new names before they hold, or null: a pass over a document that remembers names.
    static void (*renaming)(SimObject& object, const std::string& newName);
};

} // namespace tessarin::agent
