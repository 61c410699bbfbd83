// One question that reading and writing share.
#pragma once

#include <poll.h>

namespace dorvek::textio {

// After a read or write on `fd` that failed: may it be tried again? Yes if a signal interrupted it,
// and, once `fd` is ready for `events`, if some other program left it in non-blocking mode.
[[nodiscard]] bool may_retry(int fd, short events);

}  // namespace dorvek::textio
