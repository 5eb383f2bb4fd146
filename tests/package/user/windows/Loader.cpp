// Loads the DLL, uses it and frees it, again and again, as a host does that loads a plug-in for
// each piece of work. It is not linked with the DLL. What a cycle takes of the process, the end of
// the cycle gives back.
#include <kestra/html/parser/GenericParser.h>
#include <kestra/platform/CharSet.h>
#include <kestra/platform/Characters.h>
#include <kestra/platform/InputStream.h>

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "../Check.h"
#include "../GermanPage.h"

using namespace Kestra;

namespace {

// The names that the compiler gives the functions.
constexpr const char* CONVERT =
    "_ZN6Kestra8StringNS12StringHelper18GetWideFromGenericEjPKcyPNSt7__cxx1112basic_stringIwSt11char_traitsIwESaIwEEEj";
constexpr const char* OPEN_FILE = "_ZN6Kestra3VFS17VirtualFileSystem16GetInputStreamExEPKw";
constexpr const char* CONSTRUCT = "_ZN6Kestra4HTML13GenericParserC1Ev";
constexpr const char* DESTROY = "_ZN6Kestra4HTML13GenericParserD1Ev";
constexpr const char* START = "_ZN6Kestra4HTML13GenericParser10StartParseEjNS1_14DataStreamTypeE";
constexpr const char* CHECK_ITSELF = "_ZN6Kestra4HTML13GenericParser12SetSelfCheckENS1_9SelfCheckE";
constexpr const char* PARSE_FILE = "_ZN6Kestra4HTML13GenericParser9ParseFileEPKw";
constexpr const char* DETECT = "_ZN6Kestra4HTML13GenericParser13DetectCharsetEPKvyPj";
constexpr const char* END = "_ZN6Kestra4HTML13GenericParser8EndParseEv";

constexpr int CYCLES = 1500;
constexpr int FIRST_CYCLES = 20;  ///< until the system has what it keeps

int failures = 0;

/// The loaded library.
class Library {
public:
    Library() : module(LoadLibraryW(L"kestra-html.dll")) {}  // beside the program
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library() {
        CHECK(FreeLibrary(module) != 0);
        CHECK(GetModuleHandleW(L"kestra-html.dll") == nullptr);
    }

    HMODULE Get() const {
        return module;
    }

    /// Calls a function, or a method with its object first.
    template <typename Result, typename... Arguments>
    Result Call(const char* name, Arguments... arguments) const {
        const auto call =
            reinterpret_cast<Result (*)(Arguments...)>(reinterpret_cast<void*>(GetProcAddress(module, name)));
        CHECK(call != nullptr);
        return call != nullptr ? call(arguments...) : Result();
    }

private:
    HMODULE module;
};

/// Where an image keeps the address of a function that it imports; null when it does not.
void** FindImport(HMODULE image, std::string_view function) {
    const auto* const base = reinterpret_cast<const std::byte*>(image);
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (const auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
         library->Name != 0; ++library) {
        const auto* names = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + library->OriginalFirstThunk);
        for (std::size_t i = 0; names[i].u1.AddressOfData != 0; ++i) {
            if (IMAGE_SNAP_BY_ORDINAL(names[i].u1.Ordinal))
                continue;
            const auto* const import = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names[i].u1.AddressOfData);
            if (function == reinterpret_cast<const char*>(import->Name))
                return reinterpret_cast<void**>(reinterpret_cast<std::uintptr_t>(base) + library->FirstThunk +
                                                i * sizeof(void*));
        }
    }
    return nullptr;
}

int requests = 0;

/// Refuses the first request. What the runtime needs to throw, it gets.
void* RefuseOnce(std::size_t size) {
    return ++requests == 1 ? nullptr : std::malloc(size);
}

/// For as long as it lives, the library gets its memory from the function above.
class RefusedMemory {
public:
    explicit RefusedMemory(HMODULE image) : entry(FindImport(image, "malloc")) {
        CHECK(entry != nullptr);
        if (entry != nullptr) {
            former = *entry;
            Write(reinterpret_cast<void*>(&RefuseOnce));
        }
    }
    RefusedMemory(const RefusedMemory&) = delete;
    RefusedMemory& operator=(const RefusedMemory&) = delete;
    ~RefusedMemory() {
        if (entry != nullptr)
            Write(former);
    }

private:
    void Write(void* address) {
        DWORD protection = 0;
        VirtualProtect(entry, sizeof(*entry), PAGE_READWRITE, &protection);
        *entry = address;
        VirtualProtect(entry, sizeof(*entry), protection, &protection);
    }

    void** entry;
    void* former = nullptr;
};

void UseParser(const Library& library, const wchar_t* page, const std::string& content) {
    alignas(HTML::GenericParser) std::byte room[sizeof(HTML::GenericParser)];
    void* const parser = room;
    library.Call<void*>(CONSTRUCT, parser);
    CHECK(library.Call<std::uint32_t>(START, parser, std::uint32_t{StringNS::CharSet::UTF8},
                                      HTML::GenericParser::DATA_STREAM_8BIT) == 0);
    CHECK(library.Call<std::uint32_t>(CHECK_ITSELF, parser, HTML::GenericParser::SELF_CHECK_CRC) == 0);
    CHECK(library.Call<std::uint32_t>(PARSE_FILE, parser, page) == 0);
    CHECK(library.Call<std::uint32_t>(END, parser) == 0);
    // What the system's detector answers is not the matter here, nor whether there is one.
    StringNS::CharSet::Code code = 0;
    library.Call<std::uint32_t>(DETECT, parser, static_cast<const void*>(content.data()), std::uint64_t{content.size()},
                                &code);
    library.Call<void*>(DESTROY, parser);
}

void UseConversion(const Library& library, std::uint32_t code, std::string_view text, WideStringView expected,
                   WideString* units) {
    units->assign(100, L'?');
    CHECK(library.Call<std::uint32_t>(CONVERT, code, text.data(), std::uint64_t{text.size()}, units,
                                      std::uint32_t{0}) == 0);
    CHECK(*units == expected);
}

/// Without memory for the path the library throws, catches, and opens nothing.
void UseException(const Library& library, const wchar_t* page) {
    requests = 0;
    VFS::InputStream* stream = nullptr;
    {
        const RefusedMemory refused(library.Get());
        stream = library.Call<VFS::InputStream*>(OPEN_FILE, page);
    }
    CHECK(stream == nullptr);
    CHECK(requests > 1);  // the exception's own memory
}

/// The open handles of this process. Their numbers are multiples of four, the smallest free one
/// first. Wine does not count them.
std::size_t CountHandles() {
    std::size_t count = 0;
    for (std::uintptr_t number = 4; number <= 0x10000; number += 4) {
        DWORD flags = 0;
        if (GetHandleInformation(reinterpret_cast<HANDLE>(number), &flags) != 0)
            ++count;
    }
    return count;
}

/// The indexes that are left, of the storage of threads and of that of fibers.
template <typename Take, typename GiveBack>
std::size_t CountFree(Take take, GiveBack giveBack) {
    std::vector<DWORD> taken;
    for (DWORD index = take(); index != TLS_OUT_OF_INDEXES; index = take())
        taken.push_back(index);
    for (const DWORD index : taken)
        giveBack(index);
    return taken.size();
}

static_assert(TLS_OUT_OF_INDEXES == FLS_OUT_OF_INDEXES);

/// What a process has that a library could keep.
struct Possessions {
    std::size_t handles = CountHandles();
    std::size_t freeThreadIndexes = CountFree([] { return TlsAlloc(); }, [](DWORD index) { TlsFree(index); });
    std::size_t freeFiberIndexes = CountFree([] { return FlsAlloc(nullptr); }, [](DWORD index) { FlsFree(index); });
};

/// A file of the page beside the program.
std::wstring WritePage(const std::string& content) {
    std::vector<wchar_t> path(32768);
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    const std::wstring page = std::wstring(path.begin(), path.end()) + L".html";
    const HANDLE file =
        CreateFileW(page.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    CHECK(WriteFile(file, content.data(), static_cast<DWORD>(content.size()), &written, nullptr) != 0 &&
          written == content.size());
    CloseHandle(file);
    return page;
}

}  // namespace

void Note(bool holds, const char* expression, const char* file, int line) {
    if (holds)
        return;
    std::printf("%s:%d: %s does not hold\n", file, line, expression);
    std::fflush(stdout);
    if (++failures >= 10)
        std::exit(1);
}

int main() {
    // COM stays loaded, as in most hosts: that of Wine loses a handle each time it goes.
    CHECK(LoadLibraryW(L"ole32.dll") != nullptr);
    const std::string content = GermanPage();
    const std::wstring page = WritePage(content);
    const std::string text = "a string that is too long for the object itself";
    std::unique_ptr<Possessions> first;
    for (int cycle = 1; cycle <= CYCLES; ++cycle) {
        WideString units;
        {
            const Library library;
            if (library.Get() == nullptr || GetModuleHandleW(L"kestra-html.dll") != library.Get()) {
                std::printf("cycle %d: the library cannot be loaded: error %lu\n", cycle, GetLastError());
                return 1;
            }
            UseParser(library, page.c_str(), content);
            UseConversion(library, 50221, "\x1B$BF|$\"\x1B(B.", L"\u65E5\u3042.", &units);
            UseException(library, page.c_str());
            UseConversion(library, 1251, text, WideString(text.begin(), text.end()), &units);
        }
        CHECK(units == WideString(text.begin(), text.end()));  // memory is of one pool, and outlives the library
        if (cycle == FIRST_CYCLES)
            first = std::make_unique<Possessions>();
    }
    const Possessions last;
    std::printf("after cycles: %d, %d\nhandles: %zu, %zu\nfree indexes of threads: %zu, %zu\nof fibers: %zu, %zu\n",
                FIRST_CYCLES, CYCLES, first->handles, last.handles, first->freeThreadIndexes, last.freeThreadIndexes,
                first->freeFiberIndexes, last.freeFiberIndexes);
    CHECK(first->handles > 0 && last.handles == first->handles);
    CHECK(first->freeThreadIndexes > 0 && last.freeThreadIndexes == first->freeThreadIndexes);
    CHECK(first->freeFiberIndexes > 0 && last.freeFiberIndexes == first->freeFiberIndexes);
    DeleteFileW(page.c_str());
    return failures == 0 ? 0 : 1;
}
