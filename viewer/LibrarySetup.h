#pragma once

namespace tessarin::viewer {

/// What a host does once, before it makes its first agent: registers the components that it brings along and says how
/// models are read.
void setUpLibrary();

} // namespace tessarin::viewer
