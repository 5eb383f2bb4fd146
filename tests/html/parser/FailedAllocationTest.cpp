#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "html/parser/GenericParser.h"
#include "tests/support/FailingNew.h"
#include "tests/support/Flavours.h"
#include "tools/trace/TokenTrace.h"

// What is left of a parser when one allocation fails, for each allocation in turn.

namespace Kestra::Test {
namespace {

using HTML::GenericParser;

/// More allocations than any of the calls makes.
constexpr std::size_t TOO_MANY = 2000;

GenericParser* feedingParser = nullptr;
bool isNextBound = false;

/// Counts its start tags. It has nothing to destroy, as an owned observer is freed without its
/// destructor.
template <typename C, typename S>
class TagCounter final : public HTML::ParserObserver<C, S> {
public:
    void OnStartTag(HTML::StartTagData<C, S>*) override {
        ++tags;
        if (next != nullptr)
            BindNext();
    }

    int tags = 0;
    TagCounter* next = nullptr;  ///< bound, and owned by the parser from then on, in the next callback
    std::size_t failing = 0;     ///< the allocation of that call that fails

private:
    void BindNext() {
        TagCounter* const bound = next;
        next = nullptr;
        try {
            const FailingAllocation failure(failing);
            feedingParser->SetObserver(static_cast<HTML::ParserObserver<C, S>*>(bound), true);
            isNextBound = true;
        } catch (const std::bad_alloc&) {
        }
    }
};

template <typename Counter>
class OwnedObserverTest : public testing::Test {};

using Counters = testing::Types<TagCounter<char, std::string>, TagCounter<WideChar, WideString>>;
TYPED_TEST_SUITE(OwnedObserverTest, Counters);

TYPED_TEST(OwnedObserverTest, ACallbackThatCannotBindAnotherOneKeepsItsOwn) {
    bool isBound = false;
    for (std::size_t failing = 1; !isBound; ++failing) {
        SCOPED_TRACE(failing);
        ASSERT_LT(failing, TOO_MANY);
        auto* const first = new TypeParam;
        auto* const second = new TypeParam;
        GenericParser parser;
        feedingParser = &parser;
        parser.SetObserver(first, true);
        parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
        first->next = second;
        first->failing = failing;
        isNextBound = false;
        // The callback of <b> binds the second one; what comes after it must reach an observer that
        // lives. The first one is freed with the call that fed <b>, once it has been replaced.
        EXPECT_EQ(parser.ParseBuffer("<b>", 3), 0U);
        isBound = isNextBound;
        EXPECT_EQ(parser.ParseBuffer("<c><d>", 6), 0U);
        EXPECT_EQ(isBound ? second->tags : first->tags, isBound ? 2 : 3);
        if (!isBound)
            ::operator delete(static_cast<void*>(second));  // it was not taken
    }
}

TYPED_TEST(OwnedObserverTest, AnObserverThatCannotBeOwnedStaysTheCallers) {
    bool isBound = false;
    for (std::size_t failing = 1; !isBound; ++failing) {
        SCOPED_TRACE(failing);
        ASSERT_LT(failing, TOO_MANY);
        auto* const first = new TypeParam;
        auto* const second = new TypeParam;
        GenericParser parser;
        parser.SetObserver(first, true);
        parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
        try {
            const FailingAllocation failure(failing);
            parser.SetObserver(second, true);
            isBound = true;
        } catch (const std::bad_alloc&) {
        }
        EXPECT_EQ(parser.ParseBuffer("<b>", 3), 0U);
        if (isBound) {
            EXPECT_EQ(second->tags, 1);
        } else {
            EXPECT_EQ(first->tags, 1);
            EXPECT_EQ(second->tags, 0);
            ::operator delete(static_cast<void*>(second));
        }
    }
}

/// A parser in the middle of a token, with everything that a copy takes along.
template <typename C, typename S>
struct Scene {
    using Observer = Trace::TraceObserver<C, S>;

    explicit Scene(bool wideInput) : wide(wideInput), observer(&lines), parser(std::make_unique<GenericParser>()) {
        parser->SetObserver(&observer, false);
        parser->SetSelfCheck(GenericParser::SELF_CHECK_COPY);
    }

    void Start() {
        EXPECT_EQ(parser->StartParse(1252, wide ? GenericParser::DATA_STREAM_UTF16 : GenericParser::DATA_STREAM_8BIT),
                  0U);
    }

    /// @return the lines that it makes
    std::string Feed(GenericParser* fed, std::string_view latin1) {
        lines.clear();
        const std::string bytes = wide ? ToUtf16LE(latin1) : std::string(latin1);
        EXPECT_EQ(fed->ParseBuffer(bytes.data(), bytes.size()), 0U);
        std::string joined;
        for (const std::string& line : lines)
            joined += line + '\n';
        return joined;
    }

    bool wide;
    std::vector<std::string> lines;
    Observer observer;
    std::unique_ptr<GenericParser> parser;
};

constexpr char OF_SOURCE[] =
    "<p>A text that is longer than a short string<!-- a comment that is longer than a short string -->"
    "<a first-attribute-of-the-source='its value is longer than a short string' second-attribute-of-the-source";
constexpr char OF_TARGET[] =
    "<i a-long-attribute-of-the-target='a value that is longer than a short string'>Another text, as long as the first "
    "one</i"
    " third-attribute-of-the-target";
constexpr char REST[] = "=value>";
constexpr char SOURCE_DONE[] =
    "start(|a|{ |first-attribute-of-the-source|=|'its value is longer than a short string'}"
    "{ |second-attribute-of-the-source|=|value}|)\n";
constexpr char TARGET_DONE[] = "end(|i| |{|third-attribute-of-the-target|=|value}|)\n";

template <typename Flavour>
class AssignmentTest : public testing::Test {
protected:
    using Midway = Scene<typename Flavour::C, typename Flavour::S>;
};

TYPED_TEST_SUITE(AssignmentTest, Flavours);

TYPED_TEST(AssignmentTest, TheTargetIsAsBeforeOrAsTheSource) {
    for (const bool wide : {false, true}) {
        if (wide && !TypeParam::WIDE)
            continue;  // its strings would be bytes of UTF-16
        std::size_t failures = 0;
        for (bool isAssigned = false; !isAssigned;) {
            SCOPED_TRACE(failures + 1);
            ASSERT_LT(failures, TOO_MANY);
            typename TestFixture::Midway target(wide);
            target.Start();
            target.Feed(target.parser.get(), OF_TARGET);
            auto source = std::make_unique<typename TestFixture::Midway>(wide);
            source->Start();
            source->Feed(source->parser.get(), OF_SOURCE);
            try {
                const FailingAllocation failure(failures + 1);
                *target.parser = *source->parser;
                isAssigned = true;
            } catch (const std::bad_alloc&) {
                ++failures;
            }
            if (isAssigned) {
                EXPECT_EQ(source->Feed(target.parser.get(), REST), SOURCE_DONE);
                EXPECT_EQ(source->Feed(source->parser.get(), REST), SOURCE_DONE);
            } else {
                EXPECT_EQ(source->Feed(source->parser.get(), REST), SOURCE_DONE);
                source.reset();
                EXPECT_EQ(target.Feed(target.parser.get(), REST), TARGET_DONE);
                EXPECT_EQ(target.parser->EndParse(), 0U);
            }
        }
        EXPECT_GT(failures, 5U);
    }
}

TYPED_TEST(AssignmentTest, ACopyThatFailsLeavesNothing) {
    for (const bool wide : {false, true}) {
        if (wide && !TypeParam::WIDE)
            continue;  // its strings would be bytes of UTF-16
        std::size_t failures = 0;
        typename TestFixture::Midway source(wide);
        source.Start();
        source.Feed(source.parser.get(), OF_SOURCE);
        for (bool isCopied = false; !isCopied;) {
            SCOPED_TRACE(failures + 1);
            ASSERT_LT(failures, TOO_MANY);
            try {
                const FailingAllocation failure(failures + 1);
                GenericParser copy(*source.parser);
                isCopied = true;
            } catch (const std::bad_alloc&) {
                ++failures;
            }
        }
        EXPECT_GT(failures, 5U);
        EXPECT_EQ(source.Feed(source.parser.get(), REST), SOURCE_DONE);
    }
}

TEST(OwnedObserverAssignmentTest, AnOwnedObserverOutlivesAFailure) {
    // The observers of both are owned; each is freed with the last parser that has it.
    std::size_t failures = 0;
    for (bool isAssigned = false; !isAssigned;) {
        SCOPED_TRACE(failures + 1);
        ASSERT_LT(failures, TOO_MANY);
        auto* const ofSource = new TagCounter<char, std::string>;
        auto* const ofTarget = new TagCounter<char, std::string>;
        auto source = std::make_unique<GenericParser>();
        source->SetObserver(ofSource, true);
        source->StartParse(1252, GenericParser::DATA_STREAM_8BIT);
        EXPECT_EQ(source->ParseBuffer("A text that is longer than a short string<s-as-long-as-well", 59), 0U);
        GenericParser target;
        target.SetObserver(ofTarget, true);
        target.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
        EXPECT_EQ(target.ParseBuffer("<t", 2), 0U);
        try {
            const FailingAllocation failure(failures + 1);
            target = *source;
            isAssigned = true;
        } catch (const std::bad_alloc&) {
            ++failures;
        }
        source.reset();
        EXPECT_EQ(target.ParseBuffer("><u>", 4), 0U);
        EXPECT_EQ((isAssigned ? ofSource : ofTarget)->tags, 2);
    }
    EXPECT_GT(failures, 2U);
}

}  // namespace
}  // namespace Kestra::Test
