#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <system_error>
#include <thread>

#include "tests/tools/ToolRun.h"

// What `--in-place` keeps of a file on POSIX, and what becomes of one when the system says no.

namespace Kestra::Test {
namespace {

class ToolRewriteFiles : public ToolTest {
protected:
    ToolRun Run(const std::string& inPlace, const std::string& name) {
        return RunTool({"rewrite", "--set", "a.b=c", inPlace, name}, settings);
    }

    std::size_t CountNames() {
        return GetNames().size();
    }
};

TEST_F(ToolRewriteFiles, Permissions) {
    for (const mode_t mode : {0600U, 0644U, 0664U, 0755U, 0222U | 0444U, 02755U}) {
        const fs::path page = folder.Write("page", "<a>");
        ASSERT_EQ(chmod(page.c_str(), mode), 0);
        EXPECT_EQ(Run("--in-place=.bak", "page").status, 0);
        for (const char* const name : {"page", "page.bak"}) {
            struct stat state {};
            ASSERT_EQ(stat((folder.GetPath() / name).c_str(), &state), 0);
            EXPECT_EQ(state.st_mode & 07777U, mode) << name;
        }
        EXPECT_EQ(Read("page"), "<a b=\"c\">");
    }
}

TEST_F(ToolRewriteFiles, ALinkIsFollowedAndStays) {
    Write("page", "<a>");
    fs::create_directory(folder.GetPath() / "links");
    fs::create_symlink("../page", folder.GetPath() / "links/first");
    fs::create_symlink("first", folder.GetPath() / "links/second");
    EXPECT_EQ(Run("--in-place=.bak", "links/second").status, 0);
    EXPECT_EQ(Read("page"), "<a b=\"c\">");
    EXPECT_EQ(Read("page.bak"), "<a>");
    EXPECT_TRUE(fs::is_symlink(folder.GetPath() / "links/first"));
    EXPECT_TRUE(fs::is_symlink(folder.GetPath() / "links/second"));
    EXPECT_EQ(CountNames(), 3U);
    fs::create_symlink("nowhere", folder.GetPath() / "lost");
    EXPECT_TRUE(Ended(Run("--in-place", "lost"), 3, "lost: cannot be read: no such file\n"));
}

TEST_F(ToolRewriteFiles, ABackupThatIsTheFileItselfIsNoTrouble) {
    Write("page", "<a>");
    fs::create_hard_link(folder.GetPath() / "page", folder.GetPath() / "page.bak");
    EXPECT_EQ(Run("--in-place=.bak", "page").status, 0);
    EXPECT_EQ(Read("page"), "<a b=\"c\">");
    EXPECT_EQ(Read("page.bak"), "<a>");
    EXPECT_EQ(CountNames(), 2U);
}

TEST_F(ToolRewriteFiles, AFullDiskLeavesTheFile) {
    std::string page = "<a>";
    page.append(2000000, 'x');
    Write("page", page);
    settings.largestFile = 1000000;
    EXPECT_TRUE(Ended(Run("--in-place=.bak", "page"), 1, "page: cannot be written: File too large\n"));
    EXPECT_TRUE(Read("page") == page);
    EXPECT_EQ(CountNames(), 1U);
}

TEST_F(ToolRewriteFiles, AFolderThatTakesNoFileLeavesTheFile) {
    const ToolRun run =
        RunTool({"rewrite", "--in-place", "/proc/self/comm"}, settings);  // its folder takes none, from nobody
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(StartsWith(run.errors, "/proc/self/comm: cannot be written: "));
}

TEST_F(ToolRewriteFiles, NamesThatAreTooLong) {
    const std::string name(255, 'n');
    Write(name, "<a>");
    EXPECT_TRUE(Ended(Run("--in-place=.bak", name), 1, name + ": no backup can be written: File name too long\n"));
    EXPECT_EQ(Read(name), "<a>");
    EXPECT_EQ(CountNames(), 1U);
    EXPECT_EQ(Run("--in-place", name).status, 0);
    EXPECT_EQ(Read(name), "<a b=\"c\">");
    EXPECT_EQ(CountNames(), 1U);
}

TEST_F(ToolRewriteFiles, WhatIsNoFileIsNotWritten) {
    EXPECT_TRUE(Ended(RunTool({"rewrite", "--in-place", "/dev/null"}, settings), 1,
                      "/dev/null: cannot be written: it is not a regular file\n"));
    EXPECT_EQ(RunTool({"rewrite", "--set", "a.b=c", "/dev/null"}, settings).status, 0);
}

TEST_F(ToolRewriteFiles, APipeIsNotEvenOpened) {
    const fs::path pipe = folder.GetPath() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    fs::create_symlink("pipe", folder.GetPath() / "link");
    Write("page", "<a>");
    for (const char* const name : {"pipe", "link", "/dev/zero", "/dev/tty"}) {
        for (const char* const option : {"--in-place", "--in-place=.bak", "--dry-run"}) {
            Arguments arguments = {"rewrite", "--set", "a.b=c", "--in-place", option, name, "page"};
            EXPECT_TRUE(Ended(RunTool(arguments, settings), 1,
                              std::string(name) + ": cannot be written: it is not a regular file\n"))
                << name;
        }
        EXPECT_EQ(Read("page"), "<a b=\"c\">");
    }
    EXPECT_TRUE(fs::is_fifo(pipe));
}

TEST_F(ToolRewriteFiles, OtherNamesKeepTheOldBytes) {
    for (const char* const inPlace : {"--in-place", "--in-place=.bak"}) {
        Write("page", "<a>");
        fs::remove(folder.GetPath() / "other");
        fs::create_hard_link(folder.GetPath() / "page", folder.GetPath() / "other");
        EXPECT_EQ(Run(inPlace, "page").status, 0);
        EXPECT_EQ(Read("page"), "<a b=\"c\">");
        EXPECT_EQ(Read("other"), "<a>");
    }
    std::ofstream(folder.GetPath() / "other", std::ios::app) << "<later>";
    EXPECT_EQ(Read("other"), "<a><later>");
    EXPECT_EQ(Read("page.bak"), "<a>");
    EXPECT_EQ(CountNames(), 3U);
}

constexpr int ENDING_SIGNALS[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXCPU, SIGXFSZ};

/// A running tool that waits with the file beside the page open: it has something to say, and
/// nobody reads its standard error.
class WaitingTool {
public:
    /// @param ignoredSignal  0 for none
    WaitingTool(const fs::path& path, int ignoredSignal) {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
            throw std::system_error(errno, std::generic_category(), "pipe2");
        while (write(ends[1], "x", 1) == 1) {
        }
        fcntl(ends[1], F_SETFL, 0);
        reader = ends[0];
        child = fork();
        if (child == 0) {
            for (const int number : ENDING_SIGNALS)
                signal(number, SIG_DFL);  // a program in the background may run without some of them
            if (ignoredSignal != 0)
                signal(ignoredSignal, SIG_IGN);
            const rlimit noCore = {0, 0};  // some of the signals make a file of that name
            setrlimit(RLIMIT_CORE, &noCore);
            dup2(ends[1], STDERR_FILENO);
            if (chdir(path.c_str()) == 0)
                execl(KESTRA_TOOL, KESTRA_TOOL, "rewrite", "--set", "a.b=c", "--max-token", "5", "--in-place=.bak",
                      "page", nullptr);
            _exit(127);
        }
        close(ends[1]);
    }
    WaitingTool(const WaitingTool&) = delete;
    WaitingTool& operator=(const WaitingTool&) = delete;
    ~WaitingTool() {
        close(reader);
    }

    void Signal(int number) const {
        EXPECT_EQ(kill(child, number), 0);
    }

    /// Lets the tool speak.
    void Read() const {
        char block[4096];
        fcntl(reader, F_SETFL, 0);
        while (read(reader, block, sizeof(block)) > 0) {
        }
    }

    int WaitForEnd() const {
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        return status;
    }

private:
    int reader = -1;
    pid_t child = -1;
};

TEST_F(ToolRewriteFiles, ASignalLeavesNothingBesideTheFile) {
    Write("page", "<a><longer>");
    const auto waitForFileBeside = [this] {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        while (CountNames() < 2 && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        EXPECT_EQ(CountNames(), 2U);
    };
    for (const int number : ENDING_SIGNALS) {
        const WaitingTool tool(folder.GetPath(), 0);
        waitForFileBeside();
        tool.Signal(number);
        const int status = tool.WaitForEnd();
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == number) << number << ": " << status;
        EXPECT_EQ(CountNames(), 1U) << number;
        EXPECT_EQ(Read("page"), "<a><longer>");
    }
    const WaitingTool ignoring(folder.GetPath(), SIGHUP);
    waitForFileBeside();
    ignoring.Signal(SIGHUP);
    ignoring.Read();
    const int status = ignoring.WaitForEnd();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << status;
    EXPECT_EQ(CountNames(), 1U);
}

}  // namespace
}  // namespace Kestra::Test
