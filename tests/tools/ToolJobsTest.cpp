#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

/// Runs over several inputs at a time.
class ToolJobs : public ToolTest {
protected:
    /// Pages of many sizes, some broken, so that the first one is done last. @return their names
    Arguments MakePages() {
        constexpr int PAGES = 40;
        Arguments names;
        for (int i = 0; i < PAGES; ++i) {
            const std::string name = "page" + std::to_string(i) + ".html";
            std::string page = "<title>" + std::to_string(i) + "</title>";
            for (int k = 0; k < (PAGES - i) * 50; ++k)
                page += "<p class='a b' id=" + std::to_string(k) + ">text &amp; <b>more</b>\n";
            if (i % 7 == 3)
                page += "<!-- open";
            Write(name, page);
            names.push_back(name);
        }
        return names;
    }

    ToolRun RunWithJobs(const char* jobs, const Arguments& command, const Arguments& names) {
        Arguments arguments = command;
        arguments.insert(arguments.end(), {"--jobs", jobs});
        return Run(Join(arguments, names));
    }

    static Arguments Join(Arguments first, const Arguments& second) {
        first.insert(first.end(), second.begin(), second.end());
        return first;
    }

    /// The names in lines of JSON, in order, with "/" between folders.
    static std::string NamesIn(const std::string& output) {
        static constexpr std::string_view MEMBER = "\"file\":\"";
        std::string names;
        for (std::size_t at = output.find(MEMBER); at != std::string::npos; at = output.find(MEMBER, at + 1)) {
            const std::size_t begin = at + MEMBER.size();
            names += output.substr(begin, output.find('"', begin) - begin) + ";";
        }
        for (std::size_t at = names.find("\\\\"); at != std::string::npos; at = names.find("\\\\"))
            names.replace(at, 2, "/");
        return names;
    }
};

TEST_F(ToolJobs, TheOutputIsThatOfOneAfterTheOther) {
    Arguments names = MakePages();
    names.insert(names.begin() + 5, "none.html");
    const Arguments commands[] = {
        {"tokens", "--charset", "utf-8"},
        {"tokens", "--charset", "utf-8", "--format", "json", "--places"},
        {"tokens", "--format", "json"},
        {"events", "--format", "json"},
        {"events"},
        {"detect"},
        {"detect", "--format", "json"},
        {"check", "--format", "json"},
        {"rewrite", "--dry-run", "--set", "p.class=c"},
    };
    for (const Arguments& command : commands) {
        const ToolRun serial = RunWithJobs("1", command, names);
        EXPECT_EQ(serial.status, 3) << command[0];
        EXPECT_NE(serial.errors.find("none.html: cannot be read"), std::string::npos) << command[0];
        EXPECT_GT(serial.output.size(), 1000U) << command[0];
        for (const char* const jobs : {"2", "5", "64"})
            EXPECT_TRUE(RunWithJobs(jobs, command, names) == serial) << command[0] << " --jobs " << jobs;
        const Arguments withoutJobs = Join(command, names);
        EXPECT_TRUE(Run(withoutJobs) == serial) << command[0];
    }
}

TEST_F(ToolJobs, InPlaceIsForManyFilesAndSaysThatTheyWait) {
    const Arguments names = MakePages();
    const ToolRun run = Run(Join({"rewrite", "--in-place", "--set", "p.class=c"}, names));
    EXPECT_TRUE(Ended(run, 0, ""));
    EXPECT_TRUE(Contains(Run({"rewrite", "--help"}).output, "--in-place writes one"));
    for (const std::string& name : names) {
        EXPECT_EQ(Read(name).find("class='a b'"), std::string::npos) << name;
        EXPECT_NE(Read(name).find("class='c'"), std::string::npos) << name;
    }
}

TEST_F(ToolJobs, WhatIsSaidOfAnEmptyNameIsNoLine) {
    Write("a.html", "<a>");
    const ToolRun run = Run({"tokens", "--format", "json", "-j", "2", "", "a.html"});
    EXPECT_TRUE(Ended(run, 3, ": cannot be read: no such file\n"));
    EXPECT_TRUE(StartsWith(run.output, "{\"event\":\"Error\""));
    EXPECT_EQ(run.output.find("\ncannot"), std::string::npos);
}

TEST_F(ToolJobs, AReaderThatGoesEndsAllThreads) {
    settings.output = Sink::CLOSED_PIPE;
    const ToolRun run = RunWithJobs("4", {"tokens", "--charset", "utf-8"}, MakePages());
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 141);
}

TEST_F(ToolJobs, FoldersAndFilesOfNames) {
    Write("site/a.html", "<a>");
    Write("site/sub/b.htm", "<b>");
    Write("site/c.txt", "<c>");
    Write("lines", "site/a.html\r\n\nsite/c.txt\n");
    Write("nuls", "site/c.txt\0site/sub/b.htm"s);
    const struct {
        Arguments arguments;
        std::string names;
    } CASES[] = {
        {{"--recursive", "site"}, "site/a.html;site/sub/b.htm;"},
        {{"-r", "site", "site/c.txt"}, "site/a.html;site/sub/b.htm;site/c.txt;"},
        {{"--files-from", "lines"}, "site/a.html;site/c.txt;"},
        {{"site/sub/b.htm", "--files-from", "lines"}, "site/sub/b.htm;site/a.html;site/c.txt;"},
        {{"--files-from", "nuls", "-0"}, "site/c.txt;site/sub/b.htm;"},
        {{"--files-from", "lines", "-r", "-j2"}, "site/a.html;site/c.txt;"},
    };
    for (const auto& row : CASES) {
        for (const Arguments& command : {Arguments{"tokens"}, {"events"}, {"check"}, {"detect"}}) {
            const ToolRun run = Run(Join(Join(command, {"--format", "json"}), row.arguments));
            EXPECT_EQ(NamesIn(run.output), row.names) << command[0] << " " << testing::PrintToString(row.arguments);
        }
    }
    settings.input = "site/a.html\n";
    EXPECT_EQ(NamesIn(Run({"tokens", "--format", "json", "--files-from", "-"}).output), "site/a.html;");
    settings.input = "site/a.html\n-\n";
    for (const char* const command : {"tokens", "events", "check", "detect", "rewrite"})
        EXPECT_EQ(Run({command, "--files-from", "-"}),
                  (ToolRun{2, "", "kestra-html: standard input is named more than once, but can be read only once\n"}))
            << command;
    Write("with-input", "site/a.html\n-\n");
    EXPECT_EQ(
        Run({"rewrite", "--in-place", "--files-from", "with-input"}),
        (ToolRun{2, "", "kestra-html: --in-place: standard input is no file (see kestra-html rewrite --help)\n"}));
    const ToolRun unread = Run({"tokens", "--files-from", "no-such-list"});
    EXPECT_EQ(unread.status, 3);
    EXPECT_EQ(unread.errors, "no-such-list: cannot be read: no such file\n");
    EXPECT_EQ(unread.output, "");
}

}  // namespace
}  // namespace Kestra::Test
