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

class InputList : public testing::Test {
protected:
    void Write(const fs::path& name) {
        fs::create_directories((folder.GetPath() / name).parent_path());
        folder.Write(name, "");
    }

    std::string Path(const std::string& name) const {
        return (folder.GetPath() / name).string();
    }

    /// What the folder is replaced by, without its own name, parted by slashes.
    Names List() const {
        Names names = Tool::ListInputs({folder.GetPath().string()});
        const std::size_t prefix = folder.GetPath().string().size() + 1;
        for (std::string& name : names)
            name = fs::path(name.substr(prefix)).generic_string();
        return names;
    }

    TemporaryFolder folder;
};

TEST_F(InputList, PagesByTheEndOfTheirNames) {
    for (const char* const name : {"a.html", "b.HTML", "c.htm", "d.Htm", "e.xhtml", "f.XhtmL", "g.txt", "h", "html",
                                   "i.html.gz", "j.htmlx", "k.shtml", ".html"}) {
        Write(name);
    }
    EXPECT_EQ(List(), (Names{".html", "a.html", "b.HTML", "c.htm", "d.Htm", "e.xhtml", "f.XhtmL"}));
}

TEST_F(InputList, AFolderIsNoPage) {
    Write("folder.html/page.html");
    fs::create_directory(folder.GetPath() / "empty.html");
    EXPECT_EQ(List(), (Names{"folder.html/page.html"}));
}

TEST_F(InputList, OtherNamesStayAsTheyAreAndWhereTheyAre) {
    Write("b.html");
    Write("text.txt");
    EXPECT_EQ(Tool::ListInputs({"-", Path("text.txt"), Path("none"), Path(""), "", "-"}),
              (Names{"-", Path("text.txt"), Path("none"), Path("") + "b.html", "", "-"}));
    EXPECT_EQ(Tool::ListInputs({}), Names());
}

}  // namespace
}  // namespace Kestra::Test
