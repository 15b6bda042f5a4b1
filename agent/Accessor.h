#pragma once

#include <agent/AbstractAccessor.h>
#include <agent/Export.h>
#include <agent/FieldRefusal.h>
#include <agent/FieldText.h>

#include <cstddef>
#include <string>

namespace tessarin::agent {

/// The accessor of a field of type T that stands at a fixed distance from the start of its object.
///
/// It works for every type that FieldText knows. A class makes one per field and keeps them in a table by name:
/// @code
/// table["mass"] = new Accessor<float>(offsetof(Wheel, mass));
/// @endcode
template <class T>
class TESSARIN_AGENT_EXPORT Accessor : public AbstractAccessor {
public:
    /// @param offset distance in bytes of the field from the start of the object.
    explicit Accessor(std::size_t offset) : fieldOffset(offset) {}

    void setAsString(void* object, const std::string& text) override {
        T value{};
        if (FieldText<T>::read(text, value))
            set(object, value);
        else
            refuseFieldText(expectedText<T>());
    }

    std::string getAsString(void* object) override { return FieldText<T>::write(get(object)); }

    void setValue(void* object, void* value) override { set(object, *static_cast<const T*>(value)); }

    void getValue(void* object, void* value) override {
        T& field = get(object);
        if (value != &field)
            *static_cast<T*>(value) = field;
    }

    /// Assigns the value to the field.
    virtual void set(void* object, const T& value) { get(object) = value; }

    /// The field itself.
    virtual T& get(void* object) { return *reinterpret_cast<T*>(static_cast<char*>(object) + fieldOffset); }

private:
    std::size_t fieldOffset;
};

extern template class TESSARIN_AGENT_EXPORT Accessor<std::string>;

} // namespace tessarin::agent
