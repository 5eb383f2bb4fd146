#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace Kestra::Tool {

/// Thrown when output cannot be written: the reader of a pipe is gone, the disk is full. Nothing
/// more can be said then, so it ends the run, out of an observer's callback too.
class OutputFailed : public std::runtime_error {
public:
    /// @param readerGone  standard output is a pipe whose reader has gone; the message is empty then
    explicit OutputFailed(const std::string& message, bool readerGone = false)
        : std::runtime_error(message), isReaderGone(readerGone) {}

    bool IsReaderGone() const {
        return isReaderGone;
    }

private:
    bool isReaderGone;
};

/// Where the lines of the output go.
class LineSink {
public:
    LineSink() = default;
    LineSink(const LineSink&) = delete;
    LineSink& operator=(const LineSink&) = delete;
    virtual ~LineSink() = default;

    /// Writes one line.
    /// @param line  without its line feed
    /// @throws OutputFailed
    virtual void Line(std::string_view line) = 0;
};

}  // namespace Kestra::Tool
