#include <gtest/gtest.h>
#include <kestra/html.h>

#include <functional>
#include <string>
#include <string_view>

namespace Kestra::Test {
namespace {

constexpr std::uint32_t UTF8 = 65001;

std::string_view View(const kestra_html_string& string) {
    return {static_cast<const char*>(string.data), string.size};
}

/// What the output of a rewriter is written to.
struct Output {
    std::string text;
    std::size_t most = ~std::size_t{0};  ///< bytes, before writing fails
    bool throws = false;

    static std::uint32_t Write(void* user, const void* data, std::size_t size) {
        auto* const output = static_cast<Output*>(user);
        if (output->throws)
            throw 1;
        if (output->text.size() + size > output->most)
            return 88;
        output->text.append(static_cast<const char*>(data), size);
        return 0;
    }
};

using ElementCallback = std::function<std::uint32_t(kestra_html_edit_element* element)>;
using ContentCallback = std::function<std::uint32_t(kestra_html_edit_token* token)>;

class CRewriter {
public:
    explicit CRewriter(Output* output) {
        kestra_html_rewriter_options options{};
        options.size = sizeof options;
        options.user = output;
        options.on_output = &Output::Write;
        EXPECT_EQ(kestra_html_rewriter_create(&options, &rewriter), 0U);
    }
    CRewriter(const CRewriter&) = delete;
    CRewriter& operator=(const CRewriter&) = delete;
    ~CRewriter() {
        kestra_html_rewriter_destroy(rewriter);
    }

    kestra_html_rewriter* Get() {
        return rewriter;
    }

    void OnElement(std::string_view selector, ElementCallback* callback) {
        const auto call = [](void* user, kestra_html_edit_element* element) {
            return (*static_cast<ElementCallback*>(user))(element);
        };
        EXPECT_EQ(
            kestra_html_rewriter_on_element(rewriter, selector.data(), selector.size(), call, callback, nullptr, 0),
            0U);
    }

    void OnContent(std::string_view selector, ContentCallback* callback) {
        const auto call = [](void* user, kestra_html_edit_token* token) {
            return (*static_cast<ContentCallback*>(user))(token);
        };
        EXPECT_EQ(
            kestra_html_rewriter_on_content(rewriter, selector.data(), selector.size(), call, callback, nullptr, 0),
            0U);
    }

    /// Rewrites a document. @return the first answer that was not 0
    std::uint32_t Run(std::string_view document) {
        std::uint32_t result = kestra_html_rewriter_start(rewriter, UTF8, KESTRA_HTML_DATA_8BIT);
        for (std::size_t i = 0; i < document.size(); i += 3) {
            const std::string_view piece = document.substr(i, 3);
            const std::uint32_t fed = kestra_html_rewriter_feed(rewriter, piece.data(), piece.size());
            result = result == 0 ? fed : result;
        }
        const std::uint32_t ended = kestra_html_rewriter_end(rewriter);
        return result == 0 ? ended : result;
    }

private:
    kestra_html_rewriter* rewriter = nullptr;
};

struct ElementRow {
    const char* note;
    ElementCallback edit;
    const char* output;
};

constexpr std::string_view DOCUMENT = "<b><i id='x&amp;y'>text</i></b>";

std::uint32_t Write(kestra_html_edit_element* element, std::uint32_t position, std::string_view text,
                    std::uint32_t content) {
    return kestra_html_element_write(element, position, text.data(), text.size(), content);
}

TEST(CRewriterTest, Elements) {
    const auto at = [](std::uint32_t position, std::uint32_t content) {
        return [=](kestra_html_edit_element* element) { return Write(element, position, "<u>&", content); };
    };
    const ElementRow rows[] = {
        {"before", at(KESTRA_HTML_BEFORE, KESTRA_HTML_AS_TEXT), "<b>&lt;u&gt;&amp;<i id='x&amp;y'>text</i></b>"},
        {"as markup", at(KESTRA_HTML_BEFORE, KESTRA_HTML_AS_MARKUP), "<b><u>&<i id='x&amp;y'>text</i></b>"},
        {"after", at(KESTRA_HTML_AFTER, KESTRA_HTML_AS_MARKUP), "<b><i id='x&amp;y'>text</i><u>&</b>"},
        {"prepend", at(KESTRA_HTML_PREPEND, KESTRA_HTML_AS_MARKUP), "<b><i id='x&amp;y'><u>&text</i></b>"},
        {"append", at(KESTRA_HTML_APPEND, KESTRA_HTML_AS_MARKUP), "<b><i id='x&amp;y'>text<u>&</i></b>"},
        {"content", at(KESTRA_HTML_CONTENT, KESTRA_HTML_AS_MARKUP), "<b><i id='x&amp;y'><u>&</i></b>"},
        {"element", at(KESTRA_HTML_ELEMENT, KESTRA_HTML_AS_MARKUP), "<b><u>&</b>"},
        {"remove", &kestra_html_element_remove, "<b></b>"},
        {"unwrap", &kestra_html_element_unwrap, "<b>text</b>"},
        {"no edit", [](kestra_html_edit_element*) { return 0U; }, "<b><i id='x&amp;y'>text</i></b>"},
    };
    for (const ElementRow& row : rows) {
        Output output;
        CRewriter rewriter(&output);
        ElementCallback edit = row.edit;
        rewriter.OnElement("b > i[id]", &edit);
        EXPECT_EQ(rewriter.Run(DOCUMENT), 0U) << row.note;
        EXPECT_EQ(output.text, row.output) << row.note;
    }
}

TEST(CRewriterTest, WhatAnElementIs) {
    Output output;
    CRewriter rewriter(&output);
    std::string seen;
    ElementCallback look = [&](kestra_html_edit_element* element) {
        kestra_html_string name{};
        EXPECT_EQ(kestra_html_element_name(element, &name), 0U);
        seen.append(View(name)).append(std::to_string(kestra_html_element_has_content(element)));
        EXPECT_EQ(kestra_html_edit_kind(kestra_html_element_tag(element)), std::uint32_t{KESTRA_HTML_START_TAG});
        return 0U;
    };
    rewriter.OnElement("*", &look);
    EXPECT_EQ(rewriter.Run("<B><br>"), 0U);
    EXPECT_EQ(seen, "b1br0");
}

struct TagRow {
    const char* note;
    std::function<std::uint32_t(kestra_html_edit_token* tag)> edit;
    std::uint32_t result;
    const char* output;
};

TEST(CRewriterTest, Attributes) {
    const TagRow rows[] = {
        {"set", [](auto* tag) { return kestra_html_edit_set_attribute(tag, "ID", 2, "a'b", 3); }, 0,
         "<b><i id='a&#39;b'>text</i></b>"},
        {"add", [](auto* tag) { return kestra_html_edit_add_attribute(tag, "c", 1, "d", 1); }, 0,
         "<b><i id='x&amp;y' c=\"d\">text</i></b>"},
        {"rename", [](auto* tag) { return kestra_html_edit_rename_attribute(tag, "id", 2, "name", 4); }, 0,
         "<b><i name='x&amp;y'>text</i></b>"},
        {"remove", [](auto* tag) { return kestra_html_edit_remove_attribute(tag, "id", 2); }, 0, "<b><i>text</i></b>"},
        {"none of the name", [](auto* tag) { return kestra_html_edit_remove_attribute(tag, "no", 2); },
         KESTRA_HTML_NO_ATTRIBUTE, "<b><i id='x&amp;y'>text</i></b>"},
        {"a bad name", [](auto* tag) { return kestra_html_edit_set_attribute(tag, "a b", 3, "c", 1); },
         KESTRA_HTML_BAD_NAME, "<b><i id='x&amp;y'>text</i></b>"},
        {"no UTF-8", [](auto* tag) { return kestra_html_edit_set_attribute(tag, "id", 2, "\xFF", 1); },
         KESTRA_HTML_INVALID_ARGUMENT, "<b><i id='x&amp;y'>text</i></b>"},
        {"null with a size", [](auto* tag) { return kestra_html_edit_set_attribute(tag, "id", 2, nullptr, 1); },
         KESTRA_HTML_INVALID_ARGUMENT, "<b><i id='x&amp;y'>text</i></b>"},
        {"null without one", [](auto* tag) { return kestra_html_edit_set_attribute(tag, "id", 2, nullptr, 0); }, 0,
         "<b><i id=''>text</i></b>"},
    };
    for (const TagRow& row : rows) {
        Output output;
        CRewriter rewriter(&output);
        ElementCallback edit = [&](kestra_html_edit_element* element) {
            kestra_html_edit_token* const tag = kestra_html_element_tag(element);
            kestra_html_string value{};
            EXPECT_EQ(kestra_html_edit_get_attribute(tag, "id", 2, &value), 0U);
            EXPECT_EQ(View(value), "x&y");
            EXPECT_EQ(row.edit(tag), row.result) << row.note;
            return 0U;
        };
        rewriter.OnElement("i", &edit);
        EXPECT_EQ(rewriter.Run(DOCUMENT), 0U);
        EXPECT_EQ(output.text, row.output) << row.note;
    }
}

TEST(CRewriterTest, Tokens) {
    const TagRow rows[] = {
        {"replace", [](auto* token) { return kestra_html_edit_replace(token, "<", 1, KESTRA_HTML_AS_TEXT); }, 0,
         "<b><i id='x&amp;y'>&lt;</i></b>"},
        {"remove", &kestra_html_edit_remove, 0, "<b><i id='x&amp;y'></i></b>"},
        {"before", [](auto* token) { return kestra_html_edit_insert_before(token, "a", 1, KESTRA_HTML_AS_TEXT); }, 0,
         "<b><i id='x&amp;y'>atext</i></b>"},
        {"after", [](auto* token) { return kestra_html_edit_insert_after(token, "<a>", 3, KESTRA_HTML_AS_MARKUP); }, 0,
         "<b><i id='x&amp;y'>text<a></i></b>"},
        {"text", [](auto* token) { return kestra_html_edit_set_text(token, "a<b", 3); }, 0,
         "<b><i id='x&amp;y'>a&lt;b</i></b>"},
        {"no attributes", [](auto* token) { return kestra_html_edit_remove_attribute(token, "id", 2); },
         KESTRA_HTML_WRONG_KIND, "<b><i id='x&amp;y'>text</i></b>"},
        {"unknown content", [](auto* token) { return kestra_html_edit_replace(token, "", 0, 2); },
         KESTRA_HTML_INVALID_ARGUMENT, "<b><i id='x&amp;y'>text</i></b>"},
    };
    for (const TagRow& row : rows) {
        Output output;
        CRewriter rewriter(&output);
        ContentCallback edit = [&](kestra_html_edit_token* token) {
            kestra_html_string bytes{};
            kestra_html_place place{};
            EXPECT_EQ(kestra_html_edit_bytes(token, &bytes), 0U);
            EXPECT_EQ(View(bytes), "text");
            EXPECT_EQ(kestra_html_edit_place(token, &place), 0U);
            EXPECT_EQ(place.begin, 19U);
            EXPECT_EQ(place.end, 23U);
            EXPECT_EQ(row.edit(token), row.result) << row.note;
            return 0U;
        };
        rewriter.OnContent("i", &edit);
        EXPECT_EQ(rewriter.Run(DOCUMENT), 0U);
        EXPECT_EQ(output.text, row.output) << row.note;
    }
}

TEST(CRewriterTest, WithoutCallbacksEveryByteIsCopied) {
    Output output;
    CRewriter rewriter(&output);
    const std::string document = "<a b=\xFF / ><![if x]y<p\n<!--";
    EXPECT_EQ(rewriter.Run(document), 0U);
    EXPECT_EQ(output.text, document);
    EXPECT_EQ(kestra_html_rewriter_charset(rewriter.Get()), UTF8);
}

TEST(CRewriterTest, FilesAndStreams) {
    Output output;
    CRewriter rewriter(&output);
    EXPECT_EQ(kestra_html_rewriter_start(rewriter.Get(), UTF8, KESTRA_HTML_DATA_8BIT), 0U);
    EXPECT_EQ(kestra_html_rewriter_feed_file(rewriter.Get(), KESTRA_EXAMPLE_PAGES "/saltmarsh-point.html"), 0U);
    EXPECT_EQ(kestra_html_rewriter_end(rewriter.Get()), 0U);
    EXPECT_GT(output.text.size(), 1000U);
    output.text.clear();
    std::string rest = "<a><b>";
    kestra_html_stream stream{};
    stream.size = sizeof stream;
    stream.user = &rest;
    stream.read = [](void* user, void* buffer, std::size_t size, std::size_t* bytesRead) -> std::uint32_t {
        auto* const text = static_cast<std::string*>(user);
        *bytesRead = text->copy(static_cast<char*>(buffer), size);
        text->clear();
        return 0;
    };
    EXPECT_EQ(kestra_html_rewriter_start(rewriter.Get(), UTF8, KESTRA_HTML_DATA_8BIT), 0U);
    EXPECT_EQ(kestra_html_rewriter_feed_stream(rewriter.Get(), &stream), 0U);
    EXPECT_EQ(kestra_html_rewriter_end(rewriter.Get()), 0U);
    EXPECT_EQ(output.text, "<a><b>");
}

TEST(CRewriterTest, AStopCopiesTheRest) {
    Output output;
    CRewriter rewriter(&output);
    ElementCallback stop = [](kestra_html_edit_element* element) {
        EXPECT_EQ(kestra_html_element_remove(element), 0U);
        return 5U;
    };
    rewriter.OnElement("b", &stop);
    EXPECT_EQ(rewriter.Run("<a><b><c><b>"), std::uint32_t{KESTRA_HTML_STOPPED});
    EXPECT_EQ(output.text, "<a><c><b>");
}

TEST(CRewriterTest, NoExceptionLeavesACall) {
    Output output;
    CRewriter rewriter(&output);
    ElementCallback fail = [](kestra_html_edit_element*) -> std::uint32_t { throw 1; };
    rewriter.OnElement("b", &fail);
    EXPECT_EQ(rewriter.Run("<a><b><c>"), std::uint32_t{KESTRA_HTML_CALLBACK_FAILED});
    EXPECT_EQ(output.text, "<a><b><c>");
    output.throws = true;
    EXPECT_EQ(rewriter.Run("<a>"), std::uint32_t{KESTRA_HTML_CALLBACK_FAILED});
    output.throws = false;
    output.text.clear();
    EXPECT_EQ(rewriter.Run("<a>"), 0U);
    EXPECT_EQ(output.text, "<a>");
}

TEST(CRewriterTest, OutputThatIsRefused) {
    Output output;
    output.most = 4;
    CRewriter rewriter(&output);
    EXPECT_EQ(rewriter.Run("<a><b><c>"), 88U);
    EXPECT_EQ(output.text.substr(0, 3), "<a>");
    output.most = 100;
    output.text.clear();
    EXPECT_EQ(rewriter.Run("<d>"), 0U);
    EXPECT_EQ(output.text, "<d>");
}

TEST(CRewriterTest, BadSelectors) {
    Output output;
    CRewriter rewriter(&output);
    char message[8] = "unset";
    const auto call = [](void*, kestra_html_edit_element*) -> std::uint32_t { return 0; };
    EXPECT_EQ(kestra_html_rewriter_on_element(rewriter.Get(), "a:b", 3, call, nullptr, message, sizeof message),
              std::uint32_t{KESTRA_HTML_BAD_SELECTOR});
    EXPECT_EQ(std::string_view(message).size(), sizeof message - 1);
    EXPECT_EQ(kestra_html_rewriter_on_element(rewriter.Get(), "a:b", 3, call, nullptr, nullptr, 0),
              std::uint32_t{KESTRA_HTML_BAD_SELECTOR});
}

TEST(CRewriterTest, NullIsAnswered) {
    const std::uint32_t bad = KESTRA_HTML_INVALID_ARGUMENT;
    kestra_html_rewriter* rewriter = nullptr;
    kestra_html_rewriter_options options{};
    kestra_html_string string{};
    kestra_html_place place{};
    EXPECT_EQ(kestra_html_rewriter_create(nullptr, &rewriter), bad);
    options.size = sizeof options;
    EXPECT_EQ(kestra_html_rewriter_create(&options, &rewriter), bad);  // no output
    options.on_output = &Output::Write;
    EXPECT_EQ(kestra_html_rewriter_create(&options, nullptr), bad);
    kestra_html_rewriter_destroy(nullptr);
    EXPECT_EQ(kestra_html_rewriter_on_element(nullptr, "a", 1, nullptr, nullptr, nullptr, 0), bad);
    EXPECT_EQ(kestra_html_rewriter_on_content(nullptr, "a", 1, nullptr, nullptr, nullptr, 0), bad);
    EXPECT_EQ(kestra_html_rewriter_start(nullptr, 0, 0), bad);
    EXPECT_EQ(kestra_html_rewriter_feed(nullptr, "", 0), bad);
    EXPECT_EQ(kestra_html_rewriter_feed_stream(nullptr, nullptr), bad);
    EXPECT_EQ(kestra_html_rewriter_feed_file(nullptr, "a"), bad);
    EXPECT_EQ(kestra_html_rewriter_end(nullptr), bad);
    EXPECT_EQ(kestra_html_rewriter_charset(nullptr), 0U);
    EXPECT_EQ(kestra_html_edit_kind(nullptr), 0U);
    EXPECT_EQ(kestra_html_edit_place(nullptr, &place), bad);
    EXPECT_EQ(kestra_html_edit_bytes(nullptr, &string), bad);
    EXPECT_EQ(kestra_html_edit_replace(nullptr, "", 0, 0), bad);
    EXPECT_EQ(kestra_html_edit_remove(nullptr), bad);
    EXPECT_EQ(kestra_html_edit_insert_before(nullptr, "", 0, 0), bad);
    EXPECT_EQ(kestra_html_edit_insert_after(nullptr, "", 0, 0), bad);
    EXPECT_EQ(kestra_html_edit_set_text(nullptr, "", 0), bad);
    EXPECT_EQ(kestra_html_edit_get_attribute(nullptr, "a", 1, &string), bad);
    EXPECT_EQ(kestra_html_edit_set_attribute(nullptr, "a", 1, "", 0), bad);
    EXPECT_EQ(kestra_html_edit_add_attribute(nullptr, "a", 1, "", 0), bad);
    EXPECT_EQ(kestra_html_edit_rename_attribute(nullptr, "a", 1, "b", 1), bad);
    EXPECT_EQ(kestra_html_edit_remove_attribute(nullptr, "a", 1), bad);
    EXPECT_EQ(kestra_html_element_tag(nullptr), nullptr);
    EXPECT_EQ(kestra_html_element_name(nullptr, &string), bad);
    EXPECT_EQ(kestra_html_element_has_content(nullptr), 0U);
    EXPECT_EQ(kestra_html_element_write(nullptr, 0, "", 0, 0), bad);
    EXPECT_EQ(kestra_html_element_remove(nullptr), bad);
    EXPECT_EQ(kestra_html_element_unwrap(nullptr), bad);
    Output output;
    CRewriter good(&output);
    ElementCallback edit = [&](kestra_html_edit_element* element) {
        kestra_html_edit_token* const tag = kestra_html_element_tag(element);
        EXPECT_EQ(kestra_html_edit_place(tag, nullptr), bad);
        EXPECT_EQ(kestra_html_edit_bytes(tag, nullptr), bad);
        EXPECT_EQ(kestra_html_edit_get_attribute(tag, "a", 1, nullptr), bad);
        EXPECT_EQ(kestra_html_element_name(element, nullptr), bad);
        EXPECT_EQ(kestra_html_element_write(element, 6, "", 0, 0), bad);
        EXPECT_EQ(kestra_html_rewriter_feed(good.Get(), "a", 1), bad);
        EXPECT_EQ(kestra_html_rewriter_end(good.Get()), bad);
        return 0U;
    };
    good.OnElement("a", &edit);
    EXPECT_EQ(good.Run("<a>"), 0U);
    EXPECT_EQ(output.text, "<a>");
}

}  // namespace
}  // namespace Kestra::Test
