#pragma once

#include <agent/Export.h>

#include <string>
#include <string_view>

namespace tessarin::agent {

/// To be called by an accessor whose setAsString leaves its field alone, since the text is no value for it; Accessor
/// does so. A document that sets the field then says in its log line what was expected; anywhere else nothing happens.
/// @param expected what the text should have been, as in "three numbers separated by blanks".
TESSARIN_AGENT_EXPORT void refuseFieldText(std::string_view expected);

/// Notices a refusal as long as it stands, in its thread; with several of them, the last that was made.
class TESSARIN_AGENT_EXPORT FieldRefusal {
public:
    FieldRefusal();
    ~FieldRefusal();
    FieldRefusal(const FieldRefusal&) = delete;
    FieldRefusal& operator=(const FieldRefusal&) = delete;

    bool hasHappened() const { return happened; }
    const std::string& getExpectation() const { return expectation; }

private:
    friend void refuseFieldText(std::string_view expected);

    FieldRefusal* outer;
    bool happened = false;
    std::string expectation;
};

} // namespace tessarin::agent
