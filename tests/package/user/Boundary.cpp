// What crosses the border between a host and the library, which may each have a runtime of their
// own: exceptions, memory that one side takes and the other one gives back, types, threads.
#include <kestra/html/DocumentParser.h>
#include <kestra/html/StatelessParser.h>
#include <kestra/platform/MemoryInputStream.h>
#include <kestra/platform/Results.h>
#include <kestra/platform/StringHelper.h>
#include <kestra/platform/TmpStream.h>

#include <exception>
#include <stdexcept>
#include <thread>

#include "Check.h"

using namespace Kestra;

namespace {

class Refusal : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws at each start tag.
template <typename C, typename S>
class Refuser final : public HTML::ParserObserver<C, S> {
public:
    void OnStartTag(HTML::StartTagData<C, S>*) override {
        throw Refusal("no tags");
    }
    void OnText(HTML::TextData<C, S>*) override {
        ++texts;
    }

    int texts = 0;
};

class EventRefuser final : public HTML::StatelessHTMLObserver {
public:
    void OnStartTag(const WideChar*, const Attributes*) override {
        throw Refusal("no tags");
    }
    void OnText(const WideChar*) override {
        ++texts;
    }

    int texts = 0;
};

/// @return what the exception says that a call lets through
template <typename Call>
std::string Catch(Call call) {
    try {
        call();
    } catch (const Refusal& refusal) {
        CHECK(std::uncaught_exceptions() == 0);
        return refusal.what();
    } catch (...) {
        return "another exception";
    }
    return "none";
}

template <typename C, typename S>
void UseExceptions() {
    Refuser<C, S> observer;
    HTML::GenericParser parser;
    parser.SetObserver(&observer, false);
    parser.StartParse(StringNS::CharSet::UTF8, HTML::GenericParser::DATA_STREAM_8BIT);
    CHECK(Catch([&] { parser.ParseBuffer("<p>", 3); }) == "no tags");
    // The same parser goes on with the next document.
    CHECK(parser.StartParse(StringNS::CharSet::UTF8, HTML::GenericParser::DATA_STREAM_8BIT) == HTML::PARSER_OK);
    CHECK(parser.ParseBuffer("tea", 3) == HTML::PARSER_OK && parser.EndParse() == HTML::PARSER_OK &&
          observer.texts == 1);
    // A stream that the parser owns is deleted on the way.
    parser.StartParse(StringNS::CharSet::UTF8, HTML::GenericParser::DATA_STREAM_8BIT);
    CHECK(Catch([&] { parser.ParseStream(new VFS::MemoryInputStream("<p>"), true); }) == "no tags");
}

void UseEventExceptions() {
    EventRefuser observer;
    HTML::StatelessHTMLParser parser;
    parser.Attach(&observer);
    parser.StartParse(StringNS::CharSet::UTF8);
    CHECK(Catch([&] { parser.ParseBuffer("<p>", 3); }) == "no tags");
    CHECK(parser.StartParse(StringNS::CharSet::UTF8) == HTML::STATELESS_OK);
    CHECK(parser.ParseBuffer("tea</p>", 7) == HTML::STATELESS_OK && observer.texts == 1);
}

int starts = 0;

class Counter final : public HTML::ParserObserver<WideChar, WideString> {
public:
    void OnStartParsing() override {
        ++starts;
    }
};

/// What one side allocates, the other one frees.
void UseMemory() {
    {
        HTML::GenericParser parser;
        parser.SetObserver(new Counter, true);
        parser.StartParse(StringNS::CharSet::UTF8, HTML::GenericParser::DATA_STREAM_8BIT);
        CHECK(parser.ParseBuffer("tea", 3) == HTML::PARSER_OK && starts == 1);
        parser.SetObserver(new Counter, true);
    }
    const std::string letters(100000, 'x');
    WideString wide =
        Text<WideString>("a string that does not fit into the object itself, so that it has memory of the host's");
    CHECK(StringNS::StringHelper::GetWideFromGeneric(StringNS::CharSet::UTF8, letters.data(), letters.size(), &wide) ==
          RESULT_OK);
    CHECK(wide.size() == letters.size() && wide.back() == 'x');
    WideString own = Text<WideString>("a string that does not fit into the object itself");
    own.swap(wide);
    wide.shrink_to_fit();
}

/// The library's objects are of the types that the headers say.
void UseTypes() {
    VFS::TmpOutputStream output(0);
    CHECK(output.Write("tea", 3) == RESULT_OK);
    VFS::TmpInputStream input(output);
    VFS::InputStream* const stream = &input;
    CHECK(dynamic_cast<VFS::TmpInputStream*>(stream) == &input &&
          dynamic_cast<VFS::MemoryInputStream*>(stream) == nullptr);
}

/// One parser for each thread.
void UseThreads() {
    int texts[4] = {};
    std::thread threads[4];
    for (int i = 0; i < 4; ++i) {
        threads[i] = std::thread([&texts, i] {
            Refuser<char, std::string> observer;
            HTML::GenericParser parser;
            parser.SetObserver(&observer, false);
            for (int round = 0; round < 100; ++round) {
                parser.StartParse(StringNS::CharSet::UTF8, HTML::GenericParser::DATA_STREAM_8BIT);
                parser.ParseBuffer("tea", 3);
                parser.EndParse();
            }
            texts[i] = observer.texts;
        });
    }
    for (int i = 0; i < 4; ++i) {
        threads[i].join();
        CHECK(texts[i] == 100);
    }
}

}  // namespace

void UseBoundary() {
    UseExceptions<char, std::string>();
    UseExceptions<WideChar, WideString>();
    UseEventExceptions();
    UseMemory();
    UseTypes();
    UseThreads();
}
