#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "c/kestra/html.h"
#include "platform/InputStream.h"

namespace Kestra::C {

/// A stream over bytes of the host, borrowed.
std::unique_ptr<VFS::InputStream> MakeBorrowedStream(const void* data, std::size_t size);

/// A stream whose bytes the functions of the host deliver.
std::unique_ptr<VFS::InputStream> MakeHostStream(const kestra_html_stream& functions);

/// Writes a stream from its first byte on. @return 0; a code of the stream; a value of the callback
std::uint32_t WriteStream(VFS::InputStream* stream, kestra_html_write_callback write, void* user);

}  // namespace Kestra::C
