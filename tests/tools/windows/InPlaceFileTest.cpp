#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "platform/windows/WindowsApi.h"
#include "tests/support/TemporaryFolder.h"

// The class once more, under another name and with calls of the system that fail on demand.

namespace Kestra::Test {
namespace {

enum class Failing { NONE, DELETION_ON_CLOSE, REPLACE, REPLACE_AND_MOVE };

Failing failing = Failing::NONE;

BOOL SetInformation(HANDLE file, FILE_INFO_BY_HANDLE_CLASS kind, void* data, DWORD size) {
    if (failing != Failing::DELETION_ON_CLOSE)
        return SetFileInformationByHandle(file, kind, data, size);
    SetLastError(ERROR_NOT_SUPPORTED);
    return FALSE;
}

/// The failure after which the old file is gone.
BOOL Replace(const wchar_t* target, const wchar_t* written, const wchar_t* backup, DWORD flags, void* exclude,
             void* reserved) {
    if (failing != Failing::REPLACE && failing != Failing::REPLACE_AND_MOVE)
        return ReplaceFileW(target, written, backup, flags, exclude, reserved);
    DeleteFileW(target);
    SetLastError(ERROR_UNABLE_TO_MOVE_REPLACEMENT);
    return FALSE;
}

BOOL Move(const wchar_t* from, const wchar_t* to) {
    if (failing != Failing::REPLACE_AND_MOVE)
        return MoveFileW(from, to);
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

}  // namespace
}  // namespace Kestra::Test

#define InPlaceFile FailingInPlaceFile
#define SetFileInformationByHandle Test::SetInformation
#define ReplaceFileW Test::Replace
#define MoveFileW Test::Move
#include "tools/kestra-html/system/windows/InPlaceFile.cpp"  // NOLINT(bugprone-suspicious-include)
#undef InPlaceFile
#undef SetFileInformationByHandle
#undef ReplaceFileW
#undef MoveFileW

namespace Kestra::Test {
namespace {

namespace fs = std::filesystem;

TEST(InPlaceFileTest, NoFailureOfTheSystemLosesThePage) {
    const struct {
        Failing call;
        bool isWritten;
        bool hasItsName;
    } rows[] = {
        {Failing::NONE, true, true},
        {Failing::DELETION_ON_CLOSE, true, true},
        {Failing::REPLACE, true, true},
        {Failing::REPLACE_AND_MOVE, false, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.call));
        const TemporaryFolder folder;
        const fs::path page = folder.Write("page", "old");
        bool isWritten = true;
        failing = row.call;
        try {
            Tool::FailingInPlaceFile file(page.string());
            file.Write("new");
            file.Commit("");
        } catch (const Tool::InPlaceFailed&) {
            isWritten = false;
        }
        failing = Failing::NONE;
        EXPECT_EQ(isWritten, row.isWritten);
        EXPECT_EQ(fs::exists(page), row.hasItsName);
        int count = 0;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder.GetPath())) {
            std::ifstream bytes(entry.path(), std::ios::binary);
            EXPECT_EQ(std::string(std::istreambuf_iterator<char>(bytes), std::istreambuf_iterator<char>()), "new")
                << entry.path();
            ++count;
        }
        EXPECT_EQ(count, 1);
    }
}

TEST(InPlaceFileTest, AFileIsMadeWhenThatIsWanted) {
    for (const Failing call : {Failing::NONE, Failing::DELETION_ON_CLOSE}) {
        SCOPED_TRACE(static_cast<int>(call));
        const TemporaryFolder folder;
        const fs::path page = folder.GetPath() / "page";
        EXPECT_THROW(Tool::FailingInPlaceFile(page.string()), Tool::InPlaceFailed);
        EXPECT_THROW(Tool::FailingInPlaceFile((folder.GetPath() / "none" / "page").string(), Tool::MissingFile::MADE),
                     Tool::InPlaceFailed);
        failing = call;
        Tool::FailingInPlaceFile(page.string(), Tool::MissingFile::MADE).Write("lost");
        EXPECT_TRUE(fs::is_empty(folder.GetPath()));
        for (const char* const bytes : {"new", "newer"}) {
            Tool::FailingInPlaceFile file(page.string(), Tool::MissingFile::MADE);
            file.Write(bytes);
            file.Commit("");
            std::ifstream written(page, std::ios::binary);
            EXPECT_EQ(std::string(std::istreambuf_iterator<char>(written), std::istreambuf_iterator<char>()), bytes);
        }
        failing = Failing::NONE;
    }
}

}  // namespace
}  // namespace Kestra::Test
