#include <array>
#include <set>
#include <utility>

#include "tests/platform/FileCheck.h"
#include "tests/platform/windows/SystemCalls.h"

// What the streams owe to Windows: wide names of any length, sharing, pipes of messages, handles,
// failing calls.

namespace Kestra::Test {
namespace {

constexpr DWORD SHARE_ALL = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// Closes a handle of the system.
class Handle {
public:
    explicit Handle(HANDLE openHandle) : handle(openHandle) {}
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() {
        Close();
    }

    void Close() {
        if (IsOpen())
            CloseHandle(handle);
        handle = INVALID_HANDLE_VALUE;
    }

    bool IsOpen() const {
        return handle != INVALID_HANDLE_VALUE;
    }

    HANDLE Get() const {
        return handle;
    }

private:
    HANDLE handle;
};

HANDLE OpenExisting(const std::wstring& path, DWORD access, DWORD share) {
    return CreateFileW(path.c_str(), access, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

/// @return false when the system does not take the name
bool WriteFileAt(const std::wstring& path, std::string_view bytes) {
    const Handle file(
        CreateFileW(path.c_str(), GENERIC_WRITE, SHARE_ALL, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    return file.IsOpen() &&
           WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) != 0;
}

std::wstring GetFolderPath(const TemporaryFolder& folder) {
    std::filesystem::path path = std::filesystem::absolute(folder.GetPath());
    return path.make_preferred().wstring();
}

TEST(WindowsPathTest, NamesInAnyScript) {
    const std::wstring names[] = {
        L"plain",
        L"a b  c",
        L".dots...in.it",
        L"\u00E9t\u00E9",
        L"e\u0301te\u0301",
        L"\u0414\u043E\u043A\u0443\u043C\u0435\u043D\u0442.html",
        L"\u05E2\u05D1\u05E8\u05D9\u05EA",
        L"\u0627\u0644\u0639\u0631\u0628\u064A\u0629",
        L"\u65E5\u672C\u8A9E\\..\\\u65E5\u672C",
        L"\u0E44\u0E17\u0E22",
        L"\U0001F600\U00010000\U0010FFFD",
        L"\u00A0\u3000\uFEFF",
        L"\u0391\u03B1 \u0130\u0131 \u00DF\u1E9E",
        L"%TEMP%",
    };
    const TemporaryFolder folder;
    const std::wstring front = GetFolderPath(folder) + L"\\";
    ASSERT_NE(CreateDirectoryW((front + L"\u65E5\u672C\u8A9E").c_str(), nullptr), 0);
    int number = 0;
    for (const std::wstring& name : names) {
        SCOPED_TRACE(testing::PrintToString(name));
        const std::string content = "file " + std::to_string(++number);
        ASSERT_TRUE(WriteFileAt(front + name, content));
    }
    number = 0;
    for (const std::wstring& name : names) {
        SCOPED_TRACE(testing::PrintToString(name));
        EXPECT_EQ(ReadWhole(front + name), "file " + std::to_string(++number));
        std::wstring slashes = front + name;
        std::replace(slashes.begin(), slashes.end(), L'\\', L'/');
        EXPECT_EQ(ReadWhole(slashes), "file " + std::to_string(number));
    }
}

TEST(WindowsPathTest, ALoneSurrogateNamesNoOtherFile) {
    const TemporaryFolder folder;
    const std::wstring front = GetFolderPath(folder) + L"\\";
    // What lenient conversions make of the names below.
    for (const wchar_t* found : {L"a", L"az", L"a_", L"a\uFFFD", L"a\uFFFDz", L"a\uE000"})
        ASSERT_TRUE(WriteFileAt(front + found, "another one"));
    const std::wstring names[] = {
        {L'a', 0xD800},         {L'a', 0xDC00},         {L'a', 0xD800, L'z'},   {L'a', 0xDC00, L'z'},
        {L'a', 0xDC00, 0xD800}, {L'a', 0xDC00, 0xDC00}, {L'a', 0xD800, 0xD800}, {L'a', 0xD800, 0xE000},
    };
    for (const std::wstring& name : names) {
        EXPECT_EQ(Open(front + name), nullptr);
        if (WriteFileAt(front + name, "this one")) {  // Windows takes any units for a name
            EXPECT_EQ(ReadWhole(front + name), "this one");
        }
    }
}

TEST(WindowsPathTest, PathsThatNameNothing) {
    const TemporaryFolder folder;
    const std::wstring front = GetFolderPath(folder) + L"\\";
    ASSERT_TRUE(WriteFileAt(front + L"file", "x"));
    const std::wstring paths[] = {
        L"",
        L" ",
        L"\\",
        L"\\\\",
        L"\\\\?\\",
        L"\\\\.\\",
        L"\\\\?\\UNC\\",
        L"C:",
        L"C:\\",
        L"?:\\file",
        L":",
        L"::$DATA",
        front,
        front + L"file\\",
        front + L"file\\below",
        front + L"fil?",
        front + L"*",
        front + L"<file>",
        front + L"\"file\"",
        front + L"file|",
        front + L"file\n",
        front + L"missing",
        front + L"missing\\file",
        L"\\\\?\\" + front + L"missing",
        L"\\\\?\\" + front + L"missing\\..\\file",  // taken as it stands
        L"\\\\.\\pipe\\kestra-test-missing",
        L"\\\\.\\kestra-test-missing",
        std::wstring(100, L'\\'),
        std::wstring(40000, L'x'),
        front + std::wstring(40000, L'x'),
        front + std::wstring(300, L'x'),
        L"\\\\?\\" + front + std::wstring(40000, L'x'),
    };
    for (const std::wstring& path : paths) {
        SCOPED_TRACE(testing::PrintToString(path.substr(0, 200)));
        EXPECT_EQ(Open(path), nullptr);
        GenericParser parser;
        EXPECT_EQ(parser.ParseFile(path.c_str()), 2U);
    }
    EXPECT_EQ(VirtualFileSystem::GetInputStreamEx(nullptr), nullptr);
    EXPECT_EQ(ReadWhole(front + L"file"), "x");
    EXPECT_EQ(ReadWhole(std::wstring((front + L"file\0behind").c_str())), "x");
}

/// The folder in which the process works, changed for as long as it lives.
class WorkingFolder {
public:
    explicit WorkingFolder(const std::wstring& folder) {
        std::array<wchar_t, 1000> path;
        const DWORD length = GetCurrentDirectoryW(static_cast<DWORD>(path.size()), path.data());
        before.assign(path.data(), length);
        EXPECT_NE(SetCurrentDirectoryW(folder.c_str()), 0);
    }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;
    ~WorkingFolder() {
        SetCurrentDirectoryW(before.c_str());
    }

private:
    std::wstring before;
};

/// A chain of folders, made with the prefix that knows no limit and removed with it.
class LongFolder {
public:
    explicit LongFolder(const TemporaryFolder& folder) : path(GetFolderPath(folder)) {
        for (int i = 0; i < 4; ++i) {
            path += L"\\" + std::wstring(100, static_cast<wchar_t>(L'a' + i));
            EXPECT_NE(CreateDirectoryW((L"\\\\?\\" + path).c_str(), nullptr), 0);
            folders.push_back(path);
        }
    }
    LongFolder(const LongFolder&) = delete;
    LongFolder& operator=(const LongFolder&) = delete;
    ~LongFolder() {
        for (const std::wstring& file : files)
            DeleteFileW((L"\\\\?\\" + file).c_str());
        std::reverse(folders.begin(), folders.end());
        for (const std::wstring& each : folders)
            RemoveDirectoryW((L"\\\\?\\" + each).c_str());
    }

    void Write(const std::wstring& file, std::string_view bytes) {
        EXPECT_TRUE(WriteFileAt(L"\\\\?\\" + file, bytes));
        files.push_back(file);
    }

    const std::wstring& GetPath() const {
        return path;
    }

private:
    std::wstring path;
    std::vector<std::wstring> folders;
    std::vector<std::wstring> files;
};

TEST(WindowsPathTest, PathsAboveTheOldLimit) {
    const TemporaryFolder folder;
    const std::wstring front = GetFolderPath(folder);
    LongFolder longFolder(folder);
    const std::wstring file = longFolder.GetPath() + L"\\file.html";
    ASSERT_GT(file.size(), 400U);
    longFolder.Write(file, "far down");

    const std::wstring below = file.substr(front.size() + 1);
    std::wstring slashes = file;
    std::replace(slashes.begin(), slashes.end(), L'\\', L'/');
    EXPECT_EQ(ReadWhole(file), "far down");
    EXPECT_EQ(ReadWhole(slashes), "far down");
    EXPECT_EQ(ReadWhole(L"\\\\?\\" + file), "far down");
    EXPECT_EQ(ReadWhole(longFolder.GetPath() + L"\\.\\..\\" + std::wstring(100, L'd') + L"\\\\file.html"), "far down");
    EXPECT_EQ(ReadWhole(front + L"\\missing\\..\\" + below), "far down") << "\"..\" goes by the words";
    EXPECT_EQ(ReadWhole(file + L". ."), "far down") << "dots and blanks at the end go, as in short names";
    {
        const WorkingFolder working(front);
        EXPECT_EQ(ReadWhole(below), "far down");
        EXPECT_EQ(ReadWhole(L".\\" + below), "far down");
        EXPECT_EQ(ReadWhole(L"x\\..\\" + below), "far down");
        EXPECT_EQ(ReadWhole(front.substr(2) + L"\\" + below), "far down") << "from the root of the drive";
    }
    EXPECT_EQ(Open(longFolder.GetPath()), nullptr) << "a folder";
    EXPECT_EQ(Open(L"\\\\?\\" + longFolder.GetPath()), nullptr);
    EXPECT_EQ(Open(longFolder.GetPath() + L"\\missing"), nullptr);
    EXPECT_EQ(Open(file + L"\\below a file"), nullptr);
    EXPECT_EQ(Open(L"\\\\localhost\\missing\\" + std::wstring(300, L'x')), nullptr);
    EXPECT_EQ(GenericParser().ParseFile((longFolder.GetPath() + L"\\missing").c_str()), 2U);
}

TEST(WindowsPathTest, PathsAroundTheOldLimit) {
    const TemporaryFolder folder;
    const std::wstring front = GetFolderPath(folder);
    LongFolder longFolder(folder);
    const std::wstring shortFolder = longFolder.GetPath().substr(0, front.size() + 101);
    for (std::size_t length = 240; length < 275; ++length) {
        const std::wstring file = shortFolder + L"\\" + std::wstring(length - shortFolder.size() - 1, L'x');
        const std::string content = std::to_string(length);
        longFolder.Write(file, content);
        EXPECT_EQ(ReadWhole(file), content);
        const WorkingFolder working(shortFolder);
        EXPECT_EQ(ReadWhole(file.substr(shortFolder.size() + 1)), content) << "short by itself, long from the root";
    }
}

/// What the system is asked to open for a path.
std::wstring Ask(const std::wstring& path) {
    std::wstring asked = L"nothing";
    HookedSystem system;
    system->createFile = [&asked](const wchar_t* opened, DWORD) {
        asked = opened;
        return true;
    };
    Open(path);
    return asked;
}

TEST(WindowsPathTest, EveryPathGetsThePrefixThatTakesItAsItStands) {
    const std::wstring name(100, L'x');
    const std::wstring longPath = L"C:\\" + name + L"\\" + name + L"\\" + name;
    const TemporaryFolder folder;
    const std::wstring front = GetFolderPath(folder);
    const std::wstring drive = front.substr(0, 2);
    const WorkingFolder working(front);
    struct Row {
        const char* note;
        std::wstring path;
        std::wstring expected;
    };
    const Row rows[] = {
        {"short", L"C:\\file", L"\\\\?\\C:\\file"},
        {"short and relative", L"a/../file", L"\\\\?\\" + front + L"\\file"},
        {"dots and blanks at the end", L"file. .", L"\\\\?\\" + front + L"\\file"},
        {"from the root of the drive", L"\\file", L"\\\\?\\" + drive + L"\\file"},
        {"from the folder of a drive", drive + L"file", L"\\\\?\\" + front + L"\\file"},
        {"a device", L"NUL", L"NUL"},
        {"a device with a colon", L"con: ", L"con: "},
        {"the console", L"CONIN$", L"CONIN$"},
        {"a device with slashes", L"//./NUL", L"\\\\.\\NUL"},
        {"the name of a device and an extension", L"nul.html", L"\\\\?\\" + front + L"\\nul.html"},
        {"the name of a device and a dot", L"nul.", L"\\\\?\\" + front + L"\\nul"},
        {"the name of a device in a folder", L"C:\\folder/sub\\con", L"\\\\?\\C:\\folder\\sub\\con"},
        {"the name of a device in this folder", L"./COM1", L"\\\\?\\" + front + L"\\COM1"},
        {"the name of a device in the folder of a drive", drive + L"aux", L"\\\\?\\" + front + L"\\aux"},
        {"the name of a device in the root", L"\\PRN", L"\\\\?\\" + drive + L"\\PRN"},
        {"the name of a device with dots and blanks at the end", L"a\\..\\lpt1.x .. ",
         L"\\\\?\\" + front + L"\\lpt1.x"},
        {"the name of a device and a stream", L"nul:stream", L"\\\\?\\" + front + L"\\nul:stream"},
        {"the name of a device in a share", L"\\\\localhost\\missing\\nul.html",
         L"\\\\?\\UNC\\localhost\\missing\\nul.html"},
        {"a device by its full name", L"\\\\.\\pipe\\" + name + name + name, L"\\\\.\\pipe\\" + name + name + name},
        {"a short share", L"\\\\localhost\\missing\\file", L"\\\\?\\UNC\\localhost\\missing\\file"},
        {"long", longPath, L"\\\\?\\" + longPath},
        {"long with slashes", L"C:/" + name + L"/" + name + L"//" + name, L"\\\\?\\" + longPath},
        {"long with a way back", L"C:\\" + name + L"\\" + name + L"\\a\\..\\" + name, L"\\\\?\\" + longPath},
        {"long, with the prefix", L"\\\\?\\" + longPath, L"\\\\?\\" + longPath},
        {"short, with the prefix", L"\\\\?\\C:\\file", L"\\\\?\\C:\\file"},
        {"a long share", L"\\\\localhost\\missing\\" + name + L"\\" + name + L"\\" + name,
         L"\\\\?\\UNC\\localhost\\missing\\" + name + L"\\" + name + L"\\" + name},
        {"long and relative", name + L"\\" + name + L"\\" + name,
         L"\\\\?\\" + front + L"\\" + name + L"\\" + name + L"\\" + name},
        {"long in words, short in the end", L"C:\\" + name + L"\\" + name + L"\\" + name + L"\\..\\..\\..\\file",
         L"\\\\?\\C:\\file"},
        {"long from the folder it starts in",
         name + L"\\" + std::wstring(158 - std::min<std::size_t>(front.size(), 57), L'y'),
         L"\\\\?\\" + front + L"\\" + name + L"\\" + std::wstring(158 - std::min<std::size_t>(front.size(), 57), L'y')},
    };
    for (const Row& row : rows)
        EXPECT_TRUE(Ask(row.path) == row.expected) << row.note << ": " << testing::PrintToString(Ask(row.path));
}

TEST(WindowsPathTest, AFileMayHaveTheNameOfADevice) {
    const std::wstring names[] = {
        L"nul.html",  L"CON.html", L"con",    L"Aux.x.y",      L"COM1",
        L"LPT9.html", L"prn.",     L"CONIN$", L"conout$.html", L"NUL",
    };
    const TemporaryFolder folder;
    const std::wstring front = GetFolderPath(folder);
    const WorkingFolder working(front);
    for (const std::wstring& name : names) {
        SCOPED_TRACE(testing::PrintToString(name));
        const std::wstring file = L"\\\\?\\" + front + L"\\" + name.substr(0, name.find_last_not_of(L'.') + 1);
        ASSERT_TRUE(WriteFileAt(file, "a file"));
        EXPECT_EQ(ReadWhole(file), "a file");
        EXPECT_EQ(ReadWhole(front + L"\\" + name), "a file");
        EXPECT_EQ(ReadWhole(front + L"/missing/..//" + name), "a file");
        EXPECT_EQ(ReadWhole(L".\\" + name), "a file");
        EXPECT_EQ(ReadWhole(L"./" + name), "a file");
        EXPECT_EQ(ReadWhole(front.substr(0, 2) + name), "a file");
        if (name.find(L'.') != std::wstring::npos) {
            EXPECT_EQ(ReadWhole(name), "a file");
        }
        EXPECT_EQ(ParseToColumn(front + L"\\" + name), 7U);
        if (name == L"NUL") {
            EXPECT_EQ(ReadWhole(L"nul"), "") << "alone it is the device";
        }
        EXPECT_NE(DeleteFileW(file.c_str()), 0);
        EXPECT_EQ(Open(front + L"\\" + name), nullptr) << "no device takes its place";
    }
}

TEST(WindowsPathTest, AnotherThreadMayMoveTheProcessMeanwhile) {
    const TemporaryFolder folder;
    LongFolder longFolder(folder);
    const std::wstring front = GetFolderPath(folder);
    longFolder.Write(longFolder.GetPath() + L"\\file", "far down");
    const std::wstring below = longFolder.GetPath().substr(front.size() + 1) + L"\\file";
    const WorkingFolder working(front);
    HookedSystem system;
    int calls = 0;
    system->getFullPathName = [&calls](const wchar_t* path, DWORD size, wchar_t* absolute) {
        const DWORD length = RealSystem::GetFullPath(path, size, absolute);
        return ++calls == 1 ? length - 10 : length;  // the folder had a shorter name then
    };
    EXPECT_EQ(ReadWhole(below), "far down");
    EXPECT_EQ(calls, 3);
}

TEST(WindowsPathTest, WithoutMemoryNothingIsOpened) {
    const TemporaryFolder folder;
    LongFolder longFolder(folder);
    longFolder.Write(longFolder.GetPath() + L"\\file", "far down");
    const std::wstring paths[] = {folder.Write("file", "near").wstring(), longFolder.GetPath() + L"\\file"};
    for (const std::wstring& path : paths) {
        std::unique_ptr<InputStream> stream;
        {
            const NoMemory none;
            stream.reset(VirtualFileSystem::GetInputStreamEx(path.c_str()));
        }
        EXPECT_EQ(stream, nullptr);
        EXPECT_NE(Open(path), nullptr);
    }
}

TEST(WindowsFileTest, AFileThatIsLockedIsNotOpened) {
    const TemporaryFolder folder;
    const std::wstring path = folder.Write("locked", "text").wstring();
    for (const DWORD share : {0UL, static_cast<DWORD>(FILE_SHARE_WRITE), static_cast<DWORD>(FILE_SHARE_DELETE)}) {
        Handle lock(OpenExisting(path, GENERIC_READ | GENERIC_WRITE, share));
        ASSERT_TRUE(lock.IsOpen());
        EXPECT_EQ(Open(path), nullptr) << share;
        GenericParser parser;
        EXPECT_EQ(parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT), 0U);
        EXPECT_EQ(parser.ParseFile(path.c_str()), 2U);
        lock.Close();
        EXPECT_EQ(ReadWhole(path), "text");
    }
}

TEST(WindowsFileTest, AnOpenFileMayBeWrittenRenamedAndDeletedByOthers) {
    const TemporaryFolder folder;
    const std::wstring path = folder.Write("file", "0123456789").wstring();
    const std::wstring renamed = path + L"-renamed";
    std::unique_ptr<InputStream> stream = Open(path);
    ASSERT_NE(stream, nullptr);
    std::string buffer(3, '?');
    std::uint64_t bytesRead = 0;
    ASSERT_EQ(stream->Read(buffer.data(), 3, &bytesRead), RESULT_OK);
    EXPECT_EQ(buffer, "012");

    EXPECT_NE(MoveFileW(path.c_str(), renamed.c_str()), 0);
    EXPECT_EQ(Open(path), nullptr);
    ASSERT_EQ(stream->Read(buffer.data(), 3, &bytesRead), RESULT_OK);
    EXPECT_EQ(buffer, "345");
    {
        const Handle writer(OpenExisting(renamed, GENERIC_WRITE, SHARE_ALL));
        ASSERT_TRUE(writer.IsOpen());
        DWORD written = 0;
        SetFilePointer(writer.Get(), 0, nullptr, FILE_END);
        EXPECT_NE(WriteFile(writer.Get(), "ab", 2, &written, nullptr), 0);
    }
    EXPECT_NE(DeleteFileW(renamed.c_str()), 0);
    EXPECT_EQ(ReadAll(stream.get(), 100).bytes, "6789ab");
    EXPECT_EQ(stream->Seek(1), RESULT_OK);
    EXPECT_EQ(ReadAll(stream.get(), 100).bytes, "123456789ab");
    stream.reset();
    EXPECT_EQ(GetFileAttributesW(renamed.c_str()), INVALID_FILE_ATTRIBUTES);
}

/// All open handles of this process.
std::vector<HANDLE> GetAllHandles() {
    std::vector<HANDLE> found;
    for (std::uintptr_t number = 4; number < 8000; number += 4) {
        const HANDLE handle = reinterpret_cast<HANDLE>(number);
        DWORD flags = 0;
        if (GetHandleInformation(handle, &flags) != 0)
            found.push_back(handle);
    }
    return found;
}

TEST(WindowsFileTest, ManyFilesAtOnce) {
    const TemporaryFolder folder;
    const std::wstring path = folder.Write("file", "0123456789").wstring();
    std::vector<std::unique_ptr<InputStream>> streams;
    for (std::size_t i = 0; i < 1000; ++i) {
        streams.push_back(Open(path));
        ASSERT_NE(streams.back(), nullptr);
        ASSERT_EQ(streams.back()->Seek(i % 10), RESULT_OK);
    }
    for (std::size_t i = 0; i < streams.size(); ++i)
        EXPECT_EQ(ReadAll(streams[i].get(), 100).bytes, std::string("0123456789").substr(i % 10));
}

TEST(WindowsDeviceTest, APipeOfMessagesIsReadAsBytes) {
    TestPipe server(true);
    const std::unique_ptr<InputStream> stream = Open(server.GetPath());
    ASSERT_NE(stream, nullptr);
    for (const char* message : {"", "a message of many bytes", "", "", "another", ""})  // an empty one is no end
        server.Write(message);
    server.Close();
    ExpectContent(stream.get(), 4, "a message of many bytesanother", RESULT_END_OF_DATA);
}

TEST(WindowsDeviceTest, TheServerOfAPipeCannotActAsItsReader) {
    const TestPipe server;
    DWORD asked = 0;
    HookedSystem system;
    system->createFile = [&asked](const wchar_t*, DWORD attributes) {
        asked = attributes;
        return true;
    };
    ASSERT_NE(Open(server.GetPath()), nullptr);
    EXPECT_EQ(asked & SECURITY_VALID_SQOS_FLAGS, static_cast<DWORD>(SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION));
}

TEST(WindowsFailuresTest, AHandleIsClosedWhenNoStreamCanBeMadeOfIt) {
    const TemporaryFolder folder;
    TestPipe server;
    for (const std::wstring& path :
         {folder.Write("file", "x").wstring(), std::wstring(L"NUL"), server.GetPath().wstring()}) {
        SCOPED_TRACE(testing::PrintToString(path));
        std::unique_ptr<InputStream> stream;
        std::vector<HANDLE> before;
        {
            HookedSystem system;
            std::optional<NoMemory> none;
            system->createFile = [&](const wchar_t*, DWORD) {
                before = GetAllHandles();
                none.emplace();
                return true;
            };
            stream.reset(VirtualFileSystem::GetInputStreamEx(path.c_str()));
        }
        EXPECT_EQ(stream, nullptr);
        EXPECT_FALSE(before.empty());
        EXPECT_EQ(GetAllHandles(), before);
    }
}

TEST(WindowsFailuresTest, AReadErrorOfAPipeIsAFailure) {
    TestPipe server;
    const std::unique_ptr<InputStream> stream = Open(server.GetPath());
    ASSERT_NE(stream, nullptr);
    FileCalls calls;
    calls.badPlace = 0;
    ExpectReadFails(stream.get());
}

TEST(WindowsFailuresTest, OneCallMovesAGigabyteAtMost) {
    const TemporaryFolder folder;
    const std::unique_ptr<InputStream> stream = Open(folder.Write("file", "x").wstring());
    ASSERT_NE(stream, nullptr);
    HookedSystem system;
    std::vector<std::pair<std::uint64_t, DWORD>> calls;
    system->readFile = [&calls](HANDLE, void*, DWORD size, DWORD* count, OVERLAPPED* place) -> BOOL {
        calls.emplace_back((std::uint64_t{place->OffsetHigh} << 32) | place->Offset, size);
        *count = size;  // nothing is moved: the buffer is none
        return TRUE;
    };
    char buffer = 0;
    std::uint64_t bytesRead = 0;
    EXPECT_EQ(stream->Read(&buffer, (std::uint64_t{5} << 30) + 7, &bytesRead), RESULT_OK);
    EXPECT_EQ(bytesRead, (std::uint64_t{5} << 30) + 7);
    const std::vector<std::pair<std::uint64_t, DWORD>> expected = {
        {0, 1U << 30},          {1ULL << 30, 1U << 30}, {2ULL << 30, 1U << 30},
        {3ULL << 30, 1U << 30}, {4ULL << 30, 1U << 30}, {5ULL << 30, 7},
    };
    EXPECT_EQ(calls, expected);
    ExpectPosition(stream.get(), (std::uint64_t{5} << 30) + 7);
}

TEST(WindowsTemporaryFileTest, VanishesWithItsHandleAndIsNobodyElses) {
    ASSERT_EQ(CountTemporaryFiles(), 0U);
    const std::size_t handles = GetOpenFiles().size();
    {
        TemporaryFile first;
        TemporaryFile second;
        ASSERT_EQ(first.Create(), RESULT_OK);
        ASSERT_EQ(second.Create(), RESULT_OK);
        EXPECT_EQ(GetOpenFiles().size(), handles + 2);
        EXPECT_EQ(CountTemporaryFiles(), 2U);
        const std::vector<OpenFile> files = GetOpenFiles(GetTemporaryEnding());
        ASSERT_EQ(files.size(), 2U);
        for (const OpenFile& file : files) {
            for (const DWORD access : {GENERIC_READ, static_cast<DWORD>(GENERIC_WRITE), static_cast<DWORD>(DELETE)}) {
                const Handle other(OpenExisting(file.name.wstring(), access, SHARE_ALL));
                EXPECT_FALSE(other.IsOpen()) << access;
            }
            EXPECT_EQ(Open(file.name), nullptr);
            EXPECT_EQ(DeleteFileW(file.name.c_str()), 0);
        }
    }
    EXPECT_EQ(CountTemporaryFiles(), 0U);
    EXPECT_EQ(GetOpenFiles().size(), handles);
    TemporaryFile never;  // without Create, its destructor has nothing to close
}

constexpr wchar_t FOLDER_OF_THE_DYING[] = L"KESTRA_TEST_FOLDER";

/// A folder for a process that dies, told to it by the environment; empty where none is told.
std::wstring GetFolderOfTheDying() {
    std::array<wchar_t, 1000> path;
    const DWORD length = GetEnvironmentVariableW(FOLDER_OF_THE_DYING, path.data(), static_cast<DWORD>(path.size()));
    return std::wstring(path.data(), length);
}

/// Lets the system name another folder for temporary files.
void NameFolder(HookedSystem* system, const std::wstring& folder) {
    (*system)->getTempPath = [folder](DWORD size, wchar_t* path) -> DWORD {
        if (folder.size() >= size)
            return static_cast<DWORD>(folder.size() + 1);
        folder.copy(path, folder.size());
        path[folder.size()] = 0;
        return static_cast<DWORD>(folder.size());
    };
}

std::size_t CountFiles(const std::filesystem::path& folder) {
    const std::filesystem::directory_iterator files(folder);
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

[[noreturn]] void DieWithTemporaryFile() {
    const std::wstring folder = GetFolderOfTheDying();
    HookedSystem system;
    NameFolder(&system, folder + L"\\");
    TemporaryFile file;
    const bool isWritten =
        file.Create() == RESULT_OK && file.Write(0, "text", 4) == RESULT_OK && CountFiles(folder) == 1;
    TerminateProcess(GetCurrentProcess(), isWritten ? 7 : 8);
    std::abort();
}

TEST(WindowsTemporaryFileDeathTest, VanishesWithAProcessThatIsKilled) {
    std::unique_ptr<TemporaryFolder> folder;
    if (GetFolderOfTheDying().empty()) {
        folder = std::make_unique<TemporaryFolder>();
        ASSERT_NE(SetEnvironmentVariableW(FOLDER_OF_THE_DYING, GetFolderPath(*folder).c_str()), 0);
    }
    EXPECT_EXIT(DieWithTemporaryFile(), testing::ExitedWithCode(7), "");
    ASSERT_NE(folder, nullptr);
    for (int i = 0; i < 500 && CountFiles(folder->GetPath()) > 0; ++i)
        Sleep(10);  // the system closes the handles in its own time
    EXPECT_EQ(CountFiles(folder->GetPath()), 0U);
    SetEnvironmentVariableW(FOLDER_OF_THE_DYING, nullptr);
}

TEST(WindowsTemporaryFileTest, LiesInTheFolderThatTheSystemNames) {
    const TemporaryFolder folder;
    const std::wstring front = GetFolderPath(folder);
    HookedSystem system;
    NameFolder(&system, front + L"\\");
    {
        TemporaryFile file;
        ASSERT_EQ(file.Create(), RESULT_OK);
        EXPECT_EQ(CountFiles(folder.GetPath()), 1U);
        TemporaryFile another;
        ASSERT_EQ(another.Create(), RESULT_OK);
        EXPECT_EQ(CountFiles(folder.GetPath()), 2U);
    }
    EXPECT_EQ(CountFiles(folder.GetPath()), 0U);
}

TEST(WindowsTemporaryFileTest, LiesInTheFolderThatTheHostNames) {
    const TemporaryFolder folder;
    const std::wstring front = GetFolderPath(folder);
    for (const std::wstring& path : {front, front + L"\\"}) {
        ASSERT_EQ(VirtualFileSystem::SetTemporaryFolder(path.c_str()), 0U);
        EXPECT_EQ(VirtualFileSystem::SetTemporaryFolder(L""), 2U);
        EXPECT_EQ(VirtualFileSystem::SetTemporaryFolder((front + std::wstring(300, L'x')).c_str()), 2U);
        {
            TemporaryFile file;
            ASSERT_EQ(file.Create(), RESULT_OK);
            EXPECT_EQ(CountFiles(folder.GetPath()), 1U);
        }
        EXPECT_EQ(VirtualFileSystem::SetTemporaryFolder(nullptr), 0U);
        TemporaryFile file;
        ASSERT_EQ(file.Create(), RESULT_OK);
        EXPECT_EQ(CountFiles(folder.GetPath()), 0U);
    }
}

TEST(WindowsTemporaryFileTest, ALongFolderAddsThePrefixThatLiftsTheLimit) {
    const TemporaryFolder folder;
    const std::wstring front = GetFolderPath(folder);
    const std::wstring deep = front + L"\\" + std::wstring(258 - std::min<std::size_t>(front.size() + 1, 200), L'x');
    ASSERT_EQ(deep.size(), 258U);
    ASSERT_NE(CreateDirectoryW((L"\\\\?\\" + deep).c_str(), nullptr), 0);
    {
        HookedSystem system;
        std::wstring asked;
        NameFolder(&system, deep + L"\\");
        system->createFile = [&asked](const wchar_t* path, DWORD) {
            asked = path;
            return true;
        };
        TemporaryFile file;
        EXPECT_EQ(file.Create(), RESULT_OK);
        EXPECT_TRUE(asked.starts_with(L"\\\\?\\" + deep + L"\\kestra-")) << testing::PrintToString(asked);
    }
    EXPECT_NE(RemoveDirectoryW((L"\\\\?\\" + deep).c_str()), 0);
}

TEST(WindowsTemporaryFileTest, ANameThatIsTakenIsTriedNoMore) {
    struct Row {
        DWORD error;
        int failures;
        std::uint32_t expected;
        int calls;
    };
    const Row rows[] = {
        {ERROR_FILE_EXISTS, 1, RESULT_OK, 2},
        {ERROR_FILE_EXISTS, 999, RESULT_OK, 1000},
        {ERROR_FILE_EXISTS, 1000, RESULT_STREAM_FAILED, 1000},
        {ERROR_ACCESS_DENIED, 1, RESULT_STREAM_FAILED, 1},
    };
    for (const Row& row : rows) {
        std::vector<std::wstring> names;
        HookedSystem system;
        system->createFile = [&](const wchar_t* path, DWORD) {
            names.emplace_back(path);
            SetLastError(row.error);
            return names.size() > static_cast<std::size_t>(row.failures);
        };
        TemporaryFile file;
        EXPECT_EQ(file.Create(), row.expected);
        EXPECT_EQ(names.size(), static_cast<std::size_t>(row.calls));
        EXPECT_EQ(std::set<std::wstring>(names.begin(), names.end()).size(), names.size()) << "another name each time";
    }
}

TEST(WindowsTemporaryFileTest, WithoutAFolderThereIsNoFile) {
    const TemporaryFolder folder;
    const std::wstring front = GetFolderPath(folder);
    for (const std::wstring& path :
         {std::wstring(), front + L"\\missing\\", front + L"\\" + std::wstring(300, L'x') + L"\\"}) {
        SCOPED_TRACE(testing::PrintToString(path));
        HookedSystem system;
        NameFolder(&system, path);
        TemporaryFile file;
        EXPECT_EQ(file.Create(), RESULT_STREAM_FAILED);
        TmpOutputStream output(5);
        EXPECT_EQ(output.Write("whole", 5), RESULT_OK);
        EXPECT_EQ(output.Write("x", 1), RESULT_STREAM_FAILED);
        EXPECT_EQ(output.GetResult(), RESULT_STREAM_FAILED);
        ExpectContent(output, 100, "whole", RESULT_STREAM_FAILED);
    }
}

TEST(WindowsTmpStreamTest, TheFileTakesOverInALongFolderToo) {
    const TemporaryFolder folder;
    const std::wstring deep = GetFolderPath(folder) + L"\\" + std::wstring(200, L'x');
    ASSERT_NE(CreateDirectoryW((L"\\\\?\\" + deep).c_str(), nullptr), 0);
    {
        HookedSystem system;
        NameFolder(&system, deep + L"\\");
        CheckThatAFileTakesOver();
    }
    EXPECT_NE(RemoveDirectoryW((L"\\\\?\\" + deep).c_str()), 0);
}

}  // namespace
}  // namespace Kestra::Test
