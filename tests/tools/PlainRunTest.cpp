#include "tools/trace/PlainRun.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <type_traits>

#include "platform/Characters.h"

namespace Kestra::Test {
namespace {

using Plain = Trace::PlainText<'"', '\\'>;

template <typename C>
class PlainRun : public testing::Test {};

using Units = testing::Types<char, WideChar>;
TYPED_TEST_SUITE(PlainRun, Units);

/// The run in text that lies in a heap block of its exact size, as everything is that is written.
template <typename C>
std::string CopyRun(const std::basic_string<C>& text) {
    const std::unique_ptr<C[]> from(new C[text.size()]);
    text.copy(from.get(), text.size());
    const std::unique_ptr<char[]> to(new char[text.size()]);
    const std::size_t size = Plain::CopyRun(from.get(), text.size(), to.get());
    return {to.get(), size};
}

TYPED_TEST(PlainRun, EndsBeforeWhatIsNotPlain) {
    for (const unsigned unit : {0x00U, 0x1FU, 0x22U, 0x5CU, 0x7FU, 0x80U, 0xFFU}) {
        for (std::size_t size = 0; size <= 50; ++size) {
            std::basic_string<TypeParam> text;
            std::string expected;
            for (std::size_t i = 0; i < size; ++i) {
                expected.push_back(static_cast<char>('#' + i % 50));
                text.push_back(static_cast<TypeParam>(expected.back()));
            }
            EXPECT_EQ(CopyRun(text), expected);
            for (std::size_t i = 0; i < size; ++i) {
                std::basic_string<TypeParam> other = text;
                other[i] = static_cast<TypeParam>(unit);
                EXPECT_EQ(CopyRun(other), expected.substr(0, i)) << unit << " at " << i << " of " << size;
            }
        }
    }
}

/// The blocks and the plain loop agree about every unit.
TYPED_TEST(PlainRun, IsThatOfOneByOne) {
    using Unit = std::make_unsigned_t<TypeParam>;
    for (unsigned unit = 0; unit <= static_cast<Unit>(-1); ++unit) {
        for (const std::size_t size : {4U, 8U, 16U}) {
            const std::basic_string<TypeParam> text(size, static_cast<TypeParam>(unit));
            std::string to(size, '\0');
            to.resize(Plain::CopyOneByOne(text.data(), size, to.data()));
            ASSERT_EQ(CopyRun(text), to) << unit << " " << size;
            const bool isPlain = unit >= 0x20 && unit < 0x7F && unit != '"' && unit != '\\';
            ASSERT_EQ(to.size(), isPlain ? size : 0) << unit;
        }
    }
}

}  // namespace
}  // namespace Kestra::Test
