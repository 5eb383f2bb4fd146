#pragma once

namespace Kestra::Tool {

/// After a read or a write that failed: waits until the descriptor is ready, if it is one that does
/// not wait by itself and was not ready. Other programs may share it and have it so.
/// @param events  POLLIN or POLLOUT
/// @return whether to try again; if not, `errno` is as it was
bool WaitFor(int descriptor, short events);

}  // namespace Kestra::Tool
