#pragma once

#include <list>

namespace tessarin::agent {

/// The entry of a list that holds the pointer, or the list's end. Searched from both ends at once: what leaves a list
/// is usually its first entry or its last.
template <class T>
typename std::list<T*>::iterator findFromBothEnds(std::list<T*>& list, const T* pointer) {
    auto front = list.begin();
    for (auto back = list.end(); front != back; ++front) {
        if (*front == pointer)
            return front;
        if (--back == front)
            break;
        if (*back == pointer)
            return back;
    }
    return list.end();
}

} // namespace tessarin::agent
