#include <agent/FieldRefusal.h>

namespace tessarin::agent {

static thread_local FieldRefusal* innermost = nullptr;

void refuseFieldText(std::string_view expected) {
    if (!innermost)
        return;
    innermost->happened = true;
    innermost->expectation = expected;
}

// Each ends before the one around it.
#if defined(__GNUC__) && !defined(__clang__)
#    pragma GCC diagnostic ignored "-Wdangling-pointer"
#endif
FieldRefusal::FieldRefusal() : outer(innermost) {
    innermost = this;
}

FieldRefusal::~FieldRefusal() {
    innermost = outer;
}

} // namespace tessarin::agent
