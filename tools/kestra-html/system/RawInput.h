#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace Kestra::Tool {

/// How the reading of an input ended.
class ReadResult {
public:
    enum Kind {
        READ,
        MISSING,            ///< nothing has this name
        FORBIDDEN,          ///< the system refuses to open it
        FOLDER,             ///< it is a folder
        UNREADABLE,         ///< another failure to open it, or to read it to its end
        OUT_OF_MEMORY,      ///< it does not fit the memory
        NO_TEMPORARY_FILE,  ///< what is read only once could not be kept for a second time
    };

    /// @param systemError  why: a value of `errno`, or 0
    constexpr ReadResult(Kind resultKind = READ, int systemError = 0) : kind(resultKind), error(systemError) {}

    /// For a call of the system that has just failed. @param systemError  a value of `errno`
    static ReadResult OfFailure(int systemError);

    constexpr Kind GetKind() const {
        return kind;
    }
    /// A value of `errno`; 0 when no call of the system failed.
    constexpr int GetError() const {
        return error;
    }

    /// What kind it is; the reason is not compared.
    friend constexpr bool operator==(const ReadResult& left, const ReadResult& right) {
        return left.kind == right.kind;
    }

private:
    Kind kind;
    int error;
};

/// An open file, pipe or device, or standard input.
class RawInput {
public:
    /// @param name   a file name as on the command line, "-" for standard input
    /// @param input  set on success only
    static ReadResult Open(const std::string& name, std::unique_ptr<RawInput>* input);

    RawInput(const RawInput&) = delete;
    RawInput& operator=(const RawInput&) = delete;
    /// Closes it. Standard input stays open, and its next reader finds the end of a file.
    ~RawInput();

    /// Whether it is a file on a disk: it can be read anywhere, and its size is known.
    bool IsFile() const;
    /// Bytes of a file when it was opened, counted from where it begins: standard input may begin
    /// inside a file.
    std::uint64_t GetSize() const;

    /// Reads what is there, and waits only while nothing is.
    /// @param count  bytes read; 0 at the end
    ReadResult Read(char* buffer, std::size_t size, std::size_t* count);
    /// Continues at another place of a file.
    /// @param newPosition  in bytes from where the input begins
    ReadResult Seek(std::uint64_t newPosition);

private:
    RawInput(int openDescriptor, bool closesDescriptor);
    static ReadResult OpenDescriptor(const std::string& name, int* descriptor);
    ReadResult LookAt();

    int descriptor;
    bool closes;  ///< false for standard input
    bool isFile = false;
    std::uint64_t size = 0;
    std::uint64_t begin = 0;     ///< in the file
    std::uint64_t position = 0;  ///< of the next byte, from there; unused on Windows
};

}  // namespace Kestra::Tool
