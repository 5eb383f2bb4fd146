#include <unicode/ucnv.h>

#include "platform/CharSet.h"
#include "tests/platform/ConverterCheck.h"

// The table of names, which is the same on every platform, against the aliases that ICU knows.

namespace Kestra::Test {
namespace {

/// The IANA names of the converter that ICU opens for a name; none when it does not know the name.
std::vector<std::string> GetRegisteredAliases(const std::string& name) {
    std::vector<std::string> aliases;
    UErrorCode error = U_ZERO_ERROR;
    UEnumeration* const names = ucnv_openStandardNames(name.c_str(), "IANA", &error);
    if (U_FAILURE(error) || names == nullptr)
        return aliases;
    for (const char* alias = uenum_next(names, nullptr, &error); alias != nullptr;
         alias = uenum_next(names, nullptr, &error))
        aliases.emplace_back(alias);
    uenum_close(names);
    return aliases;
}

TEST(CharSetAliasesTest, EveryRegisteredAliasThatIcuKnowsIsInTheTable) {
    std::size_t count = 0;
    for (const CharSetRow& row : StringNS::GetCharSetRows()) {
        const std::vector<std::string> names = SplitNames(row.names);
        for (const std::string& name : names) {
            for (const std::string& alias : GetRegisteredAliases(name)) {
                const CharSet::Code code = CharSet::GetCharSetCode(To<WideString>(alias));
                EXPECT_NE(code, CharSet::UNKNOWN) << alias << ", an alias of " << name;
                // ICU files these under a converter that it shares between several code pages.
                const bool isShared =
                    row.code == 20105 || row.code == 38598 || row.code == 51936 || alias == "ISO-8859-8-I";
                if (name == names.front() && !isShared) {
                    EXPECT_EQ(code, row.code) << alias << ", an alias of " << name;
                }
                ++count;
            }
        }
    }
    EXPECT_GT(count, 200U);
}

}  // namespace
}  // namespace Kestra::Test
