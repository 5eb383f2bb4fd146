#include <chrono>

#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

ToolRun Rewrite(std::string_view input, Arguments arguments = {}) {
    arguments.insert(arguments.begin(), "rewrite");
    return RunToolOn(input, arguments);
}

/// The output of a good run.
std::string Rewritten(std::string_view input, const Arguments& arguments) {
    const ToolRun run = Rewrite(input, arguments);
    EXPECT_TRUE(Ended(run, 0, ""));
    return run.output;
}

TEST(ToolRewrite, WithoutEditsTheOutputIsTheInput) {
    std::string everyByte;
    for (int byte = 0; byte < 256; ++byte)
        everyByte.push_back(static_cast<char>(byte));
    std::string page;
    while (page.size() < 200000)
        page += "<p class=x id='a b'>\xC3\xA9\n<br /><script>if (a < 'b') \"c\"; // d\n</script></p ><b / ><!-- e -->";
    const std::string inputs[] = {
        "",
        everyByte,
        everyByte + everyByte,
        page,
        Utf16(page),
        "\xFF\xFE" + Utf16("<p a='b'>"),
        "\xFF\xFE" + Utf16("<p a='b'") + "x",
        "\xFF",
        "\xEF\xBB",
        "\xEF\xBB\xBF<a>",
        "<a b / >c<!-x><![x]><?xml a/ ><![if !IE]>tail",
        "<script>`https:",
        "<!--" + std::string(150000, '-'),
        "<p>\xC1\xC2</p>\n<meta charset=koi8-r>\n<b>\xC1</b>",
        ReadFile(KESTRA_EXAMPLE_PAGES "/saltmarsh-point.html"),
    };
    const Arguments options[] = {
        {},
        {"--charset", "1252"},
        {"--input", "8bit"},
        {"--input", "utf16"},
        {"--remove-element", "none"},
        {"--replace", "*.none", "$", "y"},
    };
    for (const std::string& input : inputs) {
        for (const Arguments& arguments : options)
            EXPECT_TRUE(Rewritten(input, arguments) == input)
                << input.substr(0, 30) << testing::PrintToString(arguments);
    }
    EXPECT_TRUE(RunTool({"rewrite", KESTRA_EXAMPLE_PAGES "/saltmarsh-point.html"}).output ==
                inputs[std::size(inputs) - 1]);
}

TEST(ToolRewrite, Edits) {
    const struct {
        const char* note;
        Arguments arguments;
        std::string input;
        std::string output;
    } CASES[] = {
        {"an attribute is set", {"--set", "a.href=/x"}, "<a href='/y'>b</a><b href=c>", "<a href='/x'>b</a><b href=c>"},
        {"an attribute is added", {"--set", "a.rel=b"}, "<a>c</a>", "<a rel=\"b\">c</a>"},
        {"names have no case", {"--set", "A.HREF=x"}, "<a Href=y>", "<a Href=x>"},
        {"every element", {"--set", "*.a=b"}, "<x a=c></x><br a=d/>", "<x a=b></x><br a=b/>"},
        {"a value that is so already stays as it is", {"--set", "a.b=<"}, "<a b='&lt;'>", "<a b='&lt;'>"},
        {"characters of markup become references", {"--set", "a.b=<&>\"'"}, "<a b=\"c\">", "<a b=\"<&amp;>&quot;'\">"},
        {"every match is replaced",
         {"--replace", "a.href", "[xy]", "(\\0)"},
         "<a href=\"xay\" x=x>",
         "<a href=\"(x)a(y)\" x=x>"},
        {"references are decoded for it", {"--replace", "a.b", "&", "+"}, "<a b='c&amp;d&#38;e'>", "<a b='c+d+e'>"},
        {"no match", {"--replace", "a.b", "^x", "y"}, "<a b='c&d'>", "<a b='c&d'>"},
        {"bare words after it stay",
         {"--replace", "a.href", "^http:", "https:"},
         "<a href=\"http:x\" download>",
         "<a href=\"https:x\" download>"},
        {"an attribute is removed", {"--remove", "a.b"}, "<a b='c' d><e b>", "<a d><e b>"},
        {"all of its name", {"--remove", "a.b"}, "<a b=1 c=2 B=3>", "<a c=2>"},
        {"an element is removed", {"--remove-element", "script"}, "a<script>\"</b>\"</script>c", "ac"},
        {"by a selector",
         {"--remove-element", "div > p.x"},
         "<div><p class='x y'>a</p><p>b</p></div><p class=x>",
         "<div><p>b</p></div><p class=x>"},
        {"with what is in it",
         {"--remove-element", "div", "--set", "p.a=b"},
         "<div><div><p></div><p></div><p>",
         "<p a=\"b\">"},
        {"in the order of the options",
         {"--set", "a.b=1", "--replace", "a.b", "1", "2", "--set", "a.c=3"},
         "<a>",
         "<a b=\"2\" c=\"3\">"},
        {"names with other characters", {"--set", "s:a.x:y=b"}, "<s:a><s>", "<s:a x:y=\"b\"><s>"},
        {"a script may hide tags",
         {"--set", "a.b=c"},
         "<script>`http://`;</script><a>",
         "<script>`http://`;</script><a>"},
        {"not when it is text",
         {"--scripts", "text", "--set", "a.b=c"},
         "<script>`http://`;</script><a>",
         "<script>`http://`;</script><a b=\"c\">"},
        {"the rest stays as it is",
         {"--set", "p.a=b"},
         "<p / >\r\n<P\n>\xE9<!-x><p",
         "<p / >\r\n<P a=\"b\"\n>\xE9<!-x><p"},
    };
    for (const auto& row : CASES)
        EXPECT_EQ(Rewritten(row.input, row.arguments), row.output) << row.note;
}

TEST(ToolRewrite, ATokenOverTheLimitEndsTheEdits) {
    const ToolRun run = Rewrite("<a><!-- d --><a>", {"--max-token", "9", "--set", "a.b=c"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.output, "<a b=\"c\"><!-- d --><a>");
    EXPECT_TRUE(Contains(run.errors, "711"));
    EXPECT_EQ(Rewritten("<a><!-- d --><a>", {"--max-token", "10", "--set", "a.b=c"}),
              "<a b=\"c\"><!-- d --><a b=\"c\">");
}

TEST(ToolRewrite, Charsets) {
    const struct {
        const char* note;
        Arguments arguments;
        std::string input;
        std::string output;
    } CASES[] = {
        {"UTF-8 that says nothing",
         {"--replace", "a.b", "c", "\xE2\x82\xAC"},
         "<a b='c\xC3\xA9'>",
         "<a b='\xE2\x82\xAC\xC3\xA9'>"},
        {"what is no UTF-8 stays byte by byte",
         {"--replace", "a.b", "c", "d"},
         "<a b='c\xE9\x81\x80'>",
         "<a b='d\xE9\x81\x80'>"},
        {"windows-1252 has a euro", {"--replace", "a.b", "c", "\xE2\x82\xAC"}, "<a b='c\xE9'>", "<a b='\x80\xE9'>"},
        {"a charset that is declared",
         {"--set", "a.b=\xD0\xB9"},
         "<meta charset=windows-1251><a b=c>",
         "<meta charset=windows-1251><a b=\xE9>"},
        {"declared later",
         {"--set", "a.b=\xD0\xB9"},
         "<a b=c><meta charset=windows-1251>",
         "<a b=\xE9><meta charset=windows-1251>"},
        {"of the command line",
         {"--charset", "windows-1251", "--set", "a.b=\xD0\xB9"},
         "<a b=c>\xC3\xA9",
         "<a b=\xE9>\xC3\xA9"},
        {"what a charset lacks is a reference", {"--set", "a.b=\xE6\x97\xA5"}, "<a b=c>\xE9", "<a b=&#26085;>\xE9"},
        {"UTF-16 with a mark", {"--set", "a.b=d"}, "\xFF\xFE" + Utf16("<a b=c>e"), "\xFF\xFE" + Utf16("<a b=d>e")},
        {"UTF-16 by its type", {"--input", "utf16", "--remove", "a.b"}, Utf16("<a b=c>e"), Utf16("<a>e")},
        {"UTF-8 with a mark", {"--set", "a.b=\xC3\xA9"}, "\xEF\xBB\xBF<a b=c>", "\xEF\xBB\xBF<a b=\xC3\xA9>"},
    };
    for (const auto& row : CASES)
        EXPECT_EQ(Rewritten(row.input, row.arguments), row.output) << row.note;
}

TEST(ToolRewrite, ADryRunListsEveryEdit) {
    const std::string input = "<p>\n <a href=\"http:a&amp;b\" x=1 X='2'>c</a><i><b></i>\n\xC3\xA9<br>";
    const Arguments arguments = {"--dry-run",
                                 "--replace",
                                 "a.href",
                                 "^http",
                                 "https",
                                 "--remove",
                                 "a.x",
                                 "--set",
                                 "br.id=\xC3\xA9\n",
                                 "--remove-element",
                                 "i",
                                 "--set",
                                 "b.c=d",
                                 "--set",
                                 "a.href=https:a&b",
                                 "--replace",
                                 "p.x",
                                 "",
                                 "y"};
    EXPECT_EQ(Rewritten(input, arguments),
              "-:2:2: http:a&b -> https:a&b\n"
              "-:2:2: 1 -> (none)\n"
              "-:2:2: 2 -> (none)\n"
              "-:2:40: <i> -> (none)\n"
              "-:3:3: (none) -> \xC3\xA9\\x0A\n");
    EXPECT_EQ(Rewritten(Utf16(" <s>"), {"--input", "utf16", "--dry-run", "--remove-element", "s"}),
              "-:1:2: <s> -> (none)\n");
    EXPECT_EQ(Rewritten(input, {"--dry-run"}), "");
}

class ToolRewriteInPlace : public ToolTest {
protected:
    ToolRun Run(Arguments arguments) {
        arguments.insert(arguments.begin(), {"rewrite", "--set", "a.b=c"});
        return ToolTest::Run(arguments);
    }
};

TEST_F(ToolRewriteInPlace, FilesAreWrittenAndBackedUp) {
    const std::string name = "two words \xC3\xA9\xE6\x97\xA5.html";
    Write("page", "<a>");
    Write(name, "x<a>\r\n");
    Write("page.bak", "older");
    EXPECT_EQ(Run({"--in-place=.bak", "page", name}), (ToolRun{0, "", ""}));
    EXPECT_EQ(Read("page"), "<a b=\"c\">");
    EXPECT_EQ(Read("page.bak"), "<a>");
    EXPECT_EQ(Read(name), "x<a b=\"c\">\r\n");
    EXPECT_EQ(Read(name + ".bak"), "x<a>\r\n");
    EXPECT_EQ(GetNames().size(), 4U);

    EXPECT_EQ(RunTool({"rewrite", "--remove", "a.b", "--in-place", "page"}, settings).status, 0);
    EXPECT_EQ(Read("page"), "<a>");
    EXPECT_EQ(Read("page.bak"), "<a>");
    EXPECT_EQ(GetNames().size(), 4U) << "no backup, no temporary file";
    EXPECT_EQ(Run({"--in-place=.bak", "page"}).status, 0);
    EXPECT_EQ(Run({"--in-place=.bak", "--remove", "a.b", "page"}).status, 0) << "over a backup again";
    EXPECT_EQ(Read("page.bak"), "<a b=\"c\">");
}

TEST_F(ToolRewriteInPlace, WhatHasNothingToEditStaysAsItIs) {
    Write("empty", "");
    Write("page", "<p>");
    const fs::file_time_type before = fs::last_write_time(folder.GetPath() / "page") - std::chrono::hours(1);
    fs::last_write_time(folder.GetPath() / "page", before);
    const ToolRun run = Run({"--in-place=.bak", "empty", "page"});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(fs::last_write_time(folder.GetPath() / "page"), before);
    EXPECT_EQ(GetNames(), (Arguments{"empty", "page"}));
}

TEST_F(ToolRewriteInPlace, EveryFileHasItsTurn) {
    Write("first", "<a>");
    Write("last", "<a>");
    EXPECT_TRUE(Ended(Run({"--in-place", "first", "none", ".", "last"}), 3,
                      "none: cannot be read: no such file\n.: cannot be read: it is a folder, use --recursive\n"));
    EXPECT_EQ(Read("first"), "<a b=\"c\">");
    EXPECT_EQ(Read("last"), "<a b=\"c\">");
    EXPECT_EQ(GetNames(), (Arguments{"first", "last"}));
}

TEST_F(ToolRewriteInPlace, AReadOnlyFileStaysAsItIs) {
    Write("page", "<a>");
    const fs::perms writing = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    fs::permissions(folder.GetPath() / "page", writing, fs::perm_options::remove);
    const ToolRun run = Run({"--in-place=.bak", "page"});
    fs::permissions(folder.GetPath() / "page", fs::perms::owner_write, fs::perm_options::add);
    EXPECT_TRUE(Ended(run, 1, "page: cannot be written: it is read-only\n"));
    EXPECT_EQ(Read("page"), "<a>");
    EXPECT_EQ(GetNames(), Arguments{"page"});
}

TEST_F(ToolRewriteInPlace, AnEditThatCannotBeMadeLeavesTheFile) {
    Write("page", "<p><a>\xE9");
    const Arguments arguments = {"rewrite", "--set", "a.\xE6\x97\xA5=c", "--set", "a.b=c", "--charset", "1252"};
    Arguments inPlace = arguments;
    inPlace.insert(inPlace.end(), {"--in-place=.bak", "page"});
    EXPECT_TRUE(
        Ended(RunTool(inPlace, settings), 1,
              "page: an edit returned 723: this is no name of an attribute, or the charset of the document lacks a "
              "character of it (line 1, "
              "column 4)\n"));
    EXPECT_EQ(Read("page"), "<p><a>\xE9");
    EXPECT_EQ(GetNames(), Arguments{"page"});
    const ToolRun copied = RunToolOn("<p><a>\xE9", arguments);
    EXPECT_EQ(copied.status, 1);
    EXPECT_EQ(copied.output, "<p><a b=\"c\">\xE9") << "the other edits are made";
}

TEST_F(ToolRewriteInPlace, ABackupThatCannotBeWrittenLeavesTheFile) {
    Write("page", "<a>");
    fs::create_directory(folder.GetPath() / "page.bak");
    const ToolRun run = Run({"--in-place=.bak", "page"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(StartsWith(run.errors, "page: no backup can be written: "));
    EXPECT_EQ(Read("page"), "<a>");
    EXPECT_EQ(GetNames(), (Arguments{"page", "page.bak"}));
}

TEST_F(ToolRewriteInPlace, ADryRunWritesNothing) {
    Write("page", "<a>");
    const ToolRun run = Run({"--in-place=.bak", "--dry-run", "page", "page"});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(run.output, "page:1:1: (none) -> c\npage:1:1: (none) -> c\n");
    EXPECT_EQ(Read("page"), "<a>");
    EXPECT_EQ(GetNames(), Arguments{"page"});
}

TEST_F(ToolRewriteInPlace, LargeFilesAreWrittenInPieces) {
    std::string page;
    while (page.size() < 1000000)
        page += "<a>text of a link</a>\n";
    Write("page", page);
    EXPECT_EQ(Run({"--in-place=.bak", "page"}).status, 0);
    EXPECT_TRUE(Read("page.bak") == page);
    for (std::size_t at = page.find("<a>"); at != std::string::npos; at = page.find("<a>", at))
        page.replace(at, 3, "<a b=\"c\">");
    EXPECT_TRUE(Read("page") == page);
}

TEST(ToolRewriteFailures, OutputThatCannotBeWritten) {
    ToolSettings settings;
    settings.input = "<a>";
    settings.output = Sink::UNWRITABLE;
    EXPECT_TRUE(Ended(RunTool({"rewrite"}, settings), 1,
                      "standard output: cannot be written: " + GetReason(Sink::UNWRITABLE) + "\n"));
    settings.output = Sink::CAPTURED;
    settings.input.reset();
    EXPECT_TRUE(Ended(RunTool({"rewrite"}, settings), 3, "-: cannot be read: Bad file descriptor\n"));
    EXPECT_EQ(RunTool({"rewrite", "--set", "a.b=c"}, settings).status, 3);
}

}  // namespace
}  // namespace Kestra::Test
