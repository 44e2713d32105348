#include "platform/base/last_error.h"
#include "platform/base/system_error.h"

#include <cerrno>

namespace tarnel {

DWORD error_from_errno(int error) {
    switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ELOOP:
    case ENAMETOOLONG:
    case ENODEV:
    case ENXIO:
        return ERROR_FILE_NOT_FOUND;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case EBUSY:
    case EWOULDBLOCK:
        return ERROR_ACCESS_DENIED;
    case ETXTBSY:
        return ERROR_SHARING_VIOLATION;
    case EINVAL:
    case ENOTTY:
        return ERROR_INVALID_PARAMETER;
    default:
        return ERROR_NO_SYSTEM_RESOURCES;
    }
}

} // namespace tarnel
