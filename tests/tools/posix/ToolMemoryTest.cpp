#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

/// @file
/// The memory of the tool does not grow with its input: a long one needs no more than one of a
/// quarter of its size, and in a build without sanitizers less than 64 MiB. The inputs are made by
/// other programs, because a new process counts the memory of the one that it comes from.

namespace Kestra::Test {
namespace {

constexpr std::size_t MIB = std::size_t{1} << 20;

const char* const COMMANDS[] = {
    "tokens --format json",    "tokens --charset 1252 --self-check copy", "tokens --feed buffer --piece-size 5000",
    "events --format json",    "events --feed buffer --piece-size 65536", "check",
    "rewrite --set p.class=y",
};

/// The most memory that any process has taken that this one has waited for.
std::uint64_t GetPeak() {
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;
}

/// Runs all commands, over a pipe and over a file.
std::uint64_t MeasureAll(std::size_t mebibytes) {
    const std::string input = "yes '<p class=x>text of a paragraph</p><!-- a comment -->' 2>/dev/null | head -c " +
                              std::to_string(mebibytes * MIB);
    for (const std::string command : COMMANDS) {
        const std::string tool = "ASAN_OPTIONS=quarantine_size_mb=1 '" KESTRA_TOOL "' " + command;
        EXPECT_EQ(std::system((input + " | " + tool + " >/dev/null").c_str()), 0) << command;  // NOLINT
        const std::string ofFile =
            "F=$(mktemp) && " + input + " >\"$F\" && " + tool + " \"$F\" >/dev/null; S=$?; rm -f \"$F\"; exit $S";
        EXPECT_EQ(std::system(ofFile.c_str()), 0) << command;  // NOLINT
    }
    return GetPeak();
}

TEST(ToolMemoryOfLongInputs, DoesNotGrow) {
    const std::uint64_t ofShort = MeasureAll(KESTRA_MEMORY_TEST_SIZE / 4);
    const std::uint64_t ofLong = MeasureAll(KESTRA_MEMORY_TEST_SIZE);
    EXPECT_LT(ofLong, ofShort + KESTRA_MEMORY_TEST_SIZE * MIB / 4);
    if (KESTRA_MEMORY_IS_LIMITED) {
        EXPECT_LT(ofLong, 64 * MIB);
    }
}

}  // namespace
}  // namespace Kestra::Test
