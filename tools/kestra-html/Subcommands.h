#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "tools/kestra-html/CheckOptions.h"
#include "tools/kestra-html/DetectOptions.h"
#include "tools/kestra-html/EventsOptions.h"
#include "tools/kestra-html/FeedOptions.h"
#include "tools/kestra-html/OutputFormat.h"
#include "tools/kestra-html/ParseOptions.h"
#include "tools/kestra-html/TokensOptions.h"

namespace Kestra::Tool {

/// What `--help` says at its end, of the tool and of each subcommand.
extern const char* const EXIT_STATUS_HELP;

/// A subcommand: its options as texts.
class Subcommand {
public:
    /// @param tool  borrowed; owns the parser of options
    Subcommand(CLI::App* tool, const std::string& name, const std::string& description);
    Subcommand(const Subcommand&) = delete;
    Subcommand& operator=(const Subcommand&) = delete;

    /// True when the command line names it.
    bool IsMeant() const;

protected:
    ~Subcommand() = default;

    void AddText(const std::string& name, std::string* value, const std::string& typeName,
                 const std::string& description);
    void AddChoice(const std::string& name, std::string* value, const std::vector<std::string>& choices,
                   const std::string& description);
    void AddFlag(const std::string& name, bool* value, const std::string& description);
    void AddFormat();
    void AddMinConfidence();
    void AddFiles(const std::string& description, const std::string& footer);

    OutputFormat GetFormat() const;
    /// @throws CLI::ValidationError
    std::uint64_t GetMinConfidence() const;
    /// What is no option is a file. @throws CLI::ExtrasError
    std::vector<std::string> GetFiles() const;

private:
    CLI::App* app;
    std::string format = "text";
    std::string minConfidence;
    std::vector<std::string> helpOnly;
};

/// A subcommand that hands its inputs to a parser.
class FeedingSubcommand : public Subcommand {
public:
    using Subcommand::Subcommand;

protected:
    ~FeedingSubcommand() = default;

    void AddCharset();
    void AddFeed();
    void AddMaxToken();
    void AddScripts();

    bool WantsScriptsAsText() const;
    /// @param decodes  the text of the inputs is decoded, so that their charset needs a converter;
    /// else it only needs to be one
    /// @throws CLI::ValidationError
    void TakeFeedOptions(FeedOptions* options, bool decodes) const;

private:
    std::string charset = "0";
    std::string feed = "stream";
    std::string pieceSize = "0";
    std::string maxToken = "0";
    std::string scripts = "tokens";
};

/// A subcommand that cuts its inputs into tokens.
class ParsingSubcommand : public FeedingSubcommand {
public:
    using FeedingSubcommand::FeedingSubcommand;

protected:
    ~ParsingSubcommand() = default;

    void AddInput();
    void AddNoReparse();

    /// @param decodes  as for TakeFeedOptions. @throws CLI::ValidationError
    void TakeParseOptions(ParseOptions* options, bool decodes) const;

private:
    std::string input = "auto";
    bool noReparse = false;
};

class TokensSubcommand final : public ParsingSubcommand {
public:
    explicit TokensSubcommand(CLI::App* tool);

    /// What the options mean. @throws CLI::ParseError
    TokensOptions GetOptions() const;

private:
    std::string observer = "wide";
    bool places = false;
    std::string selfCheck = "off";
    bool detectCharsetErrors = false;
};

class EventsSubcommand final : public FeedingSubcommand {
public:
    explicit EventsSubcommand(CLI::App* tool);

    /// What the options mean. @throws CLI::ParseError
    EventsOptions GetOptions() const;

private:
    std::string flags;
    bool places = false;
};

class CheckSubcommand final : public ParsingSubcommand {
public:
    explicit CheckSubcommand(CLI::App* tool);

    /// What the options mean. @throws CLI::ParseError
    CheckOptions GetOptions() const;

private:
    bool recursive = false;
    std::string jobs = "1";
};

class DetectSubcommand final : public Subcommand {
public:
    explicit DetectSubcommand(CLI::App* tool);

    /// What the options mean. @throws CLI::ParseError
    DetectOptions GetOptions() const;
};

}  // namespace Kestra::Tool
