#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

using ToolViewOnPosix = ToolTest;

TEST_F(ToolViewOnPosix, NoPartOfAPageIsLeft) {
    Write("a.html", Repeat("<b>x</b>", 20000));
    settings.largestFile = 50000;
    const ToolRun run = Run({"view", "a.html", "-o", "b.html"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(StartsWith(run.errors, "b.html: cannot be written: "));
    EXPECT_EQ(GetNames(), Arguments{"a.html"});
}

TEST_F(ToolViewOnPosix, ALinkToTheInputIsTheInput) {
    Write("a.html", "<b>");
    fs::create_symlink("a.html", Path("b.html"));
    EXPECT_TRUE(Ended(Run({"view", "a.html", "-o", "b.html"}), 1, "b.html: cannot be written: it is the input\n"));
    EXPECT_EQ(Read("a.html"), "<b>");
}

TEST_F(ToolViewOnPosix, ADeviceIsWrittenAndStays) {
    Write("a.html", "<b>");
    EXPECT_TRUE(Ended(Run({"view", "a.html", "-o", "/dev/null"}), 0, ""));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    const ToolRun full = Run({"view", "a.html", "-o", "/dev/full"});
    EXPECT_EQ(full.status, 1);
    EXPECT_TRUE(StartsWith(full.errors, "/dev/full: cannot be written: "));
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(ToolViewOnPosix, PermissionsAndNamesOfTheFileStay) {
    Write("a.html", "<b>");
    for (const mode_t mode : {0600U, 0640U, 0755U}) {
        Write("b.html", "old");
        ASSERT_EQ(chmod(Path("b.html").c_str(), mode), 0);
        EXPECT_TRUE(Ended(Run({"view", "a.html", "-o", "b.html"}), 0, ""));
        struct stat state {};
        ASSERT_EQ(stat(Path("b.html").c_str(), &state), 0);
        EXPECT_EQ(state.st_mode & 07777U, mode);
    }
    EXPECT_EQ(Read("b.html"), Run({"view", "a.html"}).output);
    ASSERT_EQ(chmod(Path("b.html").c_str(), 0444), 0);
    Write("c.html", "<i>");
    EXPECT_TRUE(Ended(Run({"view", "c.html", "-o", "b.html"}), 1, "b.html: cannot be written: it is read-only\n"));
    EXPECT_EQ(Read("b.html"), Run({"view", "a.html"}).output);
}

TEST_F(ToolViewOnPosix, ANewFileHasThePermissionsOfNewFiles) {
    Write("a.html", "<b>");
    for (const mode_t mask : {0022U, 0077U, 0000U}) {
        const mode_t before = umask(mask);
        const ToolRun run = Run({"view", "a.html", "-o", "b.html"});
        umask(before);
        EXPECT_TRUE(Ended(run, 0, ""));
        struct stat state {};
        ASSERT_EQ(stat(Path("b.html").c_str(), &state), 0);
        EXPECT_EQ(state.st_mode & 07777U, 0666U & ~mask);
        fs::remove(Path("b.html"));
    }
}

TEST_F(ToolViewOnPosix, LinksStay) {
    Write("a.html", "<b>");
    fs::create_directory(Path("links"));
    fs::create_symlink("../b.html", Path("links/first"));
    fs::create_symlink("first", Path("links/second"));
    for (const char* const note : {"it leads nowhere", "it leads to a file"}) {
        EXPECT_TRUE(Ended(Run({"view", "a.html", "-o", "links/second"}), 0, "")) << note;
        EXPECT_TRUE(fs::is_symlink(Path("links/first"))) << note;
        EXPECT_TRUE(fs::is_symlink(Path("links/second"))) << note;
        EXPECT_EQ(Read("b.html"), Run({"view", "a.html"}).output) << note;
        EXPECT_EQ(GetNames(), (Arguments{"a.html", "b.html", "links"})) << note;
        Write("a.html", "<i>");
    }
    fs::create_symlink("circle", Path("circle"));
    const ToolRun run = Run({"view", "a.html", "-o", "circle"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(StartsWith(run.errors, "circle: cannot be written: "));
    EXPECT_TRUE(fs::is_symlink(Path("circle")));
}

TEST_F(ToolViewOnPosix, ASignalLeavesNothing) {
    for (const bool isThere : {false, true}) {
        if (isThere)
            Write("b.html", "old");
        const std::size_t names = GetNames().size();
        int input[2];
        ASSERT_EQ(pipe2(input, O_CLOEXEC), 0);
        const pid_t child = fork();
        if (child == 0) {
            dup2(input[0], STDIN_FILENO);
            if (chdir(settings.folder.c_str()) == 0)
                execl(KESTRA_TOOL, KESTRA_TOOL, "view", "--charset", "1252", "-o", "b.html", nullptr);
            _exit(127);
        }
        close(input[0]);
        EXPECT_EQ(write(input[1], "<b>", 3), 3);  // and no end
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        while (GetNames().size() == names && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        EXPECT_EQ(GetNames().size(), names + 1) << "what is written";
        EXPECT_EQ(kill(child, SIGTERM), 0);
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        close(input[1]);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << status;
        EXPECT_EQ(GetNames().size(), names);
        EXPECT_EQ(isThere ? Read("b.html") : "old", "old");
    }
}

}  // namespace
}  // namespace Kestra::Test
