#pragma once

#include <gtest/gtest.h>

#include "html/framework/RecordFields.h"
#include "html/output/ParserObserverOutput.h"

namespace Kestra::Test {

/// Calls the static writer of the record's kind.
template <template <typename, typename> class Record, typename C, typename S>
void WriteRecord(const Record<C, S>& record, HTML::ParserObserverOutputHandler* handler) {
    using Output = HTML::ParserObserverOutput<C, S>;
    bool isWritten = false;
#define WRITE(NAME, RECORD, WORD)                                              \
    if constexpr (requires { Output::Get##NAME##Output(&record, handler); }) { \
        Output::Get##NAME##Output(&record, handler);                           \
        isWritten = true;                                                      \
    }
    KESTRA_HTML_FOR_EACH_KIND(WRITE)
#undef WRITE
    EXPECT_TRUE(isWritten);
}

}  // namespace Kestra::Test
