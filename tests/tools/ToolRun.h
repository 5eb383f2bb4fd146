#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/TemporaryFolder.h"

/// @file
/// Runs of the built tool, and what most tests of it look at.

namespace Kestra::Test {

using namespace std::string_literals;

namespace fs = std::filesystem;

using Arguments = std::vector<std::string>;

/// How one of the tool's output streams is set up.
enum class Sink {
    CAPTURED,     ///< a file
    TERMINAL,     ///< a terminal that changes nothing; at most one stream at a time. On Windows a console, and what it
                  ///< shows at the end
    CLOSED,       ///< not open at all
    CLOSED_PIPE,  ///< a pipe whose reader is gone
    UNWRITABLE    ///< every write fails: the disk is full, or on Windows the file may only be read
};

struct ToolSettings {
    std::optional<std::string> input = "";  ///< comes through a pipe; nothing: standard input is not open
    std::string inputAfterPause;            ///< comes after it, on POSIX only
    std::chrono::milliseconds pause{0};     ///< after the tool has read the input
    Sink output = Sink::CAPTURED;
    Sink errors = Sink::CAPTURED;
    std::map<std::string, std::string> environment;  ///< on top of one for colours
    std::string folder;                              ///< to run in; empty for the current one
    /// Bytes that a file of the tool can have, as on a full disk; on POSIX only.
    std::optional<std::uint64_t> largestFile;
};

struct ToolRun {
    int status = -1;  ///< exit status; on POSIX 128 and the signal's number when a signal ended the tool
    std::string output;
    std::string errors;

    bool operator==(const ToolRun&) const = default;
};

inline void PrintTo(const ToolRun& run, std::ostream* stream) {
    *stream << "status " << run.status << "\noutput:\n" << run.output << "errors:\n" << run.errors;
}

/// Runs the built tool with these arguments and waits for its end.
ToolRun RunTool(const std::vector<std::string>& arguments, const ToolSettings& settings = {});

/// What the system says about writing to it, for CLOSED and UNWRITABLE.
std::string GetReason(Sink sink);

/// Runs it with this standard input.
ToolRun RunToolOn(std::string_view input, const std::vector<std::string>& arguments);

/// An empty part, which is in every text, fails the test whatever it expects.
inline testing::AssertionResult Contains(std::string_view text, std::string_view part) {
    EXPECT_FALSE(part.empty()) << "looked for in:\n" << text;
    return (text.find(part) != std::string_view::npos ? testing::AssertionSuccess() : testing::AssertionFailure())
           << '"' << part << "\" in:\n"
           << text;
}

inline testing::AssertionResult Contains(std::string_view text, char part) {
    return Contains(text, std::string_view(&part, 1));
}

inline testing::AssertionResult StartsWith(std::string_view text, std::string_view part) {
    EXPECT_FALSE(part.empty()) << "looked for before:\n" << text;
    return (text.starts_with(part) ? testing::AssertionSuccess() : testing::AssertionFailure())
           << '"' << part << "\" before:\n"
           << text;
}

/// The run has this status, and says exactly this to standard error.
inline testing::AssertionResult Ended(const ToolRun& run, int status, std::string_view errors) {
    return (run.status == status && run.errors == errors ? testing::AssertionSuccess() : testing::AssertionFailure())
           << testing::PrintToString(run) << "\nexpected: status " << status << ", errors:\n"
           << errors;
}

inline std::string Repeat(std::string_view text, std::size_t times) {
    std::string all;
    for (; times > 0; --times)
        all += text;
    return all;
}

/// A text with the letters of the ASCII one as UTF-16, low byte first.
inline std::string Utf16(std::string_view ascii) {
    std::string bytes;
    for (const char letter : ascii)
        bytes += {letter, '\0'};
    return bytes;
}

inline std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The last line of an output.
inline std::string LastLine(const std::string& output) {
    if (output.empty() || output.back() != '\n')
        return "(no line)";
    const std::size_t before = output.rfind('\n', output.size() - 2);
    const std::size_t begin = before == std::string::npos ? 0 : before + 1;
    return output.substr(begin, output.size() - 1 - begin);
}

inline std::string WithoutLastLine(const std::string& output) {
    return output.substr(0, output.size() - LastLine(output).size() - 1);
}

/// A test that runs the tool in a folder of its own. Names are in UTF-8.
class ToolTest : public testing::Test {
protected:
    ToolTest() {
        settings.folder = folder.GetPath().string();
    }

    ToolRun Run(const Arguments& arguments) {
        return RunTool(arguments, settings);
    }

    fs::path Path(const std::string& name) const {
        return folder.GetPath() / fs::path(std::u8string(name.begin(), name.end()));
    }

    void Write(const std::string& name, std::string_view bytes) {
        fs::create_directories(Path(name).parent_path());
        folder.Write(Path(name), bytes);
    }

    std::string Read(const std::string& name) const {
        return ReadFile(Path(name));
    }

    /// The names in the folder, sorted.
    Arguments GetNames() const {
        Arguments names;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder.GetPath())) {
            const std::u8string name = entry.path().filename().u8string();
            names.emplace_back(name.begin(), name.end());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    TemporaryFolder folder;
    ToolSettings settings;
};

}  // namespace Kestra::Test
