#include <gtest/gtest.h>

#include "platform/Processor.h"

#if defined(KESTRA_HAS_VECTORS) || defined(KESTRA_CARRYLESS_FUNCTION)
#error "this program is there for the loops without vectors"
#endif

namespace Kestra::Test {
namespace {

TEST(NoVectorsTest, TheLibraryIsCompiledWithoutThem) {
    EXPECT_FALSE(Base::HasCarrylessMultiplication());
}

}  // namespace
}  // namespace Kestra::Test
