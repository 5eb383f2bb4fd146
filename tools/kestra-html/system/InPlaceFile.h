#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Kestra::Tool {

/// Thrown when a file cannot be written in place; the message is for the user. The file is as it
/// was.
class InPlaceFailed : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What is done with a name that no file has.
enum class MissingFile {
    REFUSED,
    MADE,  ///< `Commit` makes the file, with the permissions that the system gives a new one
};

/// Writes a file anew: beside it first, and then in its place. Until `Commit` the file is as it
/// was, and so it is when that fails. A link stays one, and the file that it leads to is written.
/// The permissions of the file are kept, and where it can be its owner. Nothing is left beside it
/// when the tool is interrupted.
class InPlaceFile {
public:
    /// @param name  of a regular file that is not read-only
    /// @param missing  MADE allows a name that no file has. On POSIX that includes a link that leads
    ///                 nowhere: the file that it names is made. On Windows such a link is refused
    /// @throws InPlaceFailed
    explicit InPlaceFile(const std::string& name, MissingFile missing = MissingFile::REFUSED);
    InPlaceFile(const InPlaceFile&) = delete;
    InPlaceFile& operator=(const InPlaceFile&) = delete;
    /// Without `Commit` nothing is left of what was written.
    ~InPlaceFile();

    /// @throws InPlaceFailed
    void Write(std::string_view bytes);

    /// Puts what was written in place of the file.
    /// @param backupSuffix  the file as it was gets its name with this at the end, in place of one
    ///                      that has that name; empty for none
    /// @throws InPlaceFailed
    void Commit(const std::string& backupSuffix);

private:
    struct Files;

    std::unique_ptr<Files> files;
};

}  // namespace Kestra::Tool
