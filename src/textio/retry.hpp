// One question that reading and writing share.
#pragma once

#include <poll.h>

#include <cerrno>

namespace dorvek::textio {

// After a read or write on `fd` that failed: may it be tried again? Yes if a signal interrupted it,
// and, once `fd` is ready for `events`, if some other program left it in non-blocking mode.
[[nodiscard]] inline bool may_retry(int fd, short events) noexcept {
    if (errno == EINTR) return true;
    if (errno != EAGAIN) return false;
    pollfd ready{.fd = fd, .events = events, .revents = 0};
    return ::poll(&ready, 1, -1) >= 0 || errno == EINTR;
}

}  // namespace dorvek::textio
