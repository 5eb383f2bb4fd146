#pragma once

#include <CLI/CLI.hpp>

#include <cassert>
#include <cstdint>
#include <deque>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace Kestra::Tool {

/// What `--help` says at its end, of the tool and of each subcommand.
extern const char* const EXIT_STATUS_HELP;

/// Reads a number in decimal digits.
/// @return nothing for another text, and above `most`
std::optional<std::uint64_t> ReadNumber(const std::string& text, std::uint64_t most);

/// A subcommand: declares each of its options, with the help and the field that it fills.
///
/// What a field is when its option is declared is the default, which the help shows.
class Subcommand {
public:
    /// Makes of a text what an option means. @throws CLI::ValidationError
    using ReadText = std::function<void(const std::string& text)>;

    /// A word that an option takes, and what it means.
    template <typename Value>
    struct Word {
        const char* word;
        Value value;
    };

    /// @param tool  borrowed; owns the parser of options
    Subcommand(CLI::App* tool, const std::string& name, const std::string& description);
    Subcommand(const Subcommand&) = delete;
    Subcommand& operator=(const Subcommand&) = delete;

    /// True when the command line names it.
    bool IsMeant() const;

    /// Fills what the parser of options has not filled: the fields of values and of files. Words
    /// and flags come first, so that what a value means can depend on them. A value is refused
    /// here, so that a command line with `--help` is never refused for one.
    /// @throws CLI::ParseError
    void FillFields() const;

    void AddFlag(const std::string& name, bool* field, const std::string& description);
    /// A flag that sets its field to false.
    void AddNegativeFlag(const std::string& name, bool* field, const std::string& description);

    template <typename Value>
    void AddChoice(const std::string& name, Value* field, std::initializer_list<Word<Value>> words,
                   const std::string& description);

    void AddNumber(const std::string& name, std::uint64_t* field, const std::string& description);
    template <typename Number>
    void AddNumberWithin(const std::string& name, Number* field, Number least, Number most,
                         const std::string& description);

    /// An option with another kind of value.
    /// @param defaultText  is read when the option is not given
    void AddValue(const std::string& name, const std::string& typeName, const std::string& defaultText,
                  const std::string& description, ReadText readText);

    /// The same without a default: nothing is read when the option is not given.
    void AddOptional(const std::string& name, const std::string& typeName, const std::string& description,
                     ReadText readText);

    /// An option that only the help knows. Its arguments are taken out before.
    void AddToHelp(const std::string& name, const std::string& typeName, const std::string& description);

    /// The rest of the help. What is no option is a file.
    void AddFiles(std::vector<std::string>* field, const std::string& description, const std::string& footer);

    /// Reads a number within bounds. @throws CLI::ValidationError
    static std::uint64_t ReadNumberWithin(const std::string& option, const std::string& text, std::uint64_t least,
                                          std::uint64_t most);

private:
    /// @throws CLI::ParseError always: names the option that is most like it
    [[noreturn]] void RefuseOption(const std::string& argument) const;

    void AddWords(const std::string& name, const std::vector<std::string>& words, const std::string& defaultWord,
                  const std::string& description, const ReadText& readWord);

    CLI::App* app;
    std::deque<std::string> texts;  ///< of values; the parser of options writes them
    std::deque<bool> flags;         ///< the same for negative flags
    std::vector<std::function<void()>> fillers;
    std::vector<std::string>* files = nullptr;
    std::vector<std::string> helpOnly;
};

template <typename Value>
void Subcommand::AddChoice(const std::string& name, Value* field, std::initializer_list<Word<Value>> words,
                           const std::string& description) {
    const std::vector<Word<Value>> choices(words);
    std::vector<std::string> names;
    std::string defaultWord;
    for (const Word<Value>& choice : choices) {
        names.emplace_back(choice.word);
        if (choice.value == *field)
            defaultWord = choice.word;
    }
    assert(!defaultWord.empty() && "the field has none of the values");
    AddWords(name, names, defaultWord, description, [field, choices](const std::string& text) {
        for (const Word<Value>& choice : choices) {
            if (choice.word == text)
                *field = choice.value;
        }
    });
}

template <typename Number>
void Subcommand::AddNumberWithin(const std::string& name, Number* field, Number least, Number most,
                                 const std::string& description) {
    AddValue(name, "N", std::to_string(*field), description,
             [=](const std::string& text) { *field = static_cast<Number>(ReadNumberWithin(name, text, least, most)); });
}

}  // namespace Kestra::Tool
