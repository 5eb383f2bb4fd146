#include <kestra/html/StatelessParser.h>

#include <type_traits>

#include "Check.h"

using Kestra::WideChar;
using Kestra::WideString;
using Kestra::Base::MultiDelegate;
using Kestra::Base::Observable;
using Kestra::Base::Observer;
using Kestra::HTML::StatelessHTMLObserver;
using Kestra::HTML::StatelessHTMLParser;

namespace {

/// Notes what it is told.
class Listener : public StatelessHTMLObserver {
public:
    void OnStartTag(const WideChar* name, const Attributes* attributes) override {
        heard += WideString(name) + Text<WideString>("[");
        for (const auto& [attribute, value] : *attributes)
            heard += attribute + Text<WideString>("=") + value;
        heard += Text<WideString>("]");
    }
    void OnText(const WideChar* text) override {
        heard += text;
    }

    WideString heard;
};

void UseParser() {
    const std::string document = "tea<p class=x>cup</p>";
    Listener listener;
    StatelessHTMLParser parser;
    parser.Attach(&listener);
    CHECK(parser.StartParse(0) == Kestra::HTML::STATELESS_OK);
    CHECK(parser.ParseBuffer(document.data(), document.size()) == 0);
    std::size_t line = 0;
    std::size_t column = 0;
    CHECK(parser.GetCurrentLineNumber(&line) == 0 && parser.GetCurrentColumnNumber(&column) == 0);
    CHECK(line == 1 && column == 28);
    std::uint64_t offset = 0;
    CHECK(parser.GetCurrentOffset(&offset) == 0 && offset == document.size());
    CHECK(listener.heard == Text<WideString>("teap[class=x]cup"));
    const StatelessHTMLParser copy = parser;
    CHECK(copy.GetFlags() == 1 && parser.SetFlags(0) == 0 && parser.GetFlags() == 0);
    CHECK(parser.EndParse() == 0);
    CHECK(parser.ParseBuffer("x", 1) == Kestra::HTML::STATELESS_NOT_STARTED);
    parser.Detach(&listener);
    CHECK(parser.StartParse(65001) == 0);
    CHECK(parser.ParseStream(new Kestra::VFS::MemoryInputStream(document), true) == 0);
    CHECK(parser.ParseFile(Text<WideString>("no such file").c_str()) == Kestra::HTML::STATELESS_FILE_NOT_OPENED);
    CHECK(parser.EndParse() == 0);
    CHECK(listener.heard == Text<WideString>("teap[class=x]cup"));
}

int calls = 0;

/// An event of a host's own.
class Bell : public Observable {
public:
    void Ring() {
        GetDelegate().Call(7);
    }
};

class Ear : public Observer {
public:
    void RegisterCalls(MultiDelegate* delegate) override {
        delegate->Bind(7, this, [](Observer*, const void* const*) { ++calls; });
    }
};

void UseDelegates() {
    Bell bell;
    {
        Ear ear;
        bell.Attach(&ear);
        bell.Ring();
        CHECK(calls == 1);
    }
    bell.Ring();
    CHECK(calls == 1);
    Ear ear;
    MultiDelegate delegate;
    ear.RegisterCalls(&delegate);
    CHECK(delegate.IsBound(7) && !delegate.IsBound(6));
    delegate.Call(7);
    CHECK(calls == 2);
    delegate.Remove(&ear);
    CHECK(!delegate.IsBound(7));
    static_assert(std::is_base_of_v<Observable, StatelessHTMLParser> &&
                  std::is_base_of_v<Observer, StatelessHTMLObserver>);
}

}  // namespace

void UseEvents() {
    UseParser();
    UseDelegates();
}
