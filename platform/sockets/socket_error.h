#pragma once

namespace tarnel {

/// The socket error that stands for a system call's errno: the one place where sockets are
/// translated.
int socket_error_from_errno(int error);

} // namespace tarnel
