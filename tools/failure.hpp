// What cannot be done, as the routines of the companions throw it. Nothing here knows of options,
// so that numerics can be linked without an option parser.
#pragma once

#include <stdexcept>

namespace dorvek::tools {

// A wrong call; nothing has been done. Exit status 2.
struct WrongCall : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Something that cannot be done, and nothing beyond it. Exit status 1.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

}  // namespace dorvek::tools
