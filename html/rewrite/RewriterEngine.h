#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

#include "html/framework/TokenKind.h"
#include "html/output/ParserObserverOutputHandler.h"
#include "html/parser/GenericParser.h"
#include "html/rewrite/CurrentToken.h"
#include "html/rewrite/ElementEditStack.h"
#include "html/rewrite/OpenElements.h"
#include "html/rewrite/Rewriter.h"
#include "html/rewrite/RewriterCallbacks.h"
#include "html/rewrite/RewriterObserver.h"
#include "html/rewrite/RewriterOutput.h"

/// @file
/// The engine of `Rewriter`. Not installed.
///
/// The engine feeds the parser and follows its tokens; the rest is done by its parts.
/// `RewriterOutput` retains and writes the bytes of the document. `RewriterCallbacks` has the
/// callbacks of the host. `CurrentToken` takes the edits of one token, and `ElementEditStack` those
/// of the open elements, until they are written.
///
/// A token's edits settle all bytes up to its end; the end of a feeding call settles what lies
/// before the token under way, in one write.

namespace Kestra::HTML {

class RewriterEngine {
public:
    explicit RewriterEngine(ParserObserverOutputHandler* handler);
    RewriterEngine(const RewriterEngine&) = delete;
    RewriterEngine& operator=(const RewriterEngine&) = delete;
    ~RewriterEngine();

    // The operations of `Rewriter`.
    std::uint32_t SetObserver(ParserObserver<char, std::string>* narrow, ParserObserver<WideChar, WideString>* wide);
    std::uint32_t OnElement(std::string_view selector, Rewriter::ElementCallback callback, std::string* message);
    std::uint32_t OnContent(std::string_view selector, Rewriter::TokenCallback callback, std::string* message);
    RewriterToken GetToken() const;
    std::uint32_t StartParse(StringNS::CharSet::Code code, GenericParser::DataStreamType type);
    std::uint32_t ParseBuffer(const char* data, std::uint64_t size);
    std::uint32_t ParseStream(VFS::InputStream* stream, bool ownsStream);
    std::uint32_t ParseFile(const WideChar* path);
    std::uint32_t EndParse();
    void SetMaxDepth(std::uint64_t count);
    void SetMaxOpenAttributes(std::uint64_t count);

    GenericParser& GetParser() {
        return parser;
    }

    /// @return the current token, when `hostToken` refers to it; null otherwise
    static CurrentToken* Find(const RewriterToken& hostToken);

    // Called by the observers between the parser and the host.
    bool IsOverLimit() const {
        return isOverLimit;
    }
    void BindFlavour();
    void BeginToken(TokenKind kind, bool hasAttributes) {
        current = ++generation;
        token.Begin(kind, hasAttributes);
        callbacks.BeginToken();
        if (output.IsRemoving() && kind != TOKEN_NONE) [[unlikely]]
            LeaveOutBeforeToken();
    }
    /// @return false when a limit forbids it: the token reaches nobody
    template <typename S>
    bool OpenElement(const S& name, std::uint64_t attributeCount);
    template <typename S>
    void CloseElements(const S& name);
    bool HasCallbacks() const {
        return !callbacks.IsEmpty();
    }
    /// Find, and call, the callbacks registered for the token.
    void FindCallbacks();
    void CallBack();
    void FinishToken() {
        current = 0;
        if (token.IsTouched() || output.IsRemoving()) [[unlikely]]
            SettleToken();
    }

    /// Calls the host. When it throws, the token is written without its edits.
    template <typename Callback>
    void Call(Callback callback) {
        try {
            callback();
        } catch (...) {
            AbandonToken();
            throw;
        }
    }

private:
    /// Marks a call of the host, so that callbacks cannot nest another one.
    class HostCall {
    public:
        explicit HostCall(RewriterEngine* calledEngine) : engine(calledEngine) {
            engine->isRunning = true;
            engine->output.SetHostsFault(false);
        }
        HostCall(const HostCall&) = delete;
        HostCall& operator=(const HostCall&) = delete;
        ~HostCall() {
            engine->isRunning = false;
            engine->current = 0;
        }

    private:
        RewriterEngine* engine;
    };

    // Settings.
    void BindObserver();
    bool TracksElements() const {
        return hasLimits || callbacks.HasSelectors();
    }

    // Feeding.
    void BeginDocument();
    std::uint32_t Feed(const char* data, std::uint64_t size);
    std::uint32_t FeedPiece(const char* data, std::uint64_t size);
    void CopyPiece(const char* data, std::uint64_t size);
    std::uint32_t SettlePiece(std::uint32_t result, std::exception_ptr* failure);
    std::exception_ptr CopyAll() noexcept;
    std::uint32_t Fail(std::uint32_t result);
    void EndDocument();

    // The current token.
    bool OpenTag(std::uint64_t attributeCount);
    void LeaveOutBeforeToken();
    void SettleToken();
    void AbandonToken();

    std::shared_ptr<RewriterEngine*> self;
    GenericParser parser;
    RewriterOutput output;
    RewriterObserver<char, std::string> narrowObserver;
    RewriterObserver<WideChar, WideString> wideObserver;

    RewriterCallbacks callbacks;
    OpenElements elements;
    ElementEditStack elementEdits;
    CurrentToken token;
    bool hasLimits = false;

    bool isRunning = false;    // a call of the host is on the stack
    bool isCopying = false;    // an answer was not 0
    bool isOverLimit = false;  // the observers are to be silent
    bool hasHalfUnit = false;  // of UTF-16
    char halfUnit = 0;

    std::uint64_t generation = 0;
    std::uint64_t current = 0;  // of the running callback; 0 for none
};

}  // namespace Kestra::HTML
