#include "tools/kestra-html/system/posix/Waiting.h"

#include <poll.h>

#include <cerrno>

namespace Kestra::Tool {

bool WaitFor(int descriptor, short events) {
    if (errno != EAGAIN)
        return false;
    pollfd waiting = {descriptor, events, 0};
    poll(&waiting, 1, -1);  // interrupted by a signal, it is only called again
    return true;
}

}  // namespace Kestra::Tool
