#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <tuple>

/// @file
/// The memory of the tool does not grow with its input: a long one needs no more than one of a
/// quarter of its size, and in a build without sanitizers less than 64 MiB. The inputs are made by
/// other programs, because a new process counts the memory of the one that it comes from.
///
/// `ctest -L memory` reads what is quick enough for every run, `ctest -L gibibyte` one GiB.

namespace Kestra::Test {
namespace {

constexpr std::size_t MIB = std::size_t{1} << 20;

constexpr std::size_t QUEUE = 24;

/// What the name of the file is replaced by in a command; without it standard input is read.
constexpr char FILE_NAME[] = "FILE";

struct Row {
    const char* name;
    const char* command;
    std::size_t queue = 0;  ///< MiB of output that wait for their turn when there is enough of it
};

void PrintTo(const Row& row, std::ostream* stream) {
    *stream << row.command;
}

constexpr Row ROWS[] = {
    {"Tokens", "tokens --format json"},
    {"TokensOfAFile", "tokens --format json FILE"},
    {"CopyOfTokens", "tokens --charset 1252 --self-check copy"},
    {"CopyOfTokensOfAFile", "tokens --charset 1252 --self-check copy FILE"},
    {"Pieces", "tokens --feed buffer --piece-size 5000"},
    {"PiecesOfAFile", "tokens --feed buffer --piece-size 5000 FILE"},
    {"TwoFilesAtATime", "tokens --format json --jobs 2 FILE FILE FILE", QUEUE},
    {"Events", "events --format json"},
    {"EventsOfAFile", "events --format json FILE"},
    {"EventsOfPieces", "events --feed buffer --piece-size 65536"},
    {"EventsOfPiecesOfAFile", "events --feed buffer --piece-size 65536 FILE"},
    {"Check", "check"},
    {"CheckOfAFile", "check FILE"},
    {"CheckOfTwoFilesAtATime", "check --jobs 2 FILE FILE FILE"},
    {"Detect", "detect"},
    {"DetectOfAFile", "detect FILE"},
    {"Rewrite", "rewrite --set p.class=y"},
    {"RewriteOfAFile", "rewrite --set p.class=y FILE"},
    {"DryRun", "rewrite --set p.class=y --dry-run"},
    {"DryRunOfTwoFilesAtATime", "rewrite --set p.class=y --dry-run --jobs 2 FILE FILE FILE", QUEUE},
    {"View", "view"},
    {"ViewOfAFile", "view FILE"},
};

/// Runs the shell.
/// @return the most memory that any process has taken that came of it
std::uint64_t Measure(const std::string& script) {
    const pid_t child = fork();
    if (child == 0) {
        execl("/bin/sh", "sh", "-c", script.c_str(), nullptr);
        _exit(127);
    }
    int status = -1;
    rusage usage{};
    EXPECT_EQ(wait4(child, &status, 0, &usage), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    return static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;
}

/// Runs a command over an input of this size.
std::uint64_t Measure(const Row& row, std::size_t mebibytes) {
    std::string command = std::string("ASAN_OPTIONS=quarantine_size_mb=1 '" KESTRA_TOOL "' ") + row.command;
    const std::string input = "yes '<p class=x>text of a paragraph</p><!-- a comment -->' 2>/dev/null | head -c " +
                              std::to_string(mebibytes * MIB);
    if (command.find(FILE_NAME) == std::string::npos)
        return Measure(input + " | " + command + " >/dev/null");
    for (std::size_t at = 0; (at = command.find(FILE_NAME)) != std::string::npos;)
        command.replace(at, sizeof(FILE_NAME) - 1, "\"$F\"");
    return Measure("F=$(mktemp) && trap 'rm -f \"$F\"' EXIT && " + input + " >\"$F\" && " + command + " >/dev/null");
}

/// The row, and the size of the long input in MiB.
class ToolMemoryTest : public testing::TestWithParam<std::tuple<Row, std::size_t>> {};

std::string GetName(const testing::TestParamInfo<ToolMemoryTest::ParamType>& info) {
    return std::get<Row>(info.param).name;
}

TEST_P(ToolMemoryTest, DoesNotGrow) {
    constexpr std::size_t SHORT = KESTRA_MEMORY_TEST_SIZE / 4;
    const auto& [row, size] = GetParam();
    const std::uint64_t ofShort = Measure(row, SHORT);
    const std::uint64_t ofLong = Measure(row, size);
    RecordProperty("MiB", static_cast<int>(ofLong / MIB));
    EXPECT_LT(ofLong, ofShort + (SHORT + row.queue) * MIB);
    if (KESTRA_MEMORY_IS_LIMITED) {
        EXPECT_LT(ofLong, 64 * MIB);
    }
}

INSTANTIATE_TEST_SUITE_P(LongInput, ToolMemoryTest,
                         testing::Combine(testing::ValuesIn(ROWS),
                                          testing::Values(std::size_t{KESTRA_MEMORY_TEST_SIZE})),
                         GetName);
INSTANTIATE_TEST_SUITE_P(InputOfAGibibyte, ToolMemoryTest,
                         testing::Combine(testing::ValuesIn(ROWS), testing::Values(std::size_t{1024})), GetName);

}  // namespace
}  // namespace Kestra::Test
