#include "platform/PlatformConverter.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "platform/Results.h"
#include "platform/windows/WindowsApi.h"

namespace Kestra::StringNS {

namespace {

/// The string conversion of the language library, which knows code pages that the system call refuses, EUC-JP (51932) among them.
struct LanguageLibrary {
    using ToWideCall = HRESULT(WINAPI*)(DWORD* mode, DWORD code, const char* source, INT* sourceSize, WideChar* target, INT* targetSize);
    using FromWideCall = HRESULT(WINAPI*)(DWORD* mode, DWORD code, const WideChar* source, INT* sourceSize, char* target, INT* targetSize);

    ToWideCall toWide = nullptr;
    FromWideCall fromWide = nullptr;

    /// Loaded with the first code page that needs it, and kept. Both calls are null when there is no such library.
    static const LanguageLibrary& Get() {
        static const LanguageLibrary library = Load();
        return library;
    }

private:
    template <typename Call>
    static Call Find(HMODULE module, const char* name) {
        return reinterpret_cast<Call>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    }

    static LanguageLibrary Load() {
        LanguageLibrary library;
        const HMODULE module = LoadLibraryExW(L"mlang.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
        if (module != nullptr) {
            library.toWide = Find<ToWideCall>(module, "ConvertINetMultiByteToUnicode");
            library.fromWide = Find<FromWideCall>(module, "ConvertINetUnicodeToMultiByte");
        }
        if (library.toWide == nullptr || library.fromWide == nullptr)
            library = {};
        return library;
    }
};

/// Numbers that the system call takes for another code page's name: the ANSI, OEM and Macintosh ones of the process or thread, symbols.
constexpr std::array<CharSet::Code, 5> ALIASES = {0, 1, 2, 3, 42};

/// What one call converts. Long strings are cut between two characters, as the calls count with 31 bits.
constexpr std::size_t STEP = std::size_t{1} << 20;

constexpr std::uint64_t MOST_PER_CALL = std::uint64_t{1} << 28;  ///< four bytes for each unit still fit into 31 bits

/// No byte below it is the second, third or fourth one of a character, in any code page whose characters stand for themselves.
constexpr unsigned char FIRST_TRAIL_BYTE = 0x30;

/// In these code pages an escape, or a shift, says what the bytes behind it mean.
constexpr bool IsStateful(CharSet::Code code) {
    return code == 65000 || (code >= 50220 && code <= 50229) || code == 52936 || (code >= 57002 && code <= 57011);
}

std::uint64_t FindCut(CharSet::Code code, const char* data, std::uint64_t size) {
    if (size <= STEP || IsStateful(code))
        return size;
    std::uint64_t cut = STEP;
    while (cut < size && static_cast<unsigned char>(data[cut]) >= FIRST_TRAIL_BYTE)
        ++cut;
    return cut;
}

std::uint64_t FindCut(CharSet::Code code, const WideChar* data, std::uint64_t size) {
    if (size <= STEP || IsStateful(code))
        return size;
    const bool splitsPair = data[STEP] >= 0xDC00 && data[STEP] <= 0xDFFF;
    return splitsPair ? STEP - 1 : STEP;
}

}  // namespace

/// The two ways to convert. Both take a size and answer how many units they wrote, or need when there is no room; 0 for a failure.
struct CharSetConverter::Platform::System {
    CharSet::Code code = CharSet::UNKNOWN;
    bool isLanguageLibrary = false;
    DWORD fromWideFlags = 0;

    /// @return null when neither converts the code page
    static std::unique_ptr<System> Open(CharSet::Code code);

    INT Convert(const char* data, INT size, WideChar* output, INT room) const;
    INT Convert(const WideChar* data, INT size, char* output, INT room) const;
};

std::unique_ptr<CharSetConverter::Platform::System> CharSetConverter::Platform::System::Open(CharSet::Code code) {
    if (std::find(ALIASES.begin(), ALIASES.end(), code) != ALIASES.end())
        return nullptr;
    auto system = std::make_unique<System>();
    system->code = code;
    if (system->Convert("a", 1, nullptr, 0) == 0) {
        system->isLanguageLibrary = true;
        if (system->Convert("a", 1, nullptr, 0) == 0)
            return nullptr;
    } else if (WideCharToMultiByte(code, WC_NO_BEST_FIT_CHARS, L"a", 1, nullptr, 0, nullptr, nullptr) != 0) {
        system->fromWideFlags = WC_NO_BEST_FIT_CHARS;  // no look-alikes; the stateful code pages take no flags
    }
    return system;
}

INT CharSetConverter::Platform::System::Convert(const char* data, INT size, WideChar* output, INT room) const {
    if (!isLanguageLibrary)
        return MultiByteToWideChar(code, 0, data, size, output, room);
    const LanguageLibrary& library = LanguageLibrary::Get();
    DWORD mode = 0;
    return library.toWide != nullptr && SUCCEEDED(library.toWide(&mode, code, data, &size, output, &room)) ? room : 0;
}

INT CharSetConverter::Platform::System::Convert(const WideChar* data, INT size, char* output, INT room) const {
    if (!isLanguageLibrary)
        return WideCharToMultiByte(code, fromWideFlags, data, size, output, room, nullptr, nullptr);
    const LanguageLibrary& library = LanguageLibrary::Get();
    DWORD mode = 0;
    return library.fromWide != nullptr && SUCCEEDED(library.fromWide(&mode, code, data, &size, output, &room)) ? room : 0;
}

namespace {

/// What is put behind a string that comes to no characters: it ends inside an escape, or is nothing else. A terminator is one character for
/// certain, and is taken away again; a change to ASCII goes in front of it where the terminator alone would be half of a character.
constexpr std::array<std::string_view, 3> ENDINGS = {std::string_view(), std::string_view("\0", 1), std::string_view("\x1B(B\0", 4)};

/// How many of them are tried, the empty one among them: only bytes have escapes.
template <typename In>
constexpr std::size_t GetEndingCount(CharSet::Code code) {
    const bool hasEscapes = sizeof(In) == 1 && code >= 50220 && code <= 50229;
    return hasEscapes ? ENDINGS.size() : ENDINGS.size() - 1;
}

/// Asks for the size, then converts. @return false when the system makes nothing of the string; the output is then as it was.
template <typename System, typename In, typename Out>
bool ConvertWhole(const System& system, const In* data, std::size_t size, Out* output) {
    const INT length = static_cast<INT>(size);
    const INT count = system.Convert(data, length, nullptr, 0);
    if (count <= 0)
        return false;
    const std::size_t used = output->size();
    output->resize(used + static_cast<std::size_t>(count));
    if (system.Convert(data, length, output->data() + used, count) == count)
        return true;
    output->resize(used);
    return false;
}

/// Appends what the step comes to, or one mark of replacement when the system makes nothing of it with any ending.
template <typename System, typename In, typename Out>
void ConvertStep(const System& system, const In* data, std::size_t size, Out* output) {
    if (ConvertWhole(system, data, size, output))
        return;
    for (std::size_t i = 1; i < GetEndingCount<In>(system.code); ++i) {
        std::basic_string<In> ended(data, size);
        for (const char character : ENDINGS[i])
            ended.push_back(static_cast<In>(character));
        if (ConvertWhole(system, ended.data(), ended.size(), output)) {
            if (output->back() == 0)
                output->pop_back();
            return;
        }
    }
    output->push_back(sizeof(In) == 1 ? static_cast<typename Out::value_type>(0xFFFD) : static_cast<typename Out::value_type>('?'));
}

/// Converts each step behind what is there.
template <typename System, typename In, typename Out>
std::uint32_t ConvertInSteps(const System& system, const In* data, std::uint64_t size, Out* output) {
    while (size > 0) {
        const std::uint64_t step = FindCut(system.code, data, size);
        if (step > MOST_PER_CALL) {
            output->clear();
            return RESULT_UNSUPPORTED_CHARSET;
        }
        ConvertStep(system, data, static_cast<std::size_t>(step), output);
        data += step;
        size -= step;
    }
    return RESULT_OK;
}

}  // namespace

CharSetConverter::Platform::Platform(CharSet::Code openedCode) : code(openedCode), system(System::Open(openedCode)) {}

CharSetConverter::Platform::~Platform() = default;

CharSet::Code CharSetConverter::Platform::GetAnsiCode() {
    return GetACP();
}

CharSet::Code CharSetConverter::Platform::GetCode() const {
    return code;
}

std::uint32_t CharSetConverter::Platform::ToWide(const char* data, std::uint64_t size, WideString* output) {
    output->clear();
    return system == nullptr ? std::uint32_t{RESULT_UNSUPPORTED_CHARSET} : ConvertInSteps(*system, data, size, output);
}

std::uint32_t CharSetConverter::Platform::FromWide(const WideChar* data, std::uint64_t size, std::string* output) {
    output->clear();
    return system == nullptr ? std::uint32_t{RESULT_UNSUPPORTED_CHARSET} : ConvertInSteps(*system, data, size, output);
}

}  // namespace Kestra::StringNS
