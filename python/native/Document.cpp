#include "python/native/Document.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "platform/Results.h"

namespace Kestra::Python {

namespace py = pybind11;

namespace {

constexpr std::size_t READ_SIZE = 65536;  // bytes, of a file that does not report its size

/// The size of a regular file in bytes. 0 for all others: a pipe has none, and a folder may report
/// any number.
std::size_t GetSize(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return 0;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    return error ? 0 : static_cast<std::size_t>(size);
}

/// Reads to where the bytes will stay, in one piece when the file reports its size.
/// @return 0, or the error of the system
int ReadFile(const std::string& path, std::string* content) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (file == nullptr)
        return errno;
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    // One more, so that the end is seen without growing.
    content->resize(GetSize(path) + 1);
    std::size_t size = 0;
    for (;;) {
        errno = 0;
        const std::size_t count = std::fread(content->data() + size, 1, content->size() - size, file.get());
        size += count;
        if (size < content->size())
            break;
        content->resize(size + std::max(size, READ_SIZE));
    }
    content->resize(size);
    return std::ferror(file.get()) != 0 ? errno : 0;
}

std::string ReadNamedFile(const py::object& source) {
    const py::object name = py::module_::import("os").attr("fsencode")(source);
    const std::string path = name.cast<std::string>();
    std::string content;
    int error = 0;
    {
        const py::gil_scoped_release released;
        error = ReadFile(path, &content);
    }
    if (error != 0) {
        errno = error;
        PyErr_SetFromErrnoWithFilenameObject(PyExc_OSError, source.ptr());
        throw py::error_already_set();
    }
    return content;
}

}  // namespace

Document::Document(std::string ownBytes) : own(std::move(ownBytes)), bytes(own) {}

Document::~Document() {
    if (hasBuffer)
        PyBuffer_Release(&buffer);
}

std::shared_ptr<const Document> Document::Open(const py::object& source) {
    if (PyObject_CheckBuffer(source.ptr()) != 0) {
        const std::shared_ptr<Document> document(new Document);
        if (PyObject_GetBuffer(source.ptr(), &document->buffer, PyBUF_SIMPLE) != 0)
            throw py::error_already_set();
        document->hasBuffer = true;
        document->bytes = {static_cast<const char*>(document->buffer.buf),
                           static_cast<std::size_t>(document->buffer.len)};
        return document;
    }
    if (py::hasattr(source, "__fspath__"))
        return std::make_shared<Document>(ReadNamedFile(source));
    if (py::hasattr(source, "read")) {
        const py::object content = source.attr("read")();
        if (PyObject_CheckBuffer(content.ptr()) == 0)
            throw py::type_error("read() must answer bytes: open the file in binary mode");
        return Open(content);
    }
    if (py::isinstance<py::str>(source))
        throw py::type_error("a str is neither bytes nor a file: encode it, or name a file by pathlib.Path");
    throw py::type_error("bytes, bytearray, memoryview, mmap, a path or a binary file is expected, not " +
                         std::string(Py_TYPE(source.ptr())->tp_name));
}

std::uint32_t BytesStream::Read(void* target, std::uint64_t size, std::uint64_t* bytesRead) {
    *bytesRead = std::min<std::uint64_t>(size, bytes.size() - next);
    if (*bytesRead == 0)
        return size == 0 ? RESULT_OK : RESULT_END_OF_DATA;
    std::memcpy(target, bytes.data() + next, static_cast<std::size_t>(*bytesRead));
    next += *bytesRead;
    return RESULT_OK;
}

std::uint32_t BytesStream::GetPosition(std::uint64_t* position) {
    *position = next;
    return RESULT_OK;
}

std::uint32_t BytesStream::Seek(std::uint64_t position) {
    if (position > bytes.size())
        return RESULT_STREAM_FAILED;
    next = position;
    return RESULT_OK;
}

bool BytesStream::IsEnd() {
    return next == bytes.size();
}

void SetUp(HTML::GenericParser* parser, const ParseOptions& options) {
    parser->SetScriptMode(options.scriptMode);
    parser->SetMaxTokenSize(options.maxTokenSize);
    parser->SetMaxAttributes(options.maxAttributes);
}

}  // namespace Kestra::Python
