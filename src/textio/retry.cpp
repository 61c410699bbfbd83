#include "textio/retry.hpp"

#include <cerrno>

namespace dorvek::textio {

bool may_retry(int fd, short events) {
    if (errno == EINTR) return true;
    if (errno != EAGAIN) return false;
    pollfd ready{.fd = fd, .events = events, .revents = 0};
    return ::poll(&ready, 1, -1) >= 0 || errno == EINTR;
}

}  // namespace dorvek::textio
