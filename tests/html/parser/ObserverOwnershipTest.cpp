#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "html/parser/GenericParser.h"

// This program has an allocation function of its own, so that it sees which blocks are freed. An
// owned observer is freed with plain `::operator delete(void*)`, which nothing but a replacement of
// that function can count.

namespace {

struct WatchedBlock {
    const void* block = nullptr;
    int frees = 0;
};

std::array<WatchedBlock, 8> watchedBlocks;

void CountFree(const void* block) noexcept {
    if (block == nullptr)
        return;
    for (WatchedBlock& watched : watchedBlocks) {
        if (watched.block == block)
            ++watched.frees;
    }
}

}  // namespace

void* operator new(std::size_t size) {
    if (void* const block = std::malloc(size != 0 ? size : 1))
        return block;
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept {
    CountFree(block);
    // A watched block stays allocated, so that a second free is counted and no other block gets its
    // address.
    for (const WatchedBlock& watched : watchedBlocks) {
        if (block != nullptr && watched.block == block)
            return;
    }
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    ::operator delete(block);
}

namespace Kestra::Test {
namespace {

using HTML::GenericParser;

int observerDestructions = 0;

/// Counts its callbacks. Its destructor must not be run by a parser.
template <typename C, typename S>
class CountingObserver final : public HTML::ParserObserver<C, S> {
public:
    ~CountingObserver() {
        ++observerDestructions;
    }

    void OnText(HTML::TextData<C, S>*) override {
        ++texts;
        if (onText)
            onText();
    }

    int texts = 0;
    void (*onText)() = nullptr;
};

using Narrow = CountingObserver<char, std::string>;
using Wide = CountingObserver<WideChar, WideString>;

/// An observer in a block of its own, and how often that block has been freed.
template <typename Observer>
class Watched {
public:
    Watched() : observer(new (std::malloc(sizeof(Observer))) Observer) {
        for (WatchedBlock& watched : watchedBlocks) {
            if (watched.block == nullptr) {
                watched = {observer, 0};
                entry = &watched;
                return;
            }
        }
        std::abort();
    }
    Watched(const Watched&) = delete;
    Watched& operator=(const Watched&) = delete;
    ~Watched() {
        *entry = {};
        std::free(observer);
    }

    Observer* Get() const {
        return observer;
    }

    int Frees() const {
        return entry->frees;
    }

private:
    Observer* observer;
    WatchedBlock* entry = nullptr;
};

void Feed(GenericParser* parser, std::string_view bytes) {
    EXPECT_EQ(parser->ParseBuffer(bytes.data(), bytes.size()), 0U);
}

/// Reads a document with one text.
void ReadText(GenericParser* parser) {
    parser->StartParse(1252, GenericParser::DATA_STREAM_8BIT);
    Feed(parser, "a<b>");
}

class ObserverOwnershipTest : public testing::Test {
protected:
    void SetUp() override {
        observerDestructions = 0;
    }
    void TearDown() override {
        EXPECT_EQ(observerDestructions, 0) << "freed by plain deallocation, without a destructor";
    }
};

TEST_F(ObserverOwnershipTest, ABorrowedObserverIsNeverFreed) {
    const Watched<Narrow> narrow;
    const Watched<Wide> wide;
    {
        GenericParser parser;
        parser.SetObserver(narrow.Get(), false);
        parser.SetObserver(wide.Get(), false);
        parser.SetObserver(narrow.Get(), false);
        const GenericParser copy(parser);
    }
    EXPECT_EQ(narrow.Frees(), 0);
    EXPECT_EQ(wide.Frees(), 0);
}

TEST_F(ObserverOwnershipTest, AnOwnedObserverIsFreedWithTheParser) {
    const Watched<Narrow> narrow;
    const Watched<Wide> wide;
    {
        GenericParser first;
        EXPECT_EQ(first.SetObserver(narrow.Get(), true), 0U);
        GenericParser second;
        EXPECT_EQ(second.SetObserver(wide.Get(), true), 0U);
        EXPECT_EQ(narrow.Frees(), 0);
        EXPECT_EQ(wide.Frees(), 0);
    }
    EXPECT_EQ(narrow.Frees(), 1);
    EXPECT_EQ(wide.Frees(), 1);
}

TEST_F(ObserverOwnershipTest, AnOwnedObserverIsFreedWhenAnotherOneIsBound) {
    const Watched<Narrow> first;
    const Watched<Narrow> second;
    const Watched<Wide> third;
    const Watched<Wide> fourth;
    {
        GenericParser parser;
        parser.SetObserver(first.Get(), true);
        parser.SetObserver(second.Get(), true);
        EXPECT_EQ(first.Frees(), 1);
        parser.SetObserver(third.Get(), true);
        EXPECT_EQ(second.Frees(), 1);
        parser.SetObserver(fourth.Get(), false);
        EXPECT_EQ(third.Frees(), 1);
        parser.SetObserver(static_cast<HTML::ParserObserver<char, std::string>*>(nullptr), true);
        EXPECT_EQ(fourth.Frees(), 0);
    }
    EXPECT_EQ(first.Frees(), 1);
    EXPECT_EQ(second.Frees(), 1);
    EXPECT_EQ(third.Frees(), 1);
    EXPECT_EQ(fourth.Frees(), 0);
}

TEST_F(ObserverOwnershipTest, AnOwnedObserverIsFreedWhenNoneIsBound) {
    const Watched<Wide> wide;
    GenericParser parser;
    parser.SetObserver(wide.Get(), true);
    parser.SetObserver(static_cast<HTML::ParserObserver<WideChar, WideString>*>(nullptr), false);
    EXPECT_EQ(wide.Frees(), 1);
    parser.SetObserver(static_cast<HTML::ParserObserver<WideChar, WideString>*>(nullptr), true);
    EXPECT_EQ(wide.Frees(), 1);
}

TEST_F(ObserverOwnershipTest, BindingTheSameObserverAgainFreesNothing) {
    const Watched<Narrow> narrow;
    {
        GenericParser parser;
        parser.SetObserver(narrow.Get(), true);
        parser.SetObserver(narrow.Get(), true);
        EXPECT_EQ(narrow.Frees(), 0);
        ReadText(&parser);
        EXPECT_EQ(narrow.Get()->texts, 1);
    }
    EXPECT_EQ(narrow.Frees(), 1);
}

TEST_F(ObserverOwnershipTest, BindingTheSameObserverAgainChangesWhoFreesIt) {
    const Watched<Narrow> released;
    const Watched<Narrow> taken;
    {
        GenericParser parser;
        parser.SetObserver(released.Get(), true);
        parser.SetObserver(released.Get(), false);
        EXPECT_EQ(released.Frees(), 0);
        GenericParser other;
        other.SetObserver(taken.Get(), false);
        other.SetObserver(taken.Get(), true);
        EXPECT_EQ(taken.Frees(), 0);
    }
    EXPECT_EQ(released.Frees(), 0);
    EXPECT_EQ(taken.Frees(), 1);
}

TEST_F(ObserverOwnershipTest, CopiesShareIt) {
    const Watched<Narrow> narrow;
    auto original = std::make_unique<GenericParser>();
    original->SetObserver(narrow.Get(), true);
    auto copy = std::make_unique<GenericParser>(*original);
    auto copyOfCopy = std::make_unique<GenericParser>(*copy);
    original.reset();
    EXPECT_EQ(narrow.Frees(), 0);
    ReadText(copy.get());
    EXPECT_EQ(narrow.Get()->texts, 1);
    copy.reset();
    EXPECT_EQ(narrow.Frees(), 0);
    ReadText(copyOfCopy.get());
    EXPECT_EQ(narrow.Get()->texts, 2);
    copyOfCopy.reset();
    EXPECT_EQ(narrow.Frees(), 1);
}

TEST_F(ObserverOwnershipTest, ACopyThatBindsAnotherOneLeavesItToTheOriginal) {
    const Watched<Narrow> shared;
    const Watched<Wide> own;
    {
        GenericParser original;
        original.SetObserver(shared.Get(), true);
        {
            GenericParser copy(original);
            copy.SetObserver(own.Get(), true);
            EXPECT_EQ(shared.Frees(), 0);
        }
        EXPECT_EQ(own.Frees(), 1);
        EXPECT_EQ(shared.Frees(), 0);
        ReadText(&original);
        EXPECT_EQ(shared.Get()->texts, 1);
    }
    EXPECT_EQ(shared.Frees(), 1);
}

TEST_F(ObserverOwnershipTest, AssignmentFreesWhatTheTargetOwnedAndShares) {
    const Watched<Narrow> ofSource;
    const Watched<Wide> ofTarget;
    {
        GenericParser source;
        source.SetObserver(ofSource.Get(), true);
        {
            GenericParser target;
            target.SetObserver(ofTarget.Get(), true);
            target = source;
            EXPECT_EQ(ofTarget.Frees(), 1);
            EXPECT_EQ(ofSource.Frees(), 0);
            GenericParser& self = target;
            target = self;
            EXPECT_EQ(ofSource.Frees(), 0);
            ReadText(&target);
            EXPECT_EQ(ofSource.Get()->texts, 1);
        }
        EXPECT_EQ(ofSource.Frees(), 0);
    }
    EXPECT_EQ(ofSource.Frees(), 1);
    EXPECT_EQ(ofTarget.Frees(), 1);
}

TEST_F(ObserverOwnershipTest, ACopyThatGaveItUpCanOwnItAgain) {
    const Watched<Narrow> between;
    for (const bool bindsAnother : {false, true}) {
        const Watched<Narrow> narrow;
        {
            GenericParser original;
            original.SetObserver(narrow.Get(), true);
            GenericParser copy(original);
            if (bindsAnother)
                copy.SetObserver(between.Get(), false);
            else
                copy.SetObserver(narrow.Get(), false);
            EXPECT_EQ(narrow.Frees(), 0);
            copy.SetObserver(narrow.Get(), true);
            EXPECT_EQ(narrow.Frees(), 0);
        }
        EXPECT_EQ(narrow.Frees(), 1);
    }
    EXPECT_EQ(between.Frees(), 0);
}

TEST_F(ObserverOwnershipTest, AParserThatOwnedNothingSharesNothing) {
    const Watched<Narrow> narrow;
    GenericParser original;
    original.SetObserver(narrow.Get(), false);
    {
        GenericParser copy(original);
        copy.SetObserver(narrow.Get(), true);
    }
    EXPECT_EQ(narrow.Frees(), 1);
    original.SetObserver(static_cast<HTML::ParserObserver<char, std::string>*>(nullptr), false);
    EXPECT_EQ(narrow.Frees(), 1);
}

GenericParser* feedingParser = nullptr;
HTML::ParserObserver<char, std::string>* nextObserver = nullptr;
const void* runningBlock = nullptr;
int freesInCallback = -1;

/// Takes the parser's observer away from inside its own callback.
void BindNext() {
    feedingParser->SetObserver(nextObserver, true);
    for (const WatchedBlock& watched : watchedBlocks) {
        if (watched.block == runningBlock)
            freesInCallback = watched.frees;
    }
}

TEST_F(ObserverOwnershipTest, AnObserverReplacedInItsOwnCallbackOutlivesIt) {
    const Watched<Narrow> first;
    const Watched<Narrow> second;
    {
        GenericParser parser;
        feedingParser = &parser;
        nextObserver = second.Get();
        runningBlock = first.Get();
        first.Get()->onText = BindNext;
        parser.SetObserver(first.Get(), true);
        parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
        Feed(&parser, "a<b>c<d>e<f>");
        EXPECT_EQ(freesInCallback, 0);
        EXPECT_EQ(first.Frees(), 1);
        EXPECT_EQ(first.Get()->texts, 1);
        EXPECT_EQ(second.Get()->texts, 2);
        EXPECT_EQ(second.Frees(), 0);
    }
    EXPECT_EQ(first.Frees(), 1);
    EXPECT_EQ(second.Frees(), 1);
}

HTML::ParserObserver<char, std::string>* runningObserver = nullptr;

/// Takes the parser's observer away from inside its own callback, and binds it again.
void BindNextAndBack() {
    feedingParser->SetObserver(nextObserver, true);
    feedingParser->SetObserver(runningObserver, true);
}

TEST_F(ObserverOwnershipTest, AnObserverBoundAgainInItsOwnCallbackStays) {
    const Watched<Narrow> first;
    const Watched<Narrow> second;
    {
        GenericParser parser;
        feedingParser = &parser;
        nextObserver = second.Get();
        runningObserver = first.Get();
        first.Get()->onText = BindNextAndBack;
        parser.SetObserver(first.Get(), true);
        parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
        // Only the first text makes the exchange; the second observer is then gone.
        Feed(&parser, "a<b>");
        EXPECT_EQ(first.Frees(), 0);
        EXPECT_EQ(second.Frees(), 1);
        first.Get()->onText = nullptr;
        Feed(&parser, "c<d>");
        EXPECT_EQ(first.Get()->texts, 2);
        EXPECT_EQ(second.Get()->texts, 0);
    }
    EXPECT_EQ(first.Frees(), 1);
    EXPECT_EQ(second.Frees(), 1);
}

TEST_F(ObserverOwnershipTest, AnObserverThatACopyStillOwnsMayBeBoundAgain) {
    const Watched<Narrow> narrow;
    {
        GenericParser original;
        original.SetObserver(narrow.Get(), true);
        {
            const GenericParser copy(original);
            original.SetObserver(static_cast<HTML::ParserObserver<char, std::string>*>(nullptr), false);
            EXPECT_EQ(narrow.Frees(), 0);
            original.SetObserver(narrow.Get(), true);
        }
        EXPECT_EQ(narrow.Frees(), 0);
        ReadText(&original);
        EXPECT_EQ(narrow.Get()->texts, 1);
    }
    EXPECT_EQ(narrow.Frees(), 1);
}

void Throw() {
    throw 7;
}

TEST_F(ObserverOwnershipTest, AnObserverThatThrowsIsFreedOnce) {
    const Watched<Narrow> narrow;
    {
        GenericParser parser;
        narrow.Get()->onText = Throw;
        parser.SetObserver(narrow.Get(), true);
        parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
        EXPECT_THROW(parser.ParseBuffer("a<b>", 4), int);
        EXPECT_EQ(narrow.Frees(), 0);
    }
    EXPECT_EQ(narrow.Frees(), 1);
}

}  // namespace
}  // namespace Kestra::Test
