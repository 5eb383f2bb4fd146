#include "platform/SystemConverter.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <new>
#include <string>
#include <string_view>

#include "platform/CodePoints.h"
#include "platform/Results.h"
#include "platform/windows/WindowsApi.h"

namespace Kestra::StringNS {

namespace {

/// The string conversion of the language library, which knows code pages that the system call
/// refuses, EUC-JP (51932) among them.
struct LanguageLibrary {
    using ToWideCall = HRESULT(WINAPI*)(DWORD* mode, DWORD code, const char* source, INT* sourceSize, WideChar* target,
                                        INT* targetSize);
    using FromWideCall = HRESULT(WINAPI*)(DWORD* mode, DWORD code, const WideChar* source, INT* sourceSize,
                                          char* target, INT* targetSize);

    ToWideCall toWide = nullptr;
    FromWideCall fromWide = nullptr;

    /// Loaded with the first code page that needs it, and kept. Both calls are null when there is
    /// no such library.
    static LanguageLibrary Get();

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

// What the search found, for the whole process. Not a static object with a constructor: its guard
// starts a runtime of threads that keeps a thread index and handles of the process, also when the
// host has freed the library.
constinit std::atomic<LanguageLibrary::ToWideCall> foundToWide = nullptr;
constinit std::atomic<LanguageLibrary::FromWideCall> foundFromWide = nullptr;
constinit std::atomic<bool> hasSearched = false;

LanguageLibrary LanguageLibrary::Get() {
    if (hasSearched.load(std::memory_order_acquire))
        return {foundToWide.load(std::memory_order_relaxed), foundFromWide.load(std::memory_order_relaxed)};
    // Threads that come at the same time each search, and find the same.
    const LanguageLibrary library = Load();
    foundToWide.store(library.toWide, std::memory_order_relaxed);
    foundFromWide.store(library.fromWide, std::memory_order_relaxed);
    hasSearched.store(true, std::memory_order_release);
    return library;
}

/// Numbers that the system call takes for another code page's name: the ANSI, OEM and Macintosh
/// ones of the process or thread, symbols.
constexpr std::array<CharSet::Code, 5> ALIASES = {0, 1, 2, 3, 42};

/// What one call converts. Long strings are cut between two characters, as the calls count with 31
/// bits.
constexpr std::size_t STEP = std::size_t{1} << 20;

constexpr std::uint64_t MOST_PER_CALL = std::uint64_t{1} << 28;  ///< four bytes for each unit still fit into 31 bits

/// In these code pages an escape, or a shift, says what the bytes after it mean.
constexpr bool IsStateful(CharSet::Code code) {
    return code == 65000 || (code >= 50220 && code <= 50229) || code == 52936 || (code >= 57002 && code <= 57011);
}

/// Whether a character ends with this byte wherever it stands, alone or after others, in every code
/// page whose characters stand for themselves: characters of several bytes begin with one from 0x80
/// up. A digit may be the second of four bytes.
constexpr bool EndsCharacter(char byte) {
    return static_cast<unsigned char>(byte) < 0x80 && (byte < '0' || byte > '9');
}

/// What a call of the system came to.
enum class Outcome {
    UNITS,
    NOTHING,  ///< no units, and no reason: there may be none in the string
    FAILURE,
};

/// The two ways to convert.
class WindowsConverter final : public SystemConverter {
public:
    /// @return null when neither converts from the code page. Throws `std::bad_alloc`.
    static std::unique_ptr<WindowsConverter> Open(CharSet::Code code);

    CharSet::Code GetCode() const {
        return code;
    }

    bool Writes() const override {
        return writes;
    }

    std::uint32_t ToWide(const char* data, std::uint64_t size, WideString* output) override;
    std::uint32_t FromWide(const WideChar* data, std::uint64_t size, std::string* output) override;

    /// `*count` is what was written, or is needed when there is no room.
    Outcome Convert(const char* data, INT size, WideChar* output, INT room, INT* count) const;
    Outcome Convert(const WideChar* data, INT size, char* output, INT room, INT* count) const;

    /// The length of what is converted first of a string that is not empty.
    std::uint64_t FindCut(const char* data, std::uint64_t size) const;
    std::uint64_t FindCut(const WideChar* data, std::uint64_t size) const;

private:
    template <typename In>
    bool Knows(const In* text) const {
        INT count = 0;
        return Convert(text, 1, nullptr, 0, &count) == Outcome::UNITS;
    }

    // Want of memory, where the system tells of it, leaves as `std::bad_alloc`.

    /// @param count  the answer of the system call, before which the last error was cleared
    static Outcome JudgeSystem(INT count);
    /// The library says "failed" of a string without characters, too.
    static Outcome JudgeLibrary(HRESULT result, INT count);

    CharSet::Code code = CharSet::UNKNOWN;
    bool isLanguageLibrary = false;
    bool isSingleByte = false;
    bool writes = false;
    DWORD fromWideFlags = 0;
};

std::unique_ptr<WindowsConverter> WindowsConverter::Open(CharSet::Code code) {
    if (std::find(ALIASES.begin(), ALIASES.end(), code) != ALIASES.end())
        return nullptr;
    auto opened = std::make_unique<WindowsConverter>();
    opened->code = code;
    if (!opened->Knows("a")) {
        opened->isLanguageLibrary = true;
        if (!opened->Knows("a"))
            return nullptr;
        opened->writes = opened->Knows(L"a");
        return opened;
    }
    CPINFO information;
    opened->isSingleByte = GetCPInfo(code, &information) != 0 && information.MaxCharSize == 1;
    opened->fromWideFlags = WC_NO_BEST_FIT_CHARS;  // no look-alikes
    opened->writes = opened->Knows(L"a");
    if (!opened->writes) {
        opened->fromWideFlags = 0;  // the stateful code pages take none
        opened->writes = opened->Knows(L"a");
    }
    return opened;
}

Outcome WindowsConverter::JudgeSystem(INT count) {
    if (count > 0)
        return Outcome::UNITS;
    const DWORD error = GetLastError();
    if (error == ERROR_NOT_ENOUGH_MEMORY || error == ERROR_OUTOFMEMORY)
        throw std::bad_alloc();
    return error == ERROR_SUCCESS || error == ERROR_NO_UNICODE_TRANSLATION ? Outcome::NOTHING : Outcome::FAILURE;
}

Outcome WindowsConverter::JudgeLibrary(HRESULT result, INT count) {
    if (result == S_OK && count > 0)
        return Outcome::UNITS;
    if (result == E_OUTOFMEMORY)
        throw std::bad_alloc();
    return result == S_OK || result == E_FAIL ? Outcome::NOTHING : Outcome::FAILURE;
}

Outcome WindowsConverter::Convert(const char* data, INT size, WideChar* output, INT room, INT* count) const {
    if (!isLanguageLibrary) {
        SetLastError(ERROR_SUCCESS);
        *count = MultiByteToWideChar(code, 0, data, size, output, room);
        return JudgeSystem(*count);
    }
    const LanguageLibrary library = LanguageLibrary::Get();
    if (library.toWide == nullptr)
        return Outcome::FAILURE;
    DWORD mode = 0;
    *count = room;
    const HRESULT result = library.toWide(&mode, code, data, &size, output, count);
    return JudgeLibrary(result, *count);
}

Outcome WindowsConverter::Convert(const WideChar* data, INT size, char* output, INT room, INT* count) const {
    if (!isLanguageLibrary) {
        SetLastError(ERROR_SUCCESS);
        *count = WideCharToMultiByte(code, fromWideFlags, data, size, output, room, nullptr, nullptr);
        return JudgeSystem(*count);
    }
    const LanguageLibrary library = LanguageLibrary::Get();
    if (library.fromWide == nullptr)
        return Outcome::FAILURE;
    DWORD mode = 0;
    *count = room;
    const HRESULT result = library.fromWide(&mode, code, data, &size, output, count);
    return JudgeLibrary(result, *count);
}

std::uint64_t WindowsConverter::FindCut(const char* data, std::uint64_t size) const {
    if (size <= STEP || IsStateful(code))
        return size;
    std::uint64_t cut = STEP;
    while (cut < size && !isSingleByte && !EndsCharacter(data[cut - 1]))
        ++cut;
    return cut;
}

std::uint64_t WindowsConverter::FindCut(const WideChar* data, std::uint64_t size) const {
    if (size <= STEP || IsStateful(code))
        return size;
    const bool splitsPair = IsLowSurrogate(data[STEP]);
    return splitsPair ? STEP - 1 : STEP;
}

/// What is put after a string that comes to no characters: it ends inside an escape, or is nothing
/// else. A terminator is one character for certain, and is taken away again; a change to ASCII goes
/// before it where the terminator alone would be half of a character.
constexpr std::array<std::string_view, 2> ENDINGS = {std::string_view("\0", 1), std::string_view("\x1B(B\0", 4)};

/// Bytes of an escape, "ESC $ ( D" for example: so many at the end of a string may be a part of
/// one, or of a character.
constexpr std::size_t LONGEST_ESCAPE = 4;

/// How many endings are tried: only bytes have escapes.
template <typename In>
constexpr std::size_t GetEndingCount(CharSet::Code code) {
    const bool hasEscapes = sizeof(In) == 1 && code >= 50220 && code <= 50229;
    return hasEscapes ? ENDINGS.size() : ENDINGS.size() - 1;
}

/// Asks for the size, then converts, after what is there. The output stays as it was where there
/// are no units.
template <typename In, typename Out>
Outcome ConvertWhole(const WindowsConverter& converter, const In* data, std::size_t size, Out* output) {
    const INT length = static_cast<INT>(size);
    INT needed = 0;
    const Outcome outcome = converter.Convert(data, length, nullptr, 0, &needed);
    if (outcome != Outcome::UNITS)
        return outcome;
    const std::size_t used = output->size();
    output->resize(used + static_cast<std::size_t>(needed));
    INT count = 0;
    if (converter.Convert(data, length, output->data() + used, needed, &count) == Outcome::UNITS && count == needed)
        return Outcome::UNITS;
    output->resize(used);
    return Outcome::FAILURE;  // not of the string, whose size was known
}

/// Takes away the terminator of an ending, and leaves a character that had been waiting for what
/// follows it: katakana waits for a mark. Bytes do not wait so; with an ending after them, half an
/// escape may become any character.
/// @param used  where the output of the string begins
/// @return false, and the output ends there, when there is more than the terminator
template <typename Out>
bool RemoveTerminator(std::size_t used, Out* output) {
    const bool isTerminatorAlone = output->size() == used + 1 && output->back() == 0;
    if (isTerminatorAlone || (sizeof(typename Out::value_type) == 1 && output->back() == 0)) {
        output->pop_back();
        return true;
    }
    output->resize(used);
    return false;
}

/// Whether the system converts another string of this size, so that it was not the system that
/// failed.
template <typename In>
bool ConvertsOthers(const WindowsConverter& converter, const In*, std::size_t size) {
    const std::basic_string<In> other(size, static_cast<In>('a'));
    INT count = 0;
    return converter.Convert(other.data(), static_cast<INT>(size), nullptr, 0, &count) == Outcome::UNITS;
}

/// Converts the string with one ending after the other, until nothing but the ending comes out.
template <typename In, typename Out>
Outcome ConvertEnded(const WindowsConverter& converter, const In* data, std::size_t size, Out* output) {
    const std::size_t used = output->size();
    Outcome outcome = Outcome::NOTHING;
    for (std::size_t i = 0; i < GetEndingCount<In>(converter.GetCode()) && outcome == Outcome::NOTHING; ++i) {
        std::basic_string<In> ended(data, size);
        for (const char character : ENDINGS[i])
            ended.push_back(static_cast<In>(character));
        outcome = ConvertWhole(converter, ended.data(), ended.size(), output);
        if (outcome == Outcome::UNITS && !RemoveTerminator(used, output))
            outcome = Outcome::NOTHING;
    }
    return outcome;
}

/// Appends what the step comes to. Where the system makes nothing of the last bytes, or of any, a
/// mark of replacement stands for them.
/// @return false when the system failed
template <typename In, typename Out>
bool ConvertStep(const WindowsConverter& converter, const In* data, std::size_t size, Out* output) {
    Outcome outcome = ConvertWhole(converter, data, size, output);
    if (outcome == Outcome::NOTHING)
        outcome = ConvertEnded(converter, data, size, output);
    if (outcome != Outcome::NOTHING)
        return outcome == Outcome::UNITS;
    const std::size_t mostCut = sizeof(In) == 1 ? std::min(LONGEST_ESCAPE, size - 1) : 0;
    for (std::size_t cut = 1; cut <= mostCut && outcome == Outcome::NOTHING; ++cut)
        outcome = ConvertWhole(converter, data, size - cut, output);
    if (outcome == Outcome::FAILURE || (outcome == Outcome::NOTHING && !ConvertsOthers(converter, data, size)))
        return false;
    output->push_back(sizeof(In) == 1 ? static_cast<typename Out::value_type>(0xFFFD)
                                      : static_cast<typename Out::value_type>('?'));
    return true;
}

/// Converts each step after what is there.
template <typename In, typename Out>
std::uint32_t ConvertInSteps(const WindowsConverter& converter, const In* data, std::uint64_t size, Out* output) {
    while (size > 0) {
        const std::uint64_t step = converter.FindCut(data, size);
        if (step > MOST_PER_CALL || !ConvertStep(converter, data, static_cast<std::size_t>(step), output)) {
            output->clear();
            return RESULT_UNSUPPORTED_CHARSET;
        }
        data += step;
        size -= step;
    }
    return RESULT_OK;
}

std::uint32_t WindowsConverter::ToWide(const char* data, std::uint64_t size, WideString* output) {
    return ConvertInSteps(*this, data, size, output);
}

std::uint32_t WindowsConverter::FromWide(const WideChar* data, std::uint64_t size, std::string* output) {
    return ConvertInSteps(*this, data, size, output);
}

}  // namespace

CharSet::Code SystemConverter::GetAnsiCode() {
    return GetACP();
}

std::unique_ptr<SystemConverter> SystemConverter::Open(CharSet::Code code) {
    return WindowsConverter::Open(code);
}

}  // namespace Kestra::StringNS
