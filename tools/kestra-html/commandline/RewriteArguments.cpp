#include "tools/kestra-html/commandline/RewriteArguments.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "html/rewrite/Rewriter.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "platform/StringHelper.h"

namespace Kestra::Tool {

namespace {

using StringNS::CharSet;
using StringNS::StringHelper;

/// Ends the name of an element or an attribute, or cannot be written in one.
constexpr std::string_view NO_NAME("\0\t\n\v\f\r \"'/<=>", 13);

bool IsUtf8(const std::string& text) {
    WideString wide;
    std::string again;
    return StringHelper::GetWideFromGeneric(CharSet::UTF8, text.data(), text.size(), &wide) == 0 &&
           StringHelper::GetStringFromWide(CharSet::UTF8, wide.data(), wide.size(), &again) == 0 && again == text;
}

/// Reads arguments one after the other.
class ArgumentReader {
public:
    ArgumentReader(const std::vector<std::string>& allArguments, RewriteArguments* result)
        : arguments(allArguments), target(result) {}

    void Run() {
        while (next < arguments.size()) {
            const std::string& argument = arguments[next];
            if (argument == "--")
                break;
            ++next;
            if (!TakeOption(argument))
                target->rest.push_back(argument);
        }
        target->rest.insert(target->rest.end(), arguments.begin() + static_cast<std::ptrdiff_t>(next), arguments.end());
    }

private:
    bool TakeOption(const std::string& argument) {
        const std::size_t equals = argument.find('=');
        option = argument.substr(0, equals);
        attached.reset();
        if (equals != std::string::npos)
            attached = argument.substr(equals + 1);
        if (option == "--set")
            TakeSet();
        else if (option == "--replace")
            TakeReplace();
        else if (option == "--remove")
            TakeRemove();
        else if (option == "--remove-element")
            TakeRemoveElement();
        else if (option == "--in-place")
            TakeInPlace();
        else
            return false;
        return true;
    }

    void TakeSet() {
        const std::string text = TakeValue("ELEMENT.ATTRIBUTE=VALUE");
        const std::size_t equals = text.find('=');
        if (equals == std::string::npos)
            Refuse(fmt::format("\"{}\" is not ELEMENT.ATTRIBUTE=VALUE", text));
        RewriteEdit& edit = AddEdit(RewriteEdit::Kind::SET, text.substr(0, equals));
        edit.value = text.substr(equals + 1);
    }

    void TakeReplace() {
        const std::string name = TakeValue("ELEMENT.ATTRIBUTE");
        const std::string regex = TakeValue("REGEX");
        const std::string text = TakeValue("REPLACEMENT");
        auto replacement = std::make_shared<const Replacement>(regex, text);
        if (!replacement->GetFault().empty())
            Refuse(replacement->GetFault());
        AddEdit(RewriteEdit::Kind::REPLACE, name).replacement = std::move(replacement);
    }

    void TakeRemove() {
        AddEdit(RewriteEdit::Kind::REMOVE, TakeValue("ELEMENT.ATTRIBUTE"));
    }

    void TakeRemoveElement() {
        const std::string selector = TakeValue("SELECTOR");
        std::string message;
        if (HTML::Rewriter(nullptr).OnElement(
                selector, [](const HTML::RewriterElement&) {}, &message) != HTML::REWRITE_OK)
            Refuse(fmt::format("\"{}\" cannot be used, {}", selector, message));
        RewriteEdit edit;
        edit.kind = RewriteEdit::Kind::REMOVE_ELEMENT;
        edit.selector = selector;
        target->edits.push_back(std::move(edit));
    }

    void TakeInPlace() {
        target->inPlace = true;
        target->backupSuffix = attached.value_or("");
        if (target->backupSuffix.find_first_of(std::string_view("/\\\0", 3)) != std::string::npos)
            Refuse(fmt::format("\"{}\" is not the end of a file's name", target->backupSuffix));
    }

    RewriteEdit& AddEdit(RewriteEdit::Kind kind, const std::string& name) {
        const std::size_t dot = name.find('.');
        const std::string element = name.substr(0, dot);
        RewriteEdit edit;
        edit.kind = kind;
        edit.attribute = dot == std::string::npos ? "" : name.substr(dot + 1);
        const bool isName =
            !element.empty() && !edit.attribute.empty() && name.find_first_of(NO_NAME) == std::string::npos;
        if (!isName)
            Refuse(fmt::format("\"{}\" is not ELEMENT.ATTRIBUTE", name));
        edit.selector = ToSelector(element);
        target->edits.push_back(std::move(edit));
        return target->edits.back();
    }

    /// The value after "=", or the next argument.
    std::string TakeValue(const char* typeName) {
        std::string value;
        if (attached)
            value = *attached;
        else if (next < arguments.size())
            value = arguments[next++];
        else
            Refuse(fmt::format("{} is missing", typeName));
        attached.reset();
        if (!IsUtf8(value))
            Refuse(fmt::format("\"{}\" is not UTF-8", value));
        return value;
    }

    [[noreturn]] void Refuse(const std::string& why) const {
        throw CLI::ValidationError(option, why);
    }

    const std::vector<std::string>& arguments;
    RewriteArguments* target;
    std::size_t next = 0;
    std::string option;
    std::optional<std::string> attached;
};

}  // namespace

RewriteArguments TakeRewriteArguments(const std::vector<std::string>& arguments) {
    RewriteArguments result;
    ArgumentReader(arguments, &result).Run();
    return result;
}

}  // namespace Kestra::Tool
