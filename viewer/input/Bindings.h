#pragma once

#include <agent/VirtualInput.h>

#include <filesystem>
#include <string>
#include <vector>

namespace osg {
class ApplicationUsage;
}

namespace tessarin::viewer {

/// What the viewer's virtual inputs are bound to: a small set of defaults, and what a person puts over them in a file,
/// so that nobody needs a compiler to use other keys.
///
/// A file has the root element `Bindings` with one element `VirtualInput` for each name, whose attributes are the
/// fields of agent::VirtualInput: name, pos, neg, joyNum, axis, scale and dead. What is left out has the record's
/// default. A name that is there already is replaced as a whole; new names may be added for components to ask for.
class Bindings {
public:
    /// The defaults.
    Bindings();

    /// @throws ViewerError if the file is missing, malformed or says what no binding is; nothing is changed then.
    void read(const std::filesystem::path& file);

    /// @throws ViewerError if the file can't be written.
    void write(const std::filesystem::path& file) const;

    /// Lets Input know all of them, over what it knew of these names.
    void giveToInput() const;

    /// Lists the keys for the help screen.
    void describe(osg::ApplicationUsage& usage) const;

    const std::vector<agent::VirtualInput>& getAll() const { return all; }

    /// The code of the key or button for the positive direction; empty if there is no such name or no such button.
    std::string getButton(const std::string& name) const;

private:
    std::vector<agent::VirtualInput> all;
};

} // namespace tessarin::viewer
