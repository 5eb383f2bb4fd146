#include "tools/kestra-html/commandline/Subcommand.h"

#include <fmt/format.h>

#include <charconv>
#include <system_error>
#include <utility>

#include "tools/kestra-html/commandline/SuggestedWord.h"

namespace Kestra::Tool {

const char* const EXIT_STATUS_HELP =
    "Exit status:\n"
    "  0  all inputs are good\n"
    "  1  an input ended with a result code other than 0 or was not reproduced (the\n"
    "     others are processed all the same), or the output could not be written\n"
    "  2  wrong usage\n"
    "  3  a file cannot be read\n";

std::optional<std::uint64_t> ReadNumber(const std::string& text, std::uint64_t most) {
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || next != end || number > most)
        return std::nullopt;
    return number;
}

Subcommand::Subcommand(CLI::App* tool, const std::string& name, const std::string& description)
    : app(tool->add_subcommand(name, description)) {
    app->set_version_flag("--version", tool->version());
}

bool Subcommand::IsMeant() const {
    return app->parsed();
}

void Subcommand::RefuseOption(const std::string& argument) const {
    const std::string name = argument.substr(0, argument.find('='));
    std::vector<std::string> known;
    for (const CLI::Option* const option : app->get_options()) {
        for (const std::string& longName : option->get_lnames())
            known.push_back("--" + longName);
    }
    throw CLI::ValidationError(app->get_name(), fmt::format("there is no option {}{}", name, SuggestWord(name, known)));
}

void Subcommand::FillFields() const {
    for (const std::function<void()>& fillField : fillers)
        fillField();
    *files = app->remaining();
    for (const std::string& file : *files) {
        if (file.size() > 1 && file.front() == '-')
            RefuseOption(file);
    }
}

void Subcommand::AddFlag(const std::string& name, bool* field, const std::string& description) {
    app->add_flag(name, *field, description);
}

void Subcommand::AddNegativeFlag(const std::string& name, bool* field, const std::string& description) {
    bool* const isGiven = &flags.emplace_back(false);
    app->add_flag(name, *isGiven, description);
    fillers.emplace_back([field, isGiven] { *field = !*isGiven; });
}

void Subcommand::AddWords(const std::string& name, const std::vector<std::string>& words,
                          const std::string& defaultWord, const std::string& description, const ReadText& readWord) {
    app->add_option_function(name, readWord, description)
        ->type_name(CLI::detail::join(words, "|"))
        ->take_last()
        ->default_str(defaultWord)
        ->check(CLI::IsMember(words).description(""));
}

void Subcommand::AddNumber(const std::string& name, std::uint64_t* field, const std::string& description) {
    AddValue(name, "N", std::to_string(*field), description, [name, field](const std::string& text) {
        const auto number = ReadNumber(text, UINT64_MAX);
        const bool isDecimal = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
        if (!number && isDecimal)
            throw CLI::ValidationError(name, fmt::format("\"{}\" is greater than {}", text, UINT64_MAX));
        if (!number)
            throw CLI::ValidationError(name, fmt::format("\"{}\" is not a decimal number", text));
        *field = *number;
    });
}

std::uint64_t Subcommand::ReadNumberWithin(const std::string& option, const std::string& text, std::uint64_t least,
                                           std::uint64_t most) {
    const auto number = ReadNumber(text, most);
    if (!number || *number < least)
        throw CLI::ValidationError(option, fmt::format("\"{}\" is not a number from {} to {}", text, least, most));
    return *number;
}

void Subcommand::AddValue(const std::string& name, const std::string& typeName, const std::string& defaultText,
                          const std::string& description, ReadText readText) {
    std::string* const text = &texts.emplace_back(defaultText);
    app->add_option(name, *text, description)->type_name(typeName)->take_last()->capture_default_str();
    fillers.emplace_back([text, readText = std::move(readText)] { readText(*text); });
}

void Subcommand::AddOptional(const std::string& name, const std::string& typeName, const std::string& description,
                             ReadText readText) {
    std::string* const text = &texts.emplace_back();
    const CLI::Option* const option = app->add_option(name, *text, description)->type_name(typeName)->take_last();
    fillers.emplace_back([option, text, readText = std::move(readText)] {
        if (option->count() > 0)
            readText(*text);
    });
}

void Subcommand::AddToHelp(const std::string& name, const std::string& typeName, const std::string& description) {
    app->add_option(name, texts.emplace_back(), description)->type_name(typeName)->take_last();
}

/// The option is for the help only. It accepts nothing: as a list, the parser of options would read
/// "[a,b]" as two names.
void Subcommand::AddFiles(std::vector<std::string>* field, const std::string& description, const std::string& footer) {
    app->add_option("FILE...", helpOnly, description)->type_name("")->expected(0)->allow_extra_args(false);
    app->allow_extras();
    app->footer(footer + EXIT_STATUS_HELP);
    files = field;
}

}  // namespace Kestra::Tool
