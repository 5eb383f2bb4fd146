#include "tools/kestra-html/input/InputList.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"

namespace Kestra::Test {
namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;

class PosixInputList : public testing::Test {
protected:
    void Write(const fs::path& name) {
        fs::create_directories((folder.GetPath() / name).parent_path());
        folder.Write(name, "");
    }

    std::string Path(const std::string& name) const {
        return (folder.GetPath() / name).string();
    }

    /// What the folder is replaced by, without its own name.
    Names List() const {
        Names names = Tool::ListInputs({folder.GetPath().string()});
        const std::size_t prefix = folder.GetPath().string().size() + 1;
        for (std::string& name : names)
            name = name.substr(prefix);
        return names;
    }

    TemporaryFolder folder;
};

TEST_F(PosixInputList, SortedFolderByFolder) {
    for (const char* const name :
         {"b/2.html", "b/10.html", "b/c/x.html", "b.html", "a.html", "Z.html", "\xC3\xA9.html", "b/c/d/e/f.htm"})
        Write(name);
    EXPECT_EQ(List(), (Names{"Z.html", "a.html", "b/10.html", "b/2.html", "b/c/d/e/f.htm", "b/c/x.html", "b.html",
                             "\xC3\xA9.html"}));
}

TEST_F(PosixInputList, ABlankEndsAName) {
    Write("a.html ");
    Write("b.html");
    EXPECT_EQ(List(), (Names{"b.html"}));
}

TEST_F(PosixInputList, LinksToFoldersAreFollowedOnlyWhenNamed) {
    Write("real/page.html");
    fs::create_directory_symlink(folder.GetPath() / "real", folder.GetPath() / "link");
    fs::create_directory_symlink(folder.GetPath(), folder.GetPath() / "real/loop");
    fs::create_symlink(folder.GetPath() / "real/page.html", folder.GetPath() / "page-link.html");
    fs::create_symlink(folder.GetPath() / "nowhere", folder.GetPath() / "torn.html");
    fs::create_directory_symlink(folder.GetPath() / "real", folder.GetPath() / "folder-link.html");
    EXPECT_EQ(List(), (Names{"page-link.html", "real/page.html", "torn.html"}));
    EXPECT_EQ(Tool::ListInputs({Path("link")}), (Names{Path("link/page.html")}));
}

TEST_F(PosixInputList, AFolderThatCannotBeReadStays) {
    // So deep that the system opens it by no name: paths end at 4096 bytes.
    const std::string level(250, 'd');
    const fs::path home = fs::current_path();
    Write("z.html");
    fs::current_path(folder.GetPath());
    for (int i = 0; i < 20; ++i) {
        fs::create_directory(level);
        fs::current_path(level);
    }
    fs::current_path(home);
    const Names names = List();
    ASSERT_EQ(names.size(), 2U);
    EXPECT_GT(names[0].size(), 3800U);
    EXPECT_TRUE(names[0].ends_with("/" + level));
    EXPECT_EQ(names[1], "z.html");
}

}  // namespace
}  // namespace Kestra::Test
