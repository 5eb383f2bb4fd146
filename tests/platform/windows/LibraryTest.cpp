#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "platform/Characters.h"
#include "platform/Results.h"
#include "platform/windows/WindowsApi.h"

// The DLL in a program that is not linked with it, as a plug-in's program is.

namespace Kestra {
namespace {

/// `StringHelper::GetWideFromGeneric`, by the name that the compiler gives it.
constexpr const char* CONVERSION =
    "_ZN6Kestra8StringNS12StringHelper18GetWideFromGenericEjPKcyPNSt7__cxx1112basic_stringIwSt11char_traitsIwESaIwEEEj";

using ConversionCall = std::uint32_t(std::uint32_t code, const char* data, std::uint64_t size, WideString* output, std::uint32_t type);

TEST(WindowsLibraryTest, IsLoadedAndFreed) {
    const std::filesystem::path path = std::filesystem::absolute(KESTRA_LIBRARY).make_preferred();
    for (int i = 0; i < 10; ++i) {
        const HMODULE library = LoadLibraryW(path.c_str());
        ASSERT_NE(library, nullptr) << GetLastError();
        EXPECT_EQ(GetModuleHandleW(L"kestra-html.dll"), library);
        auto* const convert = reinterpret_cast<ConversionCall*>(reinterpret_cast<void*>(GetProcAddress(library, CONVERSION)));
        ASSERT_NE(convert, nullptr);
        WideString units;
        const std::string text = "a string that is too long for the object itself";
        EXPECT_EQ(convert(1251, text.data(), text.size(), &units, 0), RESULT_OK);
        EXPECT_NE(FreeLibrary(library), 0);
        EXPECT_EQ(GetModuleHandleW(L"kestra-html.dll"), nullptr);
        EXPECT_EQ(units, WideString(text.begin(), text.end())) << "memory is of one pool, and outlives the library";
    }
}

}  // namespace
}  // namespace Kestra
