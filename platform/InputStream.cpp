#include "platform/InputStream.h"

namespace Kestra::VFS {

InputStream::InputStream() = default;
InputStream::InputStream(const InputStream&) = default;
InputStream& InputStream::operator=(const InputStream&) = default;
InputStream::~InputStream() = default;

}  // namespace Kestra::VFS
