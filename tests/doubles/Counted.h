#pragma once

namespace tessarin::doubles {

/// Counts the live objects of a class, to see who deletes what.
template <class T>
class Counted {
public:
    static inline int alive = 0;

protected:
    Counted() { ++alive; }
    Counted(const Counted&) { ++alive; }
    Counted& operator=(const Counted&) = default;
    ~Counted() { --alive; }
};

} // namespace tessarin::doubles
