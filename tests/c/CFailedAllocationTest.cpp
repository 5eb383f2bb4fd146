#include <gtest/gtest.h>
#include <kestra/html.h>

#include <string>
#include <string_view>

#include "tests/support/FailingNew.h"

namespace Kestra::Test {
namespace {

/// A document of many kinds of tokens, with one of each need for memory.
constexpr std::string_view DOCUMENT =
    "\xEF\xBB\xBF<!DOCTYPE html PUBLIC 'a'><p a='&lt;' b=/c d title=\"a value that is not kept in a string\">"
    "text &amp; text that is long enough to be allocated<br/><!--a comment--><script>'a string'/* a comment */"
    "</script><a / >junk \xC3\xA9";

/// Counts what it sees: a callback that needs no memory itself.
struct Seen {
    std::size_t bytes = 0;
    std::uint32_t result = 0;  ///< the first answer that was not 0

    void Note(std::uint32_t answer) {
        if (result == 0)
            result = answer;
    }

    static std::uint32_t SeeSummary(void* user, const kestra_html_token* token, const kestra_html_summary* summary) {
        auto* const seen = static_cast<Seen*>(user);
        seen->bytes += summary->name.size + summary->text.size + summary->attribute_count;
        return See(user, token);
    }

    static std::uint32_t See(void* user, const kestra_html_token* token) {
        auto* const seen = static_cast<Seen*>(user);
        for (std::uint32_t part = 0; part <= KESTRA_HTML_PART_TAIL; ++part) {
            kestra_html_string string{};
            seen->Note(kestra_html_token_string(token, part, &string));
            seen->bytes += string.size;
        }
        kestra_html_string decoded{};
        seen->Note(kestra_html_token_decoded_text(token, &decoded));
        seen->bytes += decoded.size;
        kestra_html_summary summary{};
        summary.size = sizeof summary;
        seen->Note(kestra_html_token_summary(token, &summary));
        std::size_t count = 0;
        seen->Note(kestra_html_token_attribute_count(token, &count));
        for (std::size_t i = 0; i < count; ++i) {
            kestra_html_attribute attribute{};
            attribute.size = sizeof attribute;
            kestra_html_attribute_place place{};
            seen->Note(kestra_html_token_attribute(token, i, &attribute));
            seen->Note(kestra_html_token_decoded_value(token, i, &decoded));
            if (kestra_html_token_kind(token) != KESTRA_HTML_DECLARATION)
                seen->Note(kestra_html_token_attribute_place(token, i, &place));
            seen->bytes += attribute.name.size + decoded.size;
        }
        return 0;
    }
};

/// Parses the document by a new parser. @return the first answer that was not 0
std::uint32_t Parse(std::uint32_t encoding, bool wantsSummaries, std::size_t* bytes) {
    Seen seen;
    kestra_html_options options{};
    options.size = sizeof options;
    options.encoding = encoding;
    options.user = &seen;
    if (wantsSummaries)
        options.on_summary = &Seen::SeeSummary;
    else
        options.on_token = &Seen::See;
    kestra_html_parser* parser = nullptr;
    seen.Note(kestra_html_parser_create(&options, &parser));
    if (parser != nullptr) {
        seen.Note(kestra_html_parser_start(parser, 65001, KESTRA_HTML_DATA_AUTO));
        seen.Note(kestra_html_parser_feed_document(parser, DOCUMENT.data(), DOCUMENT.size()));
        seen.Note(kestra_html_parser_end(parser));
    }
    kestra_html_parser_destroy(parser);
    *bytes = seen.bytes;
    return seen.result;
}

/// Whether an answer says what happened. A broken construct that cannot be read again, because
/// memory is lacking just then, answers its own code.
bool SaysWhatHappened(std::uint32_t result) {
    return result == KESTRA_HTML_OUT_OF_MEMORY || result == KESTRA_HTML_MALFORMED;
}

/// Fails each allocation in turn until there is none left. @return how many there are
template <typename Call>
std::size_t FailEach(Call call) {
    for (std::size_t number = 1;; ++number) {
        std::uint32_t result = 0;
        bool hasFailed = false;
        {
            const FailingAllocation failing(number);
            result = call();
            hasFailed = failing.HasFailed();
        }
        if (!hasFailed) {
            EXPECT_EQ(result, 0U);
            return number;
        }
        EXPECT_TRUE(SaysWhatHappened(result)) << "allocation " << number << ", result " << result;
        if (testing::Test::HasFailure())
            return number;
    }
}

TEST(CFailedAllocationTest, Parsing) {
    for (const std::uint32_t encoding : {KESTRA_HTML_BYTES, KESTRA_HTML_UTF8, KESTRA_HTML_UTF16}) {
        for (const bool wantsSummaries : {false, true}) {
            std::size_t whole = 0;
            ASSERT_EQ(Parse(encoding, wantsSummaries, &whole), 0U);
            std::size_t bytes = 0;
            EXPECT_GT(FailEach([&] { return Parse(encoding, wantsSummaries, &bytes); }), 20U);
            EXPECT_EQ(bytes, whole);
        }
    }
}

std::uint32_t Rewrite(std::size_t* bytes) {
    *bytes = 0;
    kestra_html_rewriter_options options{};
    options.size = sizeof options;
    options.user = bytes;
    options.on_output = [](void* user, const void*, std::size_t size) -> std::uint32_t {
        *static_cast<std::size_t*>(user) += size;
        return 0;
    };
    const auto edit = [](void*, kestra_html_edit_element* element) {
        kestra_html_string value{};
        kestra_html_edit_token* const tag = kestra_html_element_tag(element);
        const std::uint32_t result = kestra_html_edit_get_attribute(tag, "a", 1, &value);
        return result != 0 ? result : kestra_html_edit_set_attribute(tag, "a", 1, "another value, a long one", 25);
    };
    kestra_html_rewriter* rewriter = nullptr;
    std::uint32_t result = kestra_html_rewriter_create(&options, &rewriter);
    if (result == 0)
        result = kestra_html_rewriter_on_element(rewriter, "p[title]", 8, edit, nullptr, nullptr, 0);
    if (result == 0)
        result = kestra_html_rewriter_start(rewriter, 65001, KESTRA_HTML_DATA_AUTO);
    if (result == 0)
        result = kestra_html_rewriter_feed(rewriter, DOCUMENT.data(), DOCUMENT.size());
    // A stop for want of memory in the callback.
    if (result == KESTRA_HTML_STOPPED)
        result = KESTRA_HTML_OUT_OF_MEMORY;
    const std::uint32_t ended = kestra_html_rewriter_end(rewriter);
    kestra_html_rewriter_destroy(rewriter);
    return result == 0 ? ended : result;
}

TEST(CFailedAllocationTest, Rewriting) {
    std::size_t bytes = 0;
    EXPECT_GT(FailEach([&] { return Rewrite(&bytes); }), 20U);
    EXPECT_GT(bytes, DOCUMENT.size());
}

TEST(CFailedAllocationTest, CheckingAndNaming) {
    FailEach([] { return kestra_html_check(DOCUMENT.data(), DOCUMENT.size(), 65001); });
}

}  // namespace
}  // namespace Kestra::Test
