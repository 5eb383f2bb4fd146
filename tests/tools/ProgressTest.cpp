#include "tools/kestra-html/output/Progress.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace Kestra::Test {
namespace {

using Tool::Progress;
using Tool::ProgressTerminal;

/// A terminal that keeps what is drawn, and a clock that is set by hand.
class ProgressLine : public testing::Test {
protected:
    Progress Make(bool isTerminal = true) {
        ProgressTerminal terminal;
        terminal.write = [this](std::string_view text) { drawn += text; };
        terminal.getWidth = [this] { return width; };
        terminal.getTime = [this] { return now; };
        return Progress(isTerminal, terminal);
    }

    Progress MakeForOne(const std::string& name, std::optional<std::uint64_t> size) {
        Progress progress = Make();
        progress.SetInputCount(1);
        progress.StartInput(1, name, size);
        return progress;
    }

    /// What is drawn anew, without the return to the first column.
    std::string Take() {
        std::string text;
        text.swap(drawn);
        return text.starts_with('\r') ? text.substr(1) : text;
    }

    void Wait(int milliseconds) {
        now += std::chrono::milliseconds(milliseconds);
    }

    std::string drawn;
    std::size_t width = 80;
    ProgressTerminal::Time now;
};

TEST_F(ProgressLine, AppearsAfterHalfASecond) {
    Progress progress = MakeForOne("page.html", 400000000);
    Wait(499);
    progress.Advance(50000000);
    EXPECT_EQ(Take(), "");
    Wait(1);
    progress.Advance(100000000);
    EXPECT_EQ(Take(), "[1/1] page.html 25%, 100.0 MB of 400.0 MB, 200.0 MB/s, 0:02 left");
    Wait(99);
    progress.Advance(110000000);
    EXPECT_EQ(Take(), "") << "not more than ten times in a second";
    Wait(1);
    progress.Advance(120000000);
    EXPECT_EQ(Take(), "[1/1] page.html 30%, 120.0 MB of 400.0 MB, 200.0 MB/s, 0:01 left");
}

TEST_F(ProgressLine, IsOnATerminalOnly) {
    Progress progress = Make(false);
    progress.SetInputCount(2);
    progress.StartInput(1, "page.html", 4);
    Wait(5000);
    progress.Advance(2);
    progress.Show();
    EXPECT_FALSE(progress.Hide());
    EXPECT_EQ(drawn, "");
}

TEST_F(ProgressLine, OfAPipeHasNoEnd) {
    Progress progress = MakeForOne("-", std::nullopt);
    Wait(2000);
    progress.Advance(2500000000);
    EXPECT_EQ(Take(), "[1/1] - 2.50 GB, 1250.0 MB/s");
}

TEST_F(ProgressLine, TheTimeLeftIsThatOfAllInputs) {
    Progress progress = Make();
    progress.SetInputCount(4);
    progress.StartInput(1, "a", 1000000);
    progress.Advance(1000000);
    progress.StartInput(2, "b", 2000000);
    Wait(3000);
    progress.Advance(1000000);
    EXPECT_EQ(Take(), "[2/4] b 50%, 1.0 MB of 2.0 MB, 0.7 MB/s, 0:05 left");
    progress.StartInput(4, "c", 0);
    Wait(7200000);
    progress.Advance(0);
    EXPECT_EQ(Take(), "[4/4] c 0.0 MB, 0.0 MB/s, 0:00 left               ") << "nothing of the longer line is left";
}

TEST_F(ProgressLine, HoursAreShown) {
    Progress progress = MakeForOne("a", 1000000000);
    Wait(100000);
    progress.Advance(20000000);
    EXPECT_EQ(Take(), "[1/1] a 2%, 20.0 MB of 1.00 GB, 0.2 MB/s, 1:21:40 left");
}

TEST_F(ProgressLine, HasTheWidthOfTheTerminal) {
    const std::string name = std::string(30, 'a') + "\xC3\xA9" + std::string(20, 'b');
    const struct {
        const char* note;
        std::size_t width;
        std::string name;
        std::string line;
    } CASES[] = {
        {"there is room", 101, name, "[1/1] " + name + " 50%, 0.0 MB of 0.0 MB, 0.0 MB/s, 0:01 left"},
        {"a name loses its front", 70, name,
         "[1/1] ..." + std::string(17, 'b') + " 50%, 0.0 MB of 0.0 MB, 0.0 MB/s, 0:01 left"},
        {"a letter is not parted", 73, name,
         "[1/1] ..." + std::string(20, 'b') + " 50%, 0.0 MB of 0.0 MB, 0.0 MB/s, 0:01 left"},
        {"but shown where there is room", 74, name,
         "[1/1] ...\xC3\xA9" + std::string(20, 'b') + " 50%, 0.0 MB of 0.0 MB, 0.0 MB/s, 0:01 left"},
        {"a wide letter has two columns", 59, "aaaaaaaa\xE6\xBC\xA2\xE6\xBC\xA2",
         "[1/1] ...aa\xE6\xBC\xA2\xE6\xBC\xA2 50%, 0.0 MB of 0.0 MB, 0.0 MB/s, 0:01 left"},
        {"no room for a name", 50, name, "[1/1] 50%, 0.0 MB of 0.0 MB, 0.0 MB/s, 0:01 left"},
        {"no room for the numbers", 20, name, "[1/1] 50%, 0.0 MB o"},
        {"the width is not known", 0, "a", "[1/1] a 50%, 0.0 MB of 0.0 MB, 0.0 MB/s, 0:01 left"},
    };
    for (const auto& row : CASES) {
        width = row.width;
        Progress progress = Make();
        progress.SetInputCount(1);
        progress.StartInput(1, row.name, 20);
        Wait(1000);
        progress.Advance(10);
        EXPECT_EQ(Take(), row.line) << row.note;
        progress.Hide();
        Take();
    }
}

TEST_F(ProgressLine, HidesAndComesBack) {
    Progress progress = Make();
    progress.SetInputCount(1);
    progress.StartInput(1, "a", 20);
    EXPECT_FALSE(progress.Hide());
    Wait(1000);
    progress.Advance(10);
    const std::string line = Take();
    EXPECT_TRUE(progress.Hide());
    EXPECT_EQ(Take(), std::string(line.size(), ' ') + "\r");
    EXPECT_FALSE(progress.Hide());
    progress.Show();
    EXPECT_EQ(Take(), line);
}

}  // namespace
}  // namespace Kestra::Test
