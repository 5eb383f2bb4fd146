#include "python/native/Document.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "platform/Results.h"

namespace Kestra::Python {

namespace py = pybind11;

namespace {

constexpr std::size_t READ_SIZE = 65536;  // bytes

/// @return 0, or the error of the system
int ReadFile(const std::string& path, std::string* content) {
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    if (file == nullptr)
        return errno;
    int error = 0;
    std::size_t size = 0;
    do {
        content->resize(size + READ_SIZE);
        errno = 0;
        const std::size_t count = std::fread(content->data() + size, 1, READ_SIZE, file);
        size += count;
        if (count == 0) {
            error = std::ferror(file) != 0 ? errno : 0;
            break;
        }
    } while (true);
    content->resize(size);
    std::fclose(file);
    return error;
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
        if (!py::isinstance<py::bytes>(content))
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
