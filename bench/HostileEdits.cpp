#include "bench/HostileEdits.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "html/rewrite/Rewriter.h"

namespace Kestra::Bench {

namespace {

using HTML::GenericParser;
using HTML::Rewriter;
using HTML::RewriterToken;

/// What the throwing callback throws.
struct Interruption {};

class SizeOfOutput final : public HTML::ParserObserverOutputHandler {
public:
    void Write(const void*, std::uint64_t byteCount, bool) override {
        bytes += byteCount;
    }

    std::uint64_t bytes = 0;
};

/// Edits once for every attribute of a tag that has some.
class Editor final : public HTML::ParserObserver<char, std::string> {
public:
    Editor(HostileEdit hostileEdit, Rewriter* ofRewriter) : edit(hostileEdit), rewriter(ofRewriter) {}

    void OnStartTag(HTML::StartTagData<char, std::string>* data) override {
        RewriterToken token = rewriter->GetToken();
        std::vector<std::string> names;
        for (const HTML::Attribute<char, std::string>& attribute : *data->attributes)
            names.push_back(attribute.name);
        if (edit == HostileEdit::REMOVE_LAST_FIRST)
            std::reverse(names.begin(), names.end());
        if (!names.empty() && (edit == HostileEdit::INSERT_BEFORE || edit == HostileEdit::INSERT_AFTER))
            Count(token.SetAttribute(names[0], "2"), 0);
        for (const std::string& name : names)
            Edit(name, &token);
    }

    void Count(std::uint32_t result, std::int64_t moreBytes) {
        isRefused = isRefused || result != HTML::REWRITE_OK;
        ++edits;
        growth += moreBytes;
    }

    std::uint64_t edits = 0;
    std::int64_t growth = 0;  // bytes
    bool isRefused = false;

private:
    void Edit(const std::string& name, RewriterToken* token) {
        switch (edit) {
            case HostileEdit::SET:
                Count(token->SetAttribute(name, "2"), 0);
                break;
            case HostileEdit::ADD:
                Count(token->SetAttribute("not-" + name, "2"), static_cast<std::int64_t>(name.size()) + 9);
                break;
            case HostileEdit::RENAME:
                Count(token->RenameAttribute(name, "not-" + name), 4);
                break;
            case HostileEdit::REMOVE:
            case HostileEdit::REMOVE_LAST_FIRST:
                Count(token->RemoveAttribute(name), -static_cast<std::int64_t>(name.size()) - 3);
                break;
            case HostileEdit::INSERT_BEFORE:
                Count(token->InsertBefore("x", HTML::CONTENT_TEXT), 1);
                break;
            case HostileEdit::INSERT_AFTER:
                Count(token->InsertAfter("x", HTML::CONTENT_TEXT), 1);
                break;
            case HostileEdit::NONE:
            case HostileEdit::THROW_IN_EDITED:
            case HostileEdit::THROW_IN_REMOVED:
                break;
        }
    }

    HostileEdit edit;
    Rewriter* rewriter;
};

/// Makes the callbacks for the text in an element throw, after an edit or in what is removed.
void ThrowInContent(HostileEdit edit, Rewriter* rewriter, Editor* editor) {
    rewriter->OnElement("b", [editor](HTML::RewriterElement element) {
        editor->Count(element.InsertAfter("y", HTML::CONTENT_TEXT), 1);
    });
    if (edit == HostileEdit::THROW_IN_REMOVED)
        rewriter->OnElement("i", [](HTML::RewriterElement element) { element.SetContent("", HTML::CONTENT_TEXT); });
    rewriter->OnContent("b", [](RewriterToken token) {
        if (token.GetKind() == HTML::TOKEN_TEXT)
            throw Interruption();
    });
}

}  // namespace

HostileReading RewriteHostile(const HostileInput& input, const std::string& document, bool selfCheck) {
    SizeOfOutput output;
    Rewriter rewriter(&output);
    Editor editor(input.edit, &rewriter);
    const bool throws = input.edit == HostileEdit::THROW_IN_EDITED || input.edit == HostileEdit::THROW_IN_REMOVED;
    if (throws)
        ThrowInContent(input.edit, &rewriter, &editor);
    else
        rewriter.SetObserver(&editor);
    rewriter.SetScriptMode(input.scriptMode);
    rewriter.StartParse(input.charset, GenericParser::DATA_STREAM_8BIT);
    // After an exception the rest of the piece is copied without being read, so there is nothing to
    // compare.
    rewriter.SetSelfCheck(selfCheck && !throws ? GenericParser::SELF_CHECK_CRC : GenericParser::SELF_CHECK_OFF);
    bool accepted = true;
    std::uint64_t thrown = 0;
    const auto run = [&](const auto& call) {
        try {
            accepted = call() == HTML::PARSER_OK && accepted;
        } catch (const Interruption&) {
            ++thrown;
        }
    };
    for (std::size_t begin = 0; begin < document.size(); begin += input.piece) {
        const std::string_view piece = std::string_view(document).substr(begin, input.piece);
        run([&] { return rewriter.ParseBuffer(piece.data(), piece.size()); });
    }
    run([&] { return rewriter.EndParse(); });
    accepted = accepted && editor.edits > 0 && !editor.isRefused && (thrown > 0) == throws;
    accepted = accepted &&
               static_cast<std::int64_t>(output.bytes) == static_cast<std::int64_t>(document.size()) + editor.growth;
    return {accepted, 0, document.size()};
}

}  // namespace Kestra::Bench
