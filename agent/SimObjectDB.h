#pragma once

#include <agent/Export.h>
#include <agent/Forward.h>

#include <istream>
#include <map>
#include <string>

namespace tessarin::agent {

/// Makes objects by class name: the one place that knows which classes there are.
///
/// The library registers its five component classes when it is loaded; a host adds its own at any time. Documents name
/// classes as text, and nothing else in the library names a concrete component class when it makes one, so registering
/// a factory under the name of a standard class replaces that class everywhere.
///
/// The database is made at the first call of instance() and lives to the end of the process. It has no locks: the first
/// call and all registrations belong to one thread.
class TESSARIN_AGENT_EXPORT SimObjectDB {
public:
    virtual ~SimObjectDB();

    /// The one database. Never null.
    static SimObjectDB* instance();

    /// Stores a factory under a class name. A second registration under a name replaces the first without a word; the
    /// replaced factory is left alone.
    /// @param factory not null; not owned, and valid to the end of the process.
    void registerFactory(SimObjectFactory* factory, const std::string& name);

    /// A new object of the class, unnamed and owned by the caller, or null if the name isn't registered. Names match
    /// exactly, byte for byte.
    SimObject* createObject(const std::string& name);

    /// Makes what the root of a document describes: an agent with its branch, for which AGENT_CREATED is sent, or a
    /// component that is on no agent and not initialised. It belongs to the caller. Null for any other root and for
    /// text that is no document.
    SimObject* createObjectFromXML(std::istream& stream);

    /// A copy holds the same factories.
    SimObjectDB(const SimObjectDB&) = default;
    SimObjectDB& operator=(const SimObjectDB&) = default;

protected:
    SimObjectDB() = default;

    static SimObjectDB* _instance;

private:
    std::map<std::string, SimObjectFactory*> factories;
};

} // namespace tessarin::agent
