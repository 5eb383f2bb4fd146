#pragma once

#include <filesystem>
#include <string_view>

namespace Kestra::Test {

/// An empty folder of its own for the files of one test. It is removed with everything in it.
class TemporaryFolder {
public:
    /// @throws std::filesystem::filesystem_error  when it cannot be made
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const std::filesystem::path& GetPath() const;

    /// Writes a file, over an older one of that name.
    /// @return its path.
    std::filesystem::path Write(const std::filesystem::path& name, std::string_view bytes) const;

private:
    std::filesystem::path path;
};

}  // namespace Kestra::Test
