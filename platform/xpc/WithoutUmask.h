#pragma once

#include <functional>

namespace platform {

/// Runs `call` with an umask of 0, so that what it makes has exactly the mode it asks for, and
/// gives the errno value that it gives. The umask belongs to the whole process, whose other threads
/// make files too: `call` runs in a child process and does nothing but what a signal handler may.
int withoutUmask(const std::function<int()>& call);

}  // namespace platform
