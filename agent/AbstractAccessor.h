#pragma once

#include <agent/Export.h>

#include <string>

namespace tessarin::agent {

/// Knows how to reach one field of one class. It is made once per field and handed the object at each use, so all
/// objects of the class share it.
///
/// An object is an untyped pointer to the start of an object of the accessor's class, as AccessorWithObject::object
/// holds it; a value is an untyped pointer to an object of the field's type.
class TESSARIN_AGENT_EXPORT AbstractAccessor {
public:
    AbstractAccessor() = default;
    AbstractAccessor(const AbstractAccessor&) = default;
    AbstractAccessor& operator=(const AbstractAccessor&) = default;
    virtual ~AbstractAccessor();

    /// Sets the field from text. Text that is no value of the field's type leaves the field as it was, and
    /// refuseFieldText() is called with what would be one.
    virtual void setAsString(void* object, const std::string& text) = 0;

    /// The field as text, such that setAsString brings back an equal value.
    virtual std::string getAsString(void* object) = 0;

    /// Sets the field from a value of the field's type.
    virtual void setValue(void* object, void* value) = 0;

    /// Copies the field into a value of the field's type.
    virtual void getValue(void* object, void* value) = 0;
};

/// An accessor and the object to use it on: the answer of Component::getAccessor. It owns nothing. Both are null if the
/// component has no such field.
struct AccessorWithObject {
    AbstractAccessor* accessor = nullptr;
    void* object = nullptr;
};

} // namespace tessarin::agent
