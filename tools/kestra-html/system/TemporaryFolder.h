#pragma once

#include <string>

namespace Kestra::Tool {

/// Has the library make its temporary files where the user wants them: on POSIX in $TMPDIR, if that
/// is set, whatever bytes its name has. No other folder is used when files cannot be made in that
/// one. On Windows the system's folder already is the one of the user.
void UseTemporaryFolder();

/// The name of that folder.
std::string GetTemporaryFolder();

}  // namespace Kestra::Tool
