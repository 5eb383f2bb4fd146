#include "tests/support/TemporaryFolder.h"

#include <fstream>
#include <ios>
#include <random>
#include <string>
#include <system_error>

namespace Kestra::Test {

TemporaryFolder::TemporaryFolder() {
    std::random_device random;
    do {
        path = std::filesystem::temp_directory_path() /
               ("kestra-test-" + std::to_string(random()) + "-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path));  // false when it is there already: tests run side by side
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

const std::filesystem::path& TemporaryFolder::GetPath() const {
    return path;
}

std::filesystem::path TemporaryFolder::Write(const std::filesystem::path& name, std::string_view bytes) const {
    const std::filesystem::path file = path / name;
    std::ofstream output;
    output.exceptions(std::ios::failbit | std::ios::badbit);
    output.open(file, std::ios::binary | std::ios::trunc);
    output.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    output.close();
    return file;
}

}  // namespace Kestra::Test
