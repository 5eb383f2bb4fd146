#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "c/Guard.h"
#include "c/HostStreams.h"
#include "c/Paths.h"
#include "c/kestra/html.h"
#include "html/output/ParserObserverOutputHandler.h"
#include "html/parser/GenericParser.h"
#include "html/rewrite/Rewriter.h"
#include "html/rewrite/RewriterElement.h"
#include "html/rewrite/RewriterToken.h"

struct kestra_html_edit_token {
    Kestra::HTML::RewriterToken token;
    std::string value;  // of the attribute that was asked for last
};

struct kestra_html_edit_element {
    Kestra::HTML::RewriterElement element;
    kestra_html_edit_token tag;
    std::string name;
};

namespace Kestra::C {

namespace {

/// Hands the output to the host until that refuses it.
class HostOutput final : public HTML::ParserObserverOutputHandler {
public:
    HostOutput(kestra_html_write_callback hostCallback, void* hostUser) : callback(hostCallback), user(hostUser) {}

    void Write(const void* data, std::uint64_t byteCount, bool) override {
        if (failure != 0 || byteCount == 0)
            return;
        isWriting = true;
        try {
            failure = callback(user, data, static_cast<std::size_t>(byteCount));
        } catch (...) {
            failure = KESTRA_HTML_CALLBACK_FAILED;
        }
        isWriting = false;
    }

    kestra_html_write_callback callback;
    void* user;
    std::uint32_t failure = 0;  // the answer of the host that ended the writing
    bool isWriting = false;
};

}  // namespace

}  // namespace Kestra::C

struct kestra_html_rewriter {
    explicit kestra_html_rewriter(const kestra_html_rewriter_options& options)
        : output(options.on_output, options.user), rewriter(&output) {
        rewriter.SetScriptMode(static_cast<Kestra::HTML::GenericParser::ScriptMode>(options.script_mode));
        rewriter.SetMaxTokenSize(options.max_token_size);
        rewriter.SetMaxAttributes(options.max_attributes);
        rewriter.SetMaxDepth(options.max_depth);
        rewriter.SetMaxOpenAttributes(options.max_open_attributes);
    }

    /// Calls the host with a token or an element.
    template <typename Callback, typename Edited>
    void Send(Callback callback, void* user, Edited* edited) {
        std::uint32_t answer = 0;
        try {
            answer = callback(user, edited);
        } catch (...) {
            hasFailed = true;
            answer = KESTRA_HTML_CALLBACK_FAILED;
        }
        if (answer != 0)
            rewriter.Stop();
    }

    /// What a call that feeds or ends answers.
    std::uint32_t Answer(std::uint32_t result) {
        const bool callbackFailed = std::exchange(hasFailed, false);
        if (output.failure != 0)
            return output.failure;
        return callbackFailed ? std::uint32_t{KESTRA_HTML_CALLBACK_FAILED} : result;
    }

    Kestra::C::HostOutput output;
    Kestra::HTML::Rewriter rewriter;
    bool hasFailed = false;
};

using Kestra::C::Guard;
using Kestra::C::MakeString;
using Kestra::HTML::GenericParser;
using Kestra::HTML::RewriteContent;

namespace {

template <typename Call>
std::uint32_t CallRewriter(kestra_html_rewriter* rewriter, Call call) {
    if (rewriter == nullptr || rewriter->output.isWriting)
        return KESTRA_HTML_INVALID_ARGUMENT;
    const std::uint32_t result = Guard([&] { return call(*rewriter); });
    return rewriter->Answer(result);
}

bool IsGood(const void* data, std::size_t size) {
    return data != nullptr || size == 0;
}

std::string_view View(const char* data, std::size_t size) {
    return size == 0 ? std::string_view("", 0) : std::string_view(data, size);
}

/// What a callback could not be registered for, cut to the host's room.
void CopyMessage(const std::string& text, char* message, std::size_t size) {
    if (message == nullptr || size == 0)
        return;
    const std::size_t length = std::min(text.size(), size - 1);
    std::memcpy(message, text.data(), length);
    message[length] = '\0';
}

/// Edits something that is there, with texts that are there.
template <typename Handle, typename Edit>
std::uint32_t EditIf(bool areGood, Handle* handle, Edit edit) {
    if (handle == nullptr || !areGood)
        return KESTRA_HTML_INVALID_ARGUMENT;
    return Guard([&] { return edit(*handle); });
}

template <typename Edit>
std::uint32_t EditWith(kestra_html_edit_token* token, const char* data, std::size_t size, std::uint32_t content,
                       Edit edit) {
    const bool areGood = IsGood(data, size) && content <= KESTRA_HTML_AS_MARKUP;
    return EditIf(areGood, token, [&](kestra_html_edit_token& edited) {
        return edit(edited.token, View(data, size), static_cast<RewriteContent>(content));
    });
}

}  // namespace

uint32_t kestra_html_rewriter_create(const kestra_html_rewriter_options* options, kestra_html_rewriter** rewriter) {
    if (rewriter == nullptr)
        return KESTRA_HTML_INVALID_ARGUMENT;
    *rewriter = nullptr;
    kestra_html_rewriter_options known{};
    if (options == nullptr || !Kestra::C::CopyStruct(options, &known) || known.on_output == nullptr ||
        known.script_mode > KESTRA_HTML_SCRIPT_AS_TEXT || known.reserved != 0)
        return KESTRA_HTML_INVALID_ARGUMENT;
    return Guard([&] {
        *rewriter = new kestra_html_rewriter(known);
        return std::uint32_t{KESTRA_HTML_OK};
    });
}

void kestra_html_rewriter_destroy(kestra_html_rewriter* rewriter) {
    delete rewriter;
}

uint32_t kestra_html_rewriter_on_element(kestra_html_rewriter* rewriter, const char* selector, size_t selector_size,
                                         kestra_html_element_callback callback, void* user, char* message,
                                         size_t message_size) {
    if (rewriter == nullptr || callback == nullptr || !IsGood(selector, selector_size))
        return KESTRA_HTML_INVALID_ARGUMENT;
    return Guard([&] {
        std::string text;
        const auto send = [rewriter, callback, user](Kestra::HTML::RewriterElement element) {
            kestra_html_edit_element edited{element, {element.GetStartTag(), {}}, {}};
            rewriter->Send(callback, user, &edited);
        };
        const std::uint32_t result = rewriter->rewriter.OnElement(View(selector, selector_size), send, &text);
        CopyMessage(text, message, message_size);
        return result;
    });
}

uint32_t kestra_html_rewriter_on_content(kestra_html_rewriter* rewriter, const char* selector, size_t selector_size,
                                         kestra_html_content_callback callback, void* user, char* message,
                                         size_t message_size) {
    if (rewriter == nullptr || callback == nullptr || !IsGood(selector, selector_size))
        return KESTRA_HTML_INVALID_ARGUMENT;
    return Guard([&] {
        std::string text;
        const auto send = [rewriter, callback, user](Kestra::HTML::RewriterToken token) {
            kestra_html_edit_token edited{std::move(token), {}};
            rewriter->Send(callback, user, &edited);
        };
        const std::uint32_t result = rewriter->rewriter.OnContent(View(selector, selector_size), send, &text);
        CopyMessage(text, message, message_size);
        return result;
    });
}

uint32_t kestra_html_rewriter_start(kestra_html_rewriter* rewriter, uint32_t charset, uint32_t data_type) {
    if (data_type > KESTRA_HTML_DATA_UTF16)
        return KESTRA_HTML_INVALID_ARGUMENT;
    return CallRewriter(rewriter, [&](kestra_html_rewriter& called) {
        const std::uint32_t result =
            called.rewriter.StartParse(charset, static_cast<GenericParser::DataStreamType>(data_type));
        // The document before may have been written to its end.
        if (result != KESTRA_HTML_INVALID_ARGUMENT)
            called.output.failure = 0;
        return result;
    });
}

uint32_t kestra_html_rewriter_feed(kestra_html_rewriter* rewriter, const void* data, size_t size) {
    return CallRewriter(rewriter, [&](kestra_html_rewriter& called) {
        return called.rewriter.ParseBuffer(static_cast<const char*>(data), size);
    });
}

uint32_t kestra_html_rewriter_feed_stream(kestra_html_rewriter* rewriter, const kestra_html_stream* stream) {
    kestra_html_stream known{};
    if (stream == nullptr || !Kestra::C::CopyStruct(stream, &known) || known.read == nullptr)
        return KESTRA_HTML_INVALID_ARGUMENT;
    return CallRewriter(rewriter, [&](kestra_html_rewriter& called) {
        const std::unique_ptr<Kestra::VFS::InputStream> host = Kestra::C::MakeHostStream(known);
        return called.rewriter.ParseStream(host.get(), false);
    });
}

uint32_t kestra_html_rewriter_feed_file(kestra_html_rewriter* rewriter, const char* path) {
    return CallRewriter(rewriter, [&](kestra_html_rewriter& called) {
        return called.rewriter.ParseFile(Kestra::C::MakeWidePath(path).c_str());
    });
}

uint32_t kestra_html_rewriter_end(kestra_html_rewriter* rewriter) {
    return CallRewriter(rewriter, [](kestra_html_rewriter& called) { return called.rewriter.EndParse(); });
}

uint32_t kestra_html_rewriter_charset(const kestra_html_rewriter* rewriter) {
    return rewriter == nullptr ? 0 : rewriter->rewriter.GetParser().GetCharset();
}

uint32_t kestra_html_edit_kind(const kestra_html_edit_token* token) {
    return token == nullptr ? std::uint32_t{0} : token->token.GetKind();
}

uint32_t kestra_html_edit_place(const kestra_html_edit_token* token, kestra_html_place* place) {
    if (token == nullptr || place == nullptr)
        return KESTRA_HTML_INVALID_ARGUMENT;
    const Kestra::HTML::TokenPlace found = token->token.GetPlace();
    *place = {found.begin, found.end, found.line, found.column};
    return KESTRA_HTML_OK;
}

uint32_t kestra_html_edit_bytes(const kestra_html_edit_token* token, kestra_html_string* bytes) {
    return EditIf(bytes != nullptr, token, [&](const kestra_html_edit_token& asked) {
        const std::string_view found = asked.token.GetBytes();
        *bytes = MakeString(found.data(), found.size());
        return std::uint32_t{KESTRA_HTML_OK};
    });
}

uint32_t kestra_html_edit_replace(kestra_html_edit_token* token, const char* data, size_t size, uint32_t content) {
    return EditWith(token, data, size, content,
                    [](auto& edited, auto text, auto kind) { return edited.Replace(text, kind); });
}

uint32_t kestra_html_edit_remove(kestra_html_edit_token* token) {
    return EditIf(true, token, [](kestra_html_edit_token& edited) { return edited.token.Remove(); });
}

uint32_t kestra_html_edit_insert_before(kestra_html_edit_token* token, const char* data, size_t size,
                                        uint32_t content) {
    return EditWith(token, data, size, content,
                    [](auto& edited, auto text, auto kind) { return edited.InsertBefore(text, kind); });
}

uint32_t kestra_html_edit_insert_after(kestra_html_edit_token* token, const char* data, size_t size, uint32_t content) {
    return EditWith(token, data, size, content,
                    [](auto& edited, auto text, auto kind) { return edited.InsertAfter(text, kind); });
}

uint32_t kestra_html_edit_set_text(kestra_html_edit_token* token, const char* data, size_t size) {
    return EditIf(IsGood(data, size), token,
                  [&](kestra_html_edit_token& edited) { return edited.token.SetText(View(data, size)); });
}

uint32_t kestra_html_edit_get_attribute(kestra_html_edit_token* token, const char* name, size_t name_size,
                                        kestra_html_string* value) {
    return EditIf(IsGood(name, name_size) && value != nullptr, token, [&](kestra_html_edit_token& asked) {
        const std::uint32_t result = asked.token.GetAttribute(View(name, name_size), &asked.value);
        if (result == KESTRA_HTML_OK)
            *value = MakeString(asked.value.data(), asked.value.size());
        return result;
    });
}

uint32_t kestra_html_edit_set_attribute(kestra_html_edit_token* token, const char* name, size_t name_size,
                                        const char* value, size_t value_size) {
    return EditIf(IsGood(name, name_size) && IsGood(value, value_size), token, [&](kestra_html_edit_token& edited) {
        return edited.token.SetAttribute(View(name, name_size), View(value, value_size));
    });
}

uint32_t kestra_html_edit_add_attribute(kestra_html_edit_token* token, const char* name, size_t name_size,
                                        const char* value, size_t value_size) {
    return EditIf(IsGood(name, name_size) && IsGood(value, value_size), token, [&](kestra_html_edit_token& edited) {
        return edited.token.AddAttribute(View(name, name_size), View(value, value_size));
    });
}

uint32_t kestra_html_edit_rename_attribute(kestra_html_edit_token* token, const char* name, size_t name_size,
                                           const char* new_name, size_t new_name_size) {
    const bool areGood = IsGood(name, name_size) && IsGood(new_name, new_name_size);
    return EditIf(areGood, token, [&](kestra_html_edit_token& edited) {
        return edited.token.RenameAttribute(View(name, name_size), View(new_name, new_name_size));
    });
}

uint32_t kestra_html_edit_remove_attribute(kestra_html_edit_token* token, const char* name, size_t name_size) {
    return EditIf(IsGood(name, name_size), token,
                  [&](kestra_html_edit_token& edited) { return edited.token.RemoveAttribute(View(name, name_size)); });
}

kestra_html_edit_token* kestra_html_element_tag(kestra_html_edit_element* element) {
    return element == nullptr ? nullptr : &element->tag;
}

uint32_t kestra_html_element_name(kestra_html_edit_element* element, kestra_html_string* name) {
    return EditIf(name != nullptr, element, [&](kestra_html_edit_element& asked) {
        asked.name = asked.element.GetName();
        *name = MakeString(asked.name.data(), asked.name.size());
        return std::uint32_t{KESTRA_HTML_OK};
    });
}

uint32_t kestra_html_element_has_content(const kestra_html_edit_element* element) {
    return element != nullptr && element->element.HasContent() ? 1 : 0;
}

uint32_t kestra_html_element_write(kestra_html_edit_element* element, uint32_t position, const char* data, size_t size,
                                   uint32_t content) {
    const bool areGood = IsGood(data, size) && content <= KESTRA_HTML_AS_MARKUP;
    return EditIf(areGood, element, [&](kestra_html_edit_element& edited) {
        const std::string_view text = View(data, size);
        const auto kind = static_cast<RewriteContent>(content);
        switch (position) {
            case KESTRA_HTML_BEFORE:
                return edited.element.InsertBefore(text, kind);
            case KESTRA_HTML_AFTER:
                return edited.element.InsertAfter(text, kind);
            case KESTRA_HTML_PREPEND:
                return edited.element.Prepend(text, kind);
            case KESTRA_HTML_APPEND:
                return edited.element.Append(text, kind);
            case KESTRA_HTML_CONTENT:
                return edited.element.SetContent(text, kind);
            case KESTRA_HTML_ELEMENT:
                return edited.element.Replace(text, kind);
            default:
                return std::uint32_t{KESTRA_HTML_INVALID_ARGUMENT};
        }
    });
}

uint32_t kestra_html_element_remove(kestra_html_edit_element* element) {
    return EditIf(true, element, [](kestra_html_edit_element& edited) { return edited.element.Remove(); });
}

uint32_t kestra_html_element_unwrap(kestra_html_edit_element* element) {
    return EditIf(true, element, [](kestra_html_edit_element& edited) { return edited.element.Unwrap(); });
}
