#include "tests/tools/ToolRun.h"
#include "tests/tools/windows/Handle.h"
#include "tools/kestra-html/input/Input.h"
#include "tools/kestra-html/input/InputList.h"
#include "tools/kestra-html/output/JsonText.h"
#include "tools/kestra-html/output/PrintableName.h"
#include "tools/kestra-html/system/Arguments.h"
#include "tools/kestra-html/system/FileNames.h"
#include "tools/kestra-html/system/windows/Utf8.h"

namespace Kestra::Test {
namespace {

using Names = std::vector<std::string>;

const std::string RUSSIAN = "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82.html";
const std::string EMOJI = "\xF0\x9F\x98\x80 \xC3\xA9.html";

class FileNames : public ToolTest {
protected:
    void Write(const std::string& name, std::string_view bytes = "a") {
        ToolTest::Write(name, bytes);
    }

    std::string Path(const std::string& name) const {
        return folder.GetPath().string() + "\\" + name;
    }

    /// The names without that of the folder.
    Names Shorten(Names names) const {
        for (std::string& name : names) {
            if (name.starts_with(Path("")))
                name.erase(0, Path("").size());
        }
        return names;
    }

    Names List() const {
        return Shorten(Tool::ListInputs({folder.GetPath().string()}));
    }

    Names Expand(const std::string& pattern) const {
        return Shorten(Tool::ExpandWildcards({Path(pattern)}));
    }

    /// The tool's JSON Lines about these files, without those about what cannot be read.
    ToolRun Check(Names files) {
        files.insert(files.begin(), {"check", "--format", "json", "--charset", "1252"});
        ToolRun run = RunTool(files, settings);
        for (std::size_t at = 0; (at = run.output.find("{\"error\":", at)) != std::string::npos;)
            run.output.erase(at, run.output.find('\n', at) + 1 - at);
        return run;
    }

    static std::string Line(const std::string& file, std::size_t size = 1) {
        Tool::JsonText name;
        name.String(Tool::ToWide(file));
        return "{\"file\":" + std::string(name.Get()) + ",\"bytes\":" + std::to_string(size) +
               ",\"tokens\":1,\"endParse\":0,\"identical\":true,\"firstDifference\":null,\"parse\":0}\n";
    }
};

TEST_F(FileNames, AreListedFolderByFolderRegardlessOfCase) {
    for (const char* const name :
         {"b/2.html", "b/10.html", "b/c/x.html", "b.html", "a.html", "Z.html", "B2.HTM", "b/c/d/e/f.htm"})
        Write(name);
    Write("\xC3\xA9.html");
    Write("\xC3\x89.xhtml");
    EXPECT_EQ(List(), (Names{"a.html", "b\\10.html", "b\\2.html", "b\\c\\d\\e\\f.htm", "b\\c\\x.html", "b.html",
                             "B2.HTM", "Z.html", "\xC3\xA9.html", "\xC3\x89.xhtml"}));
}

/// A symbolic link to a folder. Wine makes none itself, and shows those of the system below it.
class FolderLink {
public:
    FolderLink(const fs::path& target, const fs::path& linkPath) : link(linkPath) {
        if (GetUnixNameCall() == nullptr)
            CreateSymbolicLinkW(link.c_str(), target.c_str(), SYMBOLIC_LINK_FLAG_DIRECTORY | ALLOW_UNPRIVILEGED);
        else
            RunUnix(L"ln", L"-s \"" + GetUnixName(target) + L"\"", true);
    }
    FolderLink(const FolderLink&) = delete;
    FolderLink& operator=(const FolderLink&) = delete;
    ~FolderLink() {
        if (GetUnixNameCall() == nullptr)
            RemoveDirectoryW(link.c_str());
        else
            RunUnix(L"rm", L"", false);
    }

    bool Exists() const {
        const DWORD attributes = GetFileAttributesW(link.c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    }

private:
    using UnixNameCall = char*(CDECL*)(const wchar_t* path);

    static constexpr DWORD ALLOW_UNPRIVILEGED = 2;  // SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE, since Windows 10

    /// @return null on Windows itself
    static UnixNameCall GetUnixNameCall() {
        return reinterpret_cast<UnixNameCall>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
    }

    static std::wstring GetUnixName(const fs::path& path) {
        char* const name = GetUnixNameCall()(fs::absolute(path).make_preferred().c_str());
        const std::wstring wide = Tool::ToWide(name);
        HeapFree(GetProcessHeap(), 0, name);
        return wide;
    }

    /// Runs a program of the system below Wine with the link as its last argument. Its end cannot
    /// be waited for, but what it does.
    void RunUnix(const std::wstring& program, const std::wstring& arguments, bool isThereThen) {
        std::wstring commandLine = program + L" " + arguments + L" \"" + GetUnixName(link) + L"\"";
        STARTUPINFOW start = {};
        start.cb = sizeof(start);
        PROCESS_INFORMATION process = {};
        Checked(CreateProcessW((L"\\\\?\\unix\\bin\\" + program).c_str(), commandLine.data(), nullptr, nullptr, FALSE,
                               0, nullptr, nullptr, &start, &process),
                "CreateProcess");
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
        for (int i = 0; i < 1000 && Exists() != isThereThen; ++i)
            Sleep(10);
    }

    fs::path link;
};

TEST_F(FileNames, LinksToFoldersAreFollowedOnlyWhenNamed) {
    Write("real/page.html");
    Write("real/below/page.html");
    const FolderLink link(folder.GetPath() / "real", folder.GetPath() / "link");
    const FolderLink page(folder.GetPath() / "real", folder.GetPath() / "folder-link.html");
    const FolderLink loop(folder.GetPath(), folder.GetPath() / "real" / "loop");
    if (!link.Exists())
        GTEST_SKIP() << "no right to make links";
    ASSERT_TRUE(loop.Exists() && page.Exists());
    EXPECT_EQ(List(), (Names{"real\\below\\page.html", "real\\page.html"}));
    EXPECT_EQ(Shorten(Tool::ListInputs({Path("link")})), (Names{"link\\below\\page.html", "link\\page.html"}));
    EXPECT_EQ(Expand("*\\page.html"), (Names{"folder-link.html\\page.html", "link\\page.html", "real\\page.html"}))
        << "named as well";
}

TEST_F(FileNames, KeepTheSeparatorsThatAreGiven) {
    Write("b/x.html");
    Write("y.html");
    const std::string slashes = folder.GetPath().generic_string();
    EXPECT_EQ(Tool::ListInputs({slashes + "/"}), (Names{slashes + "/b\\x.html", slashes + "/y.html"}));
    EXPECT_EQ(Tool::ListInputs({slashes}), (Names{slashes + "\\b\\x.html", slashes + "\\y.html"}));
    EXPECT_EQ(Tool::ExpandWildcards({slashes + "/b//*.html"}), (Names{slashes + "/b//x.html"}));
}

TEST_F(FileNames, WithWildcards) {
    for (const char* const name : {"b.html", "a.html", "C.HTML", "a1.htm", "a22.htm", "README", "d.e.html",
                                   "sub/x.html", "sub/Y.html", "sup/x.html", "sup/z/deep.html", "[a].html"}) {
        Write(name);
    }
    const struct {
        const char* pattern;
        Names names;
    } CASES[] = {
        {"*.html", {"a.html", "b.html", "C.HTML", "d.e.html", "[a].html"}},
        {"*.HTM", {"a1.htm", "a22.htm"}},
        {"a?.htm", {"a1.htm"}},
        {"a??.htm", {"a22.htm"}},
        {"?.html", {"a.html", "b.html", "C.HTML"}},
        {"*", {"a.html", "a1.htm", "a22.htm", "b.html", "C.HTML", "d.e.html", "README", "sub", "sup", "[a].html"}},
        {"*.*", {"a.html", "a1.htm", "a22.htm", "b.html", "C.HTML", "d.e.html", "README", "sub", "sup", "[a].html"}},
        {"r*.", {"README"}},
        {"*e*", {"d.e.html", "README"}},
        {"*.e.*", {"d.e.html"}},
        {"a*2*.h*m", {"a22.htm"}},
        {"su?\\x.html", {"sub\\x.html", "sup\\x.html"}},
        {"su?/*.html", {"sub/x.html", "sub/Y.html", "sup/x.html"}},
        {"su*\\z\\*", {"sup\\z\\deep.html"}},
        {"*\\", {"sub\\", "sup\\"}},
        {"none*", {"none*"}},
        {"none\\*", {"none\\*"}},
        {"*\\none", {"*\\none"}},
        {"a.html\\*", {"a.html\\*"}},
        {"[a]*", {"[a].html"}},
        {"a.html", {"a.html"}},
        {"none", {"none"}},
    };
    for (const auto& row : CASES)
        EXPECT_EQ(Expand(row.pattern), row.names) << row.pattern;
    EXPECT_EQ(Tool::ExpandWildcards({"-", "", "none?"}), (Names{"-", "", "none?"}));
    const std::string verbatim = "\\\\?\\" + folder.GetPath().string();
    EXPECT_EQ(Tool::ExpandWildcards({verbatim + "\\b.html"}), (Names{verbatim + "\\b.html"})) << "no wildcard";
    EXPECT_EQ(Tool::ExpandWildcards({verbatim + "\\b*"}), (Names{verbatim + "\\b.html"}));
}

TEST_F(FileNames, WildcardsInArguments) {
    Write("b.html");
    Write("a.html");
    Write("json");
    Write("-");
    Write(RUSSIAN);
    settings.input = "<p>standard input";
    EXPECT_EQ(Check({"*.html", "none*", "js?n", "--", "a*"}),
              (ToolRun{3, Line("a.html") + Line("b.html") + Line(RUSSIAN) + Line("json") + Line("a.html"),
                       "none*: cannot be read: no such file\n"}));
    EXPECT_EQ(Check({"?"}).output, Line(".\\-")) << "a file, and not standard input";
    EXPECT_EQ(Check({"--format", "js?n"}).status, 2) << "the value of an option is no file";
    EXPECT_EQ(RunTool({"check", "--format=json", "--recursive", "--charset", "1252", "*"}, settings).output,
              Line(".\\-") + Line("a.html") + Line("b.html") + Line("json") + Line(RUSSIAN));
}

TEST_F(FileNames, InUnicode) {
    for (const std::string& name : {RUSSIAN, EMOJI}) {
        Write(name);
        EXPECT_EQ(Check({name, name + "x"}), (ToolRun{3, Line(name), name + "x: cannot be read: no such file\n"}));
    }
    EXPECT_EQ(List(), (Names{RUSSIAN, EMOJI}));
}

TEST_F(FileNames, ArgumentsArriveAsTheyAre) {
    for (const std::string& name :
         {"a b"s, "a'b"s, "%TEMP%"s, "a^b&c"s, "back\\slash\\"s, "quo\"te"s, "end\\\""s, "\\\\\"x y\\\\"s, ""s}) {
        EXPECT_TRUE(Ended(Check({name}), 3, name + ": cannot be read: no such file\n"));
    }
}

TEST_F(FileNames, LongerThanTheOldLimit) {
    // Made by the system calls, as the C++ library does not lift the limit.
    const std::wstring prefix = L"\\\\?\\";
    const std::wstring level(100, L'd');
    std::wstring path = prefix + folder.GetPath().wstring();
    std::string relative;
    for (int i = 0; i < 4; ++i) {
        path += L"\\" + level;
        relative += std::string(i == 0 ? "" : "\\") + std::string(100, 'd');
        Checked(CreateDirectoryW(path.c_str(), nullptr), "CreateDirectory");
    }
    const std::wstring file = path + L"\\page.html";
    {
        const Handle handle(
            CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        DWORD written = 0;
        Checked(WriteFile(handle.Get(), "<p>", 3, &written, nullptr), "WriteFile");
    }
    const std::string line = Line(relative + "\\page.html", 3);
    EXPECT_EQ(Check({relative + "\\page.html"}).output, line);
    EXPECT_EQ(Check({relative + "\\p*.html"}).output, line);
    EXPECT_EQ(Check({"--recursive", relative}).output, line);
    EXPECT_EQ(Tool::ListInputs({Path(relative)}), (Names{Path(relative + "\\page.html")}));
    std::string bytes;
    EXPECT_EQ(Tool::ReadInput(Path(relative + "\\page.html"), &bytes), Tool::ReadResult::READ);
    EXPECT_EQ(bytes, "<p>");
    EXPECT_EQ(List(), (Names{relative + "\\page.html"}));

    DeleteFileW(file.c_str());
    for (int i = 0; i < 4; ++i) {
        RemoveDirectoryW(path.c_str());
        path.resize(path.size() - level.size() - 1);
    }
}

TEST_F(FileNames, OfDevices) {
    const std::wstring front = L"\\\\?\\" + folder.GetPath().wstring() + L"\\";
    const std::wstring files[] = {front + L"nul.html", front + L"CON.html", front + L"nul"};
    for (const std::wstring& file : files) {
        const Handle handle(
            CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        DWORD written = 0;
        Checked(WriteFile(handle.Get(), "<p>", 3, &written, nullptr), "WriteFile");
    }
    for (const std::string& name :
         {"nul.html"s, ".\\nul.html"s, Path("nul.html"), "./CON.html"s, "con.html"s, ".\\nul"s, Path("nul")}) {
        EXPECT_EQ(Check({name}).output, Line(name, 3));
        std::string bytes;
        EXPECT_EQ(Tool::ReadInput(name.find(':') == std::string::npos ? Path(name) : name, &bytes),
                  Tool::ReadResult::READ);
        EXPECT_EQ(bytes, "<p>");
    }
    EXPECT_EQ(Check({"c*.html"}).output, Line("CON.html", 3));
    EXPECT_EQ(Check({"nu?"}).output, Line(".\\nul", 3)) << "alone it is the device";
    EXPECT_TRUE(Contains(Check({"nul"}).output, "\"bytes\":0,"));
    for (const std::wstring& file : files)
        EXPECT_NE(DeleteFileW(file.c_str()), 0);
}

TEST_F(FileNames, ALoneSurrogateNamesNoOtherFile) {
    for (const wchar_t* const name : {L"a.html", L"a\uFFFD.html", L"a_.html", L"\uFFFD"})
        folder.Write(name, "another one");
    const std::string lone = Tool::NameFromWide(std::wstring{L'a', 0xD800} + L".html");
    EXPECT_TRUE(Tool::ToPath(lone).wstring().ends_with(std::wstring{L'\\', L'a', 0xD800} + L".html"));
    for (const std::string& name : {lone, Tool::NameFromWide(std::wstring{0xDC00})}) {
        const ToolRun run = Check({name});
        EXPECT_EQ(run, (ToolRun{3, "", Tool::PrintableName(name) + ": cannot be read: no such file\n"}));
        EXPECT_FALSE(Contains(run.errors, '\xED')) << "a surrogate is no character of UTF-8";
    }
}

TEST_F(FileNames, ThatAreForbidden) {
    Write("page.html");
    Write("page");
    for (const std::string& name : {"page\0.html"s, "page.html\0"s, "\0"s}) {
        std::string bytes;
        EXPECT_EQ(Tool::ReadInput(Path(name), &bytes), Tool::ReadResult::MISSING)
            << "what comes before the NUL would be a file";
        EXPECT_EQ(bytes, "");
    }
    EXPECT_EQ(Tool::ListInputs({folder.GetPath().string() + "\0x"s}), (Names{folder.GetPath().string() + "\0x"s}));
    for (const std::string& name :
         {"a<b"s, "a>b"s, "a|b"s, "a\x01"s, "a\tb"s, "page.html\\x"s, "\\\\?\\"s, "\\\\.\\none"s, "q:\\none"s}) {
        const ToolRun run = Check({name, "page"});
        EXPECT_EQ(run.status, 3) << name;
        EXPECT_EQ(run.output, Line("page")) << name;
        EXPECT_TRUE(StartsWith(run.errors, Tool::PrintableName(name) + ": cannot be read")) << name;
    }
}

TEST_F(FileNames, OfLockedFilesAndFolders) {
    Write("page.html");
    Write("locked.html");
    fs::create_directory(folder.GetPath() / "folder.html");
    const Handle lock(CreateFileW((folder.GetPath() / "locked.html").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
    EXPECT_EQ(Check({"*.html"}), (ToolRun{3, Line("page.html"),
                                          "folder.html: cannot be read: it is a folder, use --recursive\nlocked.html: "
                                          "cannot be read: permission denied\n"}));
    for (const char* const command : {"tokens", "events", "detect"}) {
        EXPECT_TRUE(
            Ended(RunTool({command, "locked.html", "folder.html", ".", "folder.html\\"}, settings), 3,
                  "locked.html: cannot be read: permission denied\nfolder.html: cannot be read: it is a folder, use "
                  "--recursive\n.: cannot be read: it is a folder, use --recursive\nfolder.html\\: cannot "
                  "be read: it is a folder, use --recursive\n"))
            << command;
    }
}

TEST_F(FileNames, AFileThatIsBeingWrittenCanBeRead) {
    Write("page.html");
    const Handle writer(CreateFileW((folder.GetPath() / "page.html").c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    EXPECT_EQ(Check({"page.html"}).output, Line("page.html"));
}

TEST_F(FileNames, BytesOfStandardInputArriveAsTheyAre) {
    settings.input =
        "a\r\nb\x1A"
        "c\nd\r\r\n\xFF"s;
    const ToolRun run = RunTool({"tokens", "--format", "json", "--charset", "1252", "--observer", "narrow"}, settings);
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(Contains(run.output, "{\"event\":\"Text\",\"text\":\"a\\r\\nb\\u001ac\\nd\\r\\r\\n\\u00ff\"}\n"));
    EXPECT_FALSE(Contains(run.output, '\r')) << "output is written as it is, too";
}

}  // namespace
}  // namespace Kestra::Test
