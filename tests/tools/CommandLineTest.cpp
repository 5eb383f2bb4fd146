#include "tools/kestra-html/commandline/CommandLine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <tuple>
#include <variant>
#include <vector>

namespace Kestra::Test {
namespace {

using HTML::GenericParser;
using Tool::CheckOptions;
using Tool::CommandLine;
using Tool::DetectOptions;
using Tool::EventsOptions;
using Tool::FeedOptions;
using Tool::OutputFormat;
using Tool::ParseOptions;
using Tool::RewriteOptions;
using Tool::TokensOptions;
using Tool::ViewOptions;

using Names = std::vector<std::string>;

CommandLine Parse(const std::vector<const char*>& arguments) {
    return Tool::ParseCommandLine({arguments.begin(), arguments.end()});
}

/// The options of a line that is good.
template <typename Options>
Options ParseGoodAs(const std::vector<const char*>& arguments) {
    const CommandLine line = Parse(arguments);
    EXPECT_FALSE(line.answered.has_value()) << line.answer;
    return std::get<Options>(line.run);
}

TokensOptions ParseGood(const std::vector<const char*>& arguments) {
    return ParseGoodAs<TokensOptions>(arguments);
}

constexpr std::string_view COMMANDS[] = {"tokens", "events", "check", "detect", "rewrite", "view"};
constexpr std::string_view BEFORE = "kestra-html: ";

/// What is said about a line that is wrong, between the name of the tool and the help that it
/// points to: that of the subcommand, if there is one. All of it when they are not there.
std::string ParseWrong(const std::vector<const char*>& arguments) {
    const bool hasCommand = !arguments.empty() && std::find(std::begin(COMMANDS), std::end(COMMANDS),
                                                            std::string_view(arguments.front())) != std::end(COMMANDS);
    const std::string after =
        hasCommand ? std::string(" (see kestra-html ") + arguments.front() + " --help)" : " (see kestra-html --help)";
    const CommandLine line = Parse(arguments);
    EXPECT_TRUE(line.answered.has_value());
    EXPECT_EQ(line.answered.value_or(Tool::EXIT_STATUS_GOOD), Tool::EXIT_STATUS_USAGE);
    std::string_view answer = line.answer;
    const std::size_t around = BEFORE.size() + after.size();
    const bool isFramed = answer.size() >= around && answer.starts_with(BEFORE) && answer.ends_with(after);
    EXPECT_TRUE(isFramed) << answer;
    if (isFramed)
        answer = answer.substr(BEFORE.size(), answer.size() - around);
    return std::string(answer);
}

TEST(CommandLine, Defaults) {
    const TokensOptions options = ParseGood({"tokens"});
    EXPECT_EQ(options.format, OutputFormat::TEXT);
    EXPECT_EQ(options.charset, 0U);
    EXPECT_EQ(options.input, GenericParser::DATA_STREAM_AUTO);
    EXPECT_EQ(options.observer, TokensOptions::Observer::WIDE);
    EXPECT_EQ(options.feed, ParseOptions::Feed::STREAM);
    EXPECT_EQ(options.pieceSize, 0U);
    EXPECT_EQ(options.selfCheck, GenericParser::SELF_CHECK_OFF);
    EXPECT_FALSE(options.detectCharsetErrors);
    EXPECT_FALSE(options.places);
    EXPECT_EQ(options.maxTokenSize, 0U);
    EXPECT_EQ(options.scriptMode, GenericParser::SCRIPT_AS_TOKENS);
    EXPECT_EQ(options.minConfidence, 50U);
    EXPECT_TRUE(options.reparse);
    EXPECT_EQ(options.inputs, Names{"-"});
}

TEST(CommandLine, EveryOption) {
    const TokensOptions options = ParseGood({"tokens",   "--format",         "json",   "--charset",
                                             "65001",    "--input",          "8bit",   "--observer",
                                             "narrow",   "--feed",           "buffer", "--piece-size",
                                             "7",        "--self-check",     "copy",   "--detect-charset-errors",
                                             "--places", "--scripts",        "text",   "--max-token",
                                             "77",       "--min-confidence", "101",    "--no-reparse",
                                             "a"});
    EXPECT_EQ(options.format, OutputFormat::JSON);
    EXPECT_EQ(options.charset, 65001U);
    EXPECT_EQ(options.input, GenericParser::DATA_STREAM_8BIT);
    EXPECT_EQ(options.observer, TokensOptions::Observer::NARROW);
    EXPECT_EQ(options.feed, ParseOptions::Feed::BUFFER);
    EXPECT_EQ(options.pieceSize, 7U);
    EXPECT_EQ(options.selfCheck, GenericParser::SELF_CHECK_COPY);
    EXPECT_TRUE(options.detectCharsetErrors);
    EXPECT_TRUE(options.places);
    EXPECT_EQ(options.maxTokenSize, 77U);
    EXPECT_EQ(options.scriptMode, GenericParser::SCRIPT_AS_TEXT);
    EXPECT_EQ(options.minConfidence, 101U);
    EXPECT_FALSE(options.reparse);
    EXPECT_EQ(options.inputs, Names{"a"});
}

TEST(CommandLine, TheOtherWords) {
    const TokensOptions options = ParseGood({"tokens", "--format=text", "--input=utf16", "--scripts=tokens",
                                             "--observer=wide", "--feed=stream", "--charset=0", "--piece-size=0"});
    EXPECT_EQ(options.format, OutputFormat::TEXT);
    EXPECT_EQ(options.input, GenericParser::DATA_STREAM_UTF16);
    EXPECT_EQ(options.scriptMode, GenericParser::SCRIPT_AS_TOKENS);
    EXPECT_EQ(options.observer, TokensOptions::Observer::WIDE);
    EXPECT_EQ(options.feed, ParseOptions::Feed::STREAM);
    EXPECT_EQ(ParseGood({"tokens", "--input", "auto"}).input, GenericParser::DATA_STREAM_AUTO);
    EXPECT_EQ(ParseGood({"tokens", "--self-check", "off"}).selfCheck, GenericParser::SELF_CHECK_OFF);
    EXPECT_EQ(ParseGood({"tokens", "--self-check=crc"}).selfCheck, GenericParser::SELF_CHECK_CRC);
}

TEST(CommandLine, CharsetsByNumberAndByName) {
    EXPECT_EQ(ParseGood({"tokens", "--charset", "utf-8"}).charset, 65001U);
    EXPECT_EQ(ParseGood({"tokens", "--charset", "UTF-8"}).charset, 65001U);
    EXPECT_EQ(ParseGood({"tokens", "--charset", "windows-1251"}).charset, 1251U);
    EXPECT_EQ(ParseGood({"tokens", "--charset", "shift_jis"}).charset, 932U);
    EXPECT_EQ(ParseGood({"tokens", "--charset", "01252"}).charset, 1252U);
    EXPECT_EQ(ParseGood({"tokens", "--charset", "0"}).charset, 0U);
    EXPECT_EQ(ParseGood({"tokens", "--charset", "1200"}).charset, 1200U);
    EXPECT_EQ(ParseGood({"tokens", "--charset", "65000"}).charset, 65000U);
    // Codes that have names are taken where nothing is decoded, whether the platform can decode
    // them or not.
    for (const StringNS::CharSet::Code code : {1361U, 20105U, 20924U, 50225U, 54936U}) {
        const std::string number = std::to_string(code);
        EXPECT_EQ(ParseGood({"tokens", "--observer", "narrow", "--charset", number.c_str()}).charset, code);
        EXPECT_EQ(ParseGoodAs<CheckOptions>({"check", "--charset", number.c_str()}).charset, code);
    }
}

TEST(CommandLine, OptionsStandBeforeAndAfterFiles) {
    const TokensOptions options = ParseGood({"tokens", "a", "--format", "json", "b", "--no-reparse", "c"});
    EXPECT_EQ(options.format, OutputFormat::JSON);
    EXPECT_FALSE(options.reparse);
    EXPECT_EQ(options.inputs, (Names{"a", "b", "c"}));
}

TEST(CommandLine, TheLastOfAnOptionCounts) {
    EXPECT_EQ(ParseGood({"tokens", "--format", "json", "--format", "text"}).format, OutputFormat::TEXT);
    EXPECT_EQ(ParseGood({"tokens", "--piece-size", "1", "--piece-size", "2"}).pieceSize, 2U);
}

TEST(CommandLine, NamesOfFiles) {
    EXPECT_EQ(ParseGood({"tokens", "-", "-"}).inputs, (Names{"-", "-"}));
    EXPECT_EQ(ParseGood({"tokens", "tokens", "[a,b]", "{}", "%%", "", "a b"}).inputs,
              (Names{"tokens", "[a,b]", "{}", "%%", "", "a b"}));
    EXPECT_EQ(ParseGood({"tokens", "a", "--", "--format", "-x", "--", "-"}).inputs,
              (Names{"a", "--format", "-x", "--", "-"}));
    EXPECT_EQ(ParseGood({"tokens", "--"}).inputs, (Names{"-"}));
    EXPECT_EQ(ParseGood({"tokens", "/format", "/jobs=2", "/"}).inputs, (Names{"/format", "/jobs=2", "/"}));
}

TEST(CommandLine, DefaultsOfCheck) {
    const auto options = ParseGoodAs<CheckOptions>({"check"});
    EXPECT_EQ(options.format, OutputFormat::TEXT);
    EXPECT_EQ(options.charset, 0U);
    EXPECT_EQ(options.input, GenericParser::DATA_STREAM_AUTO);
    EXPECT_EQ(options.feed, ParseOptions::Feed::STREAM);
    EXPECT_EQ(options.pieceSize, 0U);
    EXPECT_EQ(options.selfCheck, GenericParser::SELF_CHECK_COPY);
    EXPECT_EQ(options.minConfidence, 50U);
    EXPECT_TRUE(options.reparse);
    EXPECT_FALSE(options.recursive);
    EXPECT_EQ(options.jobs, CheckOptions::AS_MANY_AS_CORES);
    EXPECT_EQ(options.inputs, Names{"-"});
}

TEST(CommandLine, EveryOptionOfCheck) {
    const auto options = ParseGoodAs<CheckOptions>({"check", "a", "--format=json", "--charset=utf-8", "--input=utf16",
                                                    "--feed=buffer", "--piece-size=3", "--min-confidence=7",
                                                    "--no-reparse", "--recursive", "--jobs=1024", "b", "--", "--jobs"});
    EXPECT_EQ(options.format, OutputFormat::JSON);
    EXPECT_EQ(options.charset, 65001U);
    EXPECT_EQ(options.input, GenericParser::DATA_STREAM_UTF16);
    EXPECT_EQ(options.feed, ParseOptions::Feed::BUFFER);
    EXPECT_EQ(options.pieceSize, 3U);
    EXPECT_EQ(options.minConfidence, 7U);
    EXPECT_FALSE(options.reparse);
    EXPECT_TRUE(options.recursive);
    EXPECT_EQ(options.jobs, 1024U);
    EXPECT_EQ(options.inputs, (Names{"a", "b", "--jobs"}));
}

TEST(CommandLine, OptionsOfEvents) {
    const auto defaults = ParseGoodAs<EventsOptions>({"events"});
    EXPECT_EQ(defaults.format, OutputFormat::TEXT);
    EXPECT_EQ(defaults.charset, 0U);
    EXPECT_EQ(defaults.feed, FeedOptions::Feed::STREAM);
    EXPECT_EQ(defaults.pieceSize, 0U);
    EXPECT_EQ(defaults.flags, 1U);
    EXPECT_FALSE(defaults.places);
    EXPECT_EQ(defaults.inputs, Names{"-"});
    const auto options = ParseGoodAs<EventsOptions>({"events", "--format=json", "a", "--charset", "koi8-r", "--feed",
                                                     "buffer", "--piece-size", "31", "--flags", "4294967295",
                                                     "--max-token", "5", "--places", "--", "--flags"});
    EXPECT_EQ(options.format, OutputFormat::JSON);
    EXPECT_EQ(options.charset, 20866U);
    EXPECT_EQ(options.feed, FeedOptions::Feed::BUFFER);
    EXPECT_EQ(options.pieceSize, 31U);
    EXPECT_EQ(options.flags, 4294967295U);
    EXPECT_EQ(options.maxTokenSize, 5U);
    EXPECT_TRUE(options.places);
    EXPECT_EQ(options.inputs, (Names{"a", "--flags"}));
    EXPECT_EQ(ParseGoodAs<EventsOptions>({"events", "--flags=0"}).flags, 0U);
}

TEST(CommandLine, OptionsOfDetect) {
    const auto defaults = ParseGoodAs<DetectOptions>({"detect"});
    EXPECT_EQ(defaults.format, OutputFormat::TEXT);
    EXPECT_EQ(defaults.minConfidence, 50U);
    EXPECT_EQ(defaults.bytes, 1048576U);
    EXPECT_EQ(defaults.inputs, Names{"-"});
    const auto options = ParseGoodAs<DetectOptions>(
        {"detect", "--format", "json", "a", "--min-confidence", "0", "--bytes", "7", "--", "-b"});
    EXPECT_EQ(options.format, OutputFormat::JSON);
    EXPECT_EQ(options.minConfidence, 0U);
    EXPECT_EQ(options.bytes, 7U);
    EXPECT_EQ(ParseGoodAs<DetectOptions>({"detect", "--min-confidence", "100"}).minConfidence, 100U);
    EXPECT_EQ(ParseGoodAs<CheckOptions>({"check", "--min-confidence", "100"}).minConfidence, 100U);
    EXPECT_EQ(options.inputs, (Names{"a", "-b"}));
}

TEST(CommandLine, WrongUsage) {
    const struct {
        std::vector<const char*> arguments;
        const char* expected;
    } CASES[] = {
        {{}, "a subcommand is required: tokens, events, check, detect, rewrite or view"},
        {{"--"}, "a subcommand is required: tokens, events, check, detect, rewrite or view"},
        {{"page.html"}, "there is no subcommand page.html, only tokens, events, check, detect, rewrite or view"},
        {{"-"}, "there is no subcommand -, only tokens, events, check, detect, rewrite or view"},
        {{"tokn", "a"}, "there is no subcommand tokn, did you mean tokens?"},
        {{"detetc"}, "there is no subcommand detetc, did you mean detect?"},
        {{"--format=json", "tokens"}, "--format=json comes before the subcommand; options come after it"},
        {{"--format", "json", "tokens"}, "--format comes before the subcommand; options come after it"},
        {{"--help", "-x"}, "-x comes before the subcommand; options come after it"},
        {{"tokens", "--formt=json"}, "tokens: there is no option --formt, did you mean --format?"},
        {{"tokens", "--no-repar"}, "tokens: there is no option --no-repar, did you mean --no-reparse?"},
        {{"rewrite", "--remove-elment", "b"},
         "rewrite: there is no option --remove-elment, did you mean --remove-element?"},
        {{"check", "--recursive"}, "--recursive: a directory is missing"},
        {{"tokens", "--color", "yes"}, "--color: yes not in {auto,always,never}"},
        {{"tokens", "--bogus"}, "tokens: there is no option --bogus"},
        {{"tokens", "a", "-x", "b"}, "tokens: there is no option -x"},
        {{"tokens", "-1"}, "tokens: there is no option -1"},
        {{"tokens", "--flags", "1"}, "tokens: there is no option --flags"},
        {{"tokens", "--a\nb\x1B\xC2\x9B\xE2\x80\xAE"}, "tokens: there is no option --a\\x0Ab\\x1B\\u009B\\u202E"},
        {{"tokens", "--charset", "\x07"}, "--charset: \"\\x07\" is neither a number nor a registered charset name"},
        {{"tokens", "--format"}, "--format: 1 required text|json missing"},
        {{"tokens", "--format", "xml"}, "--format: xml not in {text,json}"},
        {{"tokens", "--format", "JSON"}, "--format: JSON not in {text,json}"},
        {{"tokens", "--input", "1"}, "--input: 1 not in {auto,8bit,utf16}"},
        {{"tokens", "--observer", ""}, "--observer:  not in {wide,narrow}"},
        {{"tokens", "--max-token", "x"}, "--max-token: \"x\" is not a decimal number"},
        {{"tokens", "--scripts", "1"}, "--scripts: 1 not in {tokens,text}"},
        {{"events", "--scripts", "1"}, "--scripts: 1 not in {tokens,text}"},
        {{"detect", "--scripts", "text"}, "detect: there is no option --scripts"},
        {{"tokens", "--feed", "file"}, "--feed: file not in {stream,buffer}"},
        {{"tokens", "--charset", "no-such-charset"},
         "--charset: \"no-such-charset\" is neither a number nor a registered charset name"},
        {{"tokens", "--charset", " utf-8"}, "--charset: \" utf-8\" is neither a number nor a registered charset name"},
        {{"tokens", "--charset", "4294967296"},
         "--charset: \"4294967296\" is neither a number nor a registered charset name"},
        {{"tokens", "--charset", ""}, "--charset: \"\" is neither a number nor a registered charset name"},
        {{"tokens", "--charset", "99999"}, "--charset: there is no converter for the charset 99999"},
        {{"tokens", "--charset", "10"}, "--charset: there is no converter for the charset 10"},
        {{"tokens", "--charset", "4294967295"}, "--charset: there is no converter for the charset 4294967295"},
        {{"tokens", "--charset", "99999", "--observer", "narrow"},
         "--charset: there is no converter for the charset 99999"},
        {{"events", "--charset", "99999"}, "--charset: there is no converter for the charset 99999"},
        {{"check", "--charset", "99999"}, "--charset: there is no converter for the charset 99999"},
        {{"tokens", "--piece-size", "x"}, "--piece-size: \"x\" is not a decimal number"},
        {{"tokens", "--piece-size=-1"}, "--piece-size: \"-1\" is not a decimal number"},
        {{"tokens", "--piece-size", "0x10"}, "--piece-size: \"0x10\" is not a decimal number"},
        {{"tokens", "--piece-size", "1k"}, "--piece-size: \"1k\" is not a decimal number"},
        {{"tokens", "--min-confidence", "18446744073709551616"},
         "--min-confidence: \"18446744073709551616\" is not a number from 0 to 101"},
        {{"tokens", "--min-confidence", "102"}, "--min-confidence: \"102\" is not a number from 0 to 101"},
        {{"check", "--min-confidence", "101"}, "--min-confidence: \"101\" is not a number from 0 to 100"},
        {{"detect", "--min-confidence", "101"}, "--min-confidence: \"101\" is not a number from 0 to 100"},
        {{"detect", "--bytes", "1M"}, "--bytes: \"1M\" is not a decimal number"},
        {{"detect", "--bytes", "18446744073709551616"},
         "--bytes: \"18446744073709551616\" is greater than 18446744073709551615"},
        {{"tokens", "--line-buffered", "--feed", "buffer"},
         "--line-buffered parses what is there, and --feed buffer waits for whole pieces"},
        {{"events", "--feed=buffer", "--line-buffered"},
         "--line-buffered parses what is there, and --feed buffer waits for whole pieces"},
        {{"tokens", "--self-check", "on"}, "--self-check: on not in {off,crc,copy}"},
        {{"tokens", "--recursive"}, "--recursive: a directory is missing"},
        {{"detect", "-r", "--files-from", ""}, "--files-from: the name of a file is missing"},
        {{"events", "a", "-0"}, "--null: --files-from is missing"},
        {{"tokens", "-", "--files-from", "-"}, "--files-from: standard input is the list of names already"},
        {{"tokens", "-j0", "a"}, "--jobs: \"0\" is not a number from 1 to 1024"},
        {{"events", "--observer", "wide"}, "events: there is no option --observer"},
        {{"events", "--input", "8bit"}, "events: there is no option --input"},
        {{"events", "--no-reparse"}, "events: there is no option --no-reparse"},
        {{"events", "--flags", "x"}, "--flags: \"x\" is not a number from 0 to 4294967295"},
        {{"events", "--flags", "4294967296"}, "--flags: \"4294967296\" is not a number from 0 to 4294967295"},
        {{"events", "--flags=-1"}, "--flags: \"-1\" is not a number from 0 to 4294967295"},
        {{"events", "--charset", "x"}, "--charset: \"x\" is neither a number nor a registered charset name"},
        {{"events", "--piece-size", "x"}, "--piece-size: \"x\" is not a decimal number"},
        {{"check", "--observer", "wide"}, "check: there is no option --observer"},
        {{"check", "--self-check", "copy"}, "check: there is no option --self-check"},
        {{"check", "--charset", "x"}, "--charset: \"x\" is neither a number nor a registered charset name"},
        {{"check", "--jobs", "0"}, "--jobs: \"0\" is not a number from 1 to 1024"},
        {{"check", "--jobs", "1025"}, "--jobs: \"1025\" is not a number from 1 to 1024"},
        {{"check", "--jobs", "all"}, "--jobs: \"all\" is not a number from 1 to 1024"},
        {{"check", "--jobs", "-1"}, "--jobs: \"-1\" is not a number from 1 to 1024"},
        {{"detect", "--charset", "1252"}, "detect: there is no option --charset"},
        {{"detect", "--format", "xml"}, "--format: xml not in {text,json}"},
        {{"detect", "--min-confidence", "x"}, "--min-confidence: \"x\" is not a number from 0 to 100"},
        {{"detect", "check", "-x"}, "detect: there is no option -x"},
    };
    for (const auto& row : CASES)
        EXPECT_EQ(ParseWrong(row.arguments), row.expected);
}

TEST(CommandLine, ViewTakesOneFile) {
    const auto parse = [](const std::vector<const char*>& arguments) {
        const ViewOptions view = ParseGoodAs<ViewOptions>(arguments);
        return std::tuple(view.output, view.charset, view.input, view.scriptMode, view.maxTokenSize, view.minConfidence,
                          view.reparse, view.inputs);
    };
    EXPECT_EQ(parse({"view"}), std::tuple("-", 0U, GenericParser::DATA_STREAM_AUTO, GenericParser::SCRIPT_AS_TOKENS, 0U,
                                          50U, true, Names{"-"}));
    EXPECT_EQ(parse({"view", "-o", "[b,c]", "--charset", "utf-8", "--input", "8bit", "--scripts", "text", "--max-token",
                     "7", "--min-confidence", "8", "--no-reparse", "a"}),
              std::tuple("[b,c]", 65001U, GenericParser::DATA_STREAM_8BIT, GenericParser::SCRIPT_AS_TEXT, 7U, 8U, false,
                         Names{"a"}));
    EXPECT_EQ(ParseGoodAs<ViewOptions>({"view", "--output=b", "--", "-o"}).output, "b");
    EXPECT_EQ(ParseWrong({"view", "a", "b"}), "a page shows one file");
    EXPECT_EQ(ParseWrong({"view", "--observer", "wide"}), "view: there is no option --observer");
}

TEST(CommandLine, RewriteTakesEditsAndWhereTheyGo) {
    const RewriteOptions defaults = ParseGoodAs<RewriteOptions>({"rewrite"});
    EXPECT_TRUE(defaults.edits.empty());
    EXPECT_FALSE(defaults.inPlace);
    EXPECT_EQ(defaults.backupSuffix, "");
    EXPECT_FALSE(defaults.dryRun);
    EXPECT_EQ(defaults.charset, 0U);
    EXPECT_EQ(defaults.scriptMode, GenericParser::SCRIPT_AS_TOKENS);
    EXPECT_EQ(defaults.maxTokenSize, 0U);
    EXPECT_EQ(defaults.inputs, Names{"-"});
    const RewriteOptions options = ParseGoodAs<RewriteOptions>(
        {"rewrite", "a",         "--set",        "p.x=[1,2]",   "--replace", "p.x",   "[12]",
         "[3,4]",   "b",         "--in-place=~", "--dry-run",   "--charset", "utf-8", "--input",
         "8bit",    "--scripts", "text",         "--max-token", "100",       "--",    "--set"});
    EXPECT_EQ(options.edits.size(), 2U);
    EXPECT_EQ(options.edits[0].value, "[1,2]");
    EXPECT_TRUE(options.inPlace);
    EXPECT_EQ(options.backupSuffix, "~");
    EXPECT_TRUE(options.dryRun);
    EXPECT_EQ(options.charset, 65001U);
    EXPECT_EQ(options.input, GenericParser::DATA_STREAM_8BIT);
    EXPECT_EQ(options.scriptMode, GenericParser::SCRIPT_AS_TEXT);
    EXPECT_EQ(options.maxTokenSize, 100U);
    EXPECT_EQ(options.inputs, (Names{"a", "b", "--set"}));
    EXPECT_EQ(ParseGoodAs<RewriteOptions>({"rewrite", "--dry-run", "a", "b"}).inputs.size(), 2U);
    const struct {
        std::vector<const char*> arguments;
        const char* expected;
    } WRONG[] = {
        {{"rewrite", "a", "b"}, "more than one file needs --in-place or --dry-run"},
        {{"rewrite", "--in-place"}, "--in-place: standard input is no file"},
        {{"rewrite", "--in-place", "a", "-"}, "--in-place: standard input is no file"},
        {{"rewrite", "--set", "a"}, "--set: \"a\" is not ELEMENT.ATTRIBUTE=VALUE"},
        {{"rewrite", "--observer", "wide"}, "rewrite: there is no option --observer"},
        {{"tokens", "--set", "a.b=c"}, "tokens: there is no option --set"},
    };
    for (const auto& row : WRONG)
        EXPECT_EQ(ParseWrong(row.arguments), row.expected);
}

TEST(CommandLine, HelpAndVersion) {
    const CommandLine version = Parse({"--version"});
    EXPECT_EQ(version.answered, Tool::EXIT_STATUS_GOOD);
    EXPECT_EQ(version.answer, "kestra-html " KESTRA_VERSION);

    EXPECT_EQ(Parse({"tokens", "--version"}).answered, Tool::EXIT_STATUS_GOOD);
    EXPECT_EQ(Parse({"tokens", "--version"}).answer, version.answer);

    const CommandLine help = Parse({"--help"});
    EXPECT_EQ(help.answered, Tool::EXIT_STATUS_GOOD);
    EXPECT_NE(help.answer.find("\n  tokens  "), std::string::npos) << help.answer;
    EXPECT_NE(help.answer.find("\n  3  a file cannot be read"), std::string::npos) << help.answer;
    for (const char* const command : {"\n  events  ", "\n  check  ", "\n  detect  ", "\n  rewrite  "})
        EXPECT_NE(help.answer.find(command), std::string::npos) << help.answer;

    for (const std::vector<const char*>& arguments :
         {std::vector<const char*>{"tokens", "--help"}, {"tokens", "-h"}, {"--help", "tokens"}}) {
        const CommandLine tokensHelp = Parse(arguments);
        EXPECT_EQ(tokensHelp.answered, Tool::EXIT_STATUS_GOOD);
        for (const char* const part :
             {"Usage: kestra-html tokens [OPTIONS] [FILE...]", "--format text|json=text", "--charset CHARSET=0",
              "--input auto|8bit|utf16=auto", "--observer wide|narrow=wide", "--feed stream|buffer=stream",
              "--piece-size N=0", "--self-check off|crc|copy=off", "--detect-charset-errors", "--min-confidence N=50",
              "--no-reparse", "--places", "--scripts tokens|text=tokens", "--max-token N=0", "parser's characters",
              "or the output could not be written"}) {
            EXPECT_NE(tokensHelp.answer.find(part), std::string::npos) << part;
        }
    }
}

TEST(CommandLine, HelpOfCheckAndDetect) {
    const std::string check = Parse({"check", "--help"}).answer;
    for (const char* const part :
         {"Usage: kestra-html check [OPTIONS] [FILE...]", "--format text|json=text", "--charset CHARSET=0",
          "--input auto|8bit|utf16=auto", "--feed stream|buffer=stream", "--piece-size N=0", "--min-confidence N=50",
          "--no-reparse", "--scripts tokens|text=tokens", "--max-token N=0", "-r,--recursive", "-j,--jobs N",
          "--files-from FILE", "-0,--null", "--self-check is copy, --observer is wide", "was not reproduced"}) {
        EXPECT_NE(check.find(part), std::string::npos) << part << "\n" << check;
    }
    const std::string events = Parse({"events", "--help"}).answer;
    for (const char* const part :
         {"Usage: kestra-html events [OPTIONS] [FILE...]", "--format text|json=text", "--charset CHARSET=0",
          "--feed stream|buffer=stream", "--piece-size N=0", "--places", "--scripts tokens|text=tokens",
          "--max-token N=0", "--flags N=1", "with 16, is good", "two columns", "JSON Lines", "\n  1  an input ended"}) {
        EXPECT_NE(events.find(part), std::string::npos) << part << "\n" << events;
    }
    const std::string rewrite = Parse({"rewrite", "--help"}).answer;
    for (const char* const part :
         {"Usage: kestra-html rewrite [OPTIONS] [FILE...]", "--set ELEMENT.ATTRIBUTE=VALUE",
          "--replace ELEMENT.ATTRIBUTE REGEX REPLACEMENT", "--remove ELEMENT.ATTRIBUTE", "--remove-element SELECTOR",
          "--in-place [=SUFFIX]", "--dry-run", "old -> new", "windows-1252"}) {
        EXPECT_NE(rewrite.find(part), std::string::npos) << part << "\n" << rewrite;
    }
    const std::string detect = Parse({"detect", "--help"}).answer;
    for (const char* const part : {"Usage: kestra-html detect [OPTIONS] [FILE...]", "--format text|json=text",
                                   "--min-confidence N=50", "--bytes N=1048576", "meta tag", "fewer than 256 bytes"}) {
        EXPECT_NE(detect.find(part), std::string::npos) << part << "\n" << detect;
    }
    EXPECT_EQ(detect.find("--charset"), std::string::npos);
}

TEST(CommandLine, HelpFitsATerminal) {
    for (const char* const command : {"--help", "tokens", "events", "check", "detect", "rewrite", "view"}) {
        const std::string help = Parse({command, "--help"}).answer;
        std::size_t begin = 0;
        while (begin < help.size()) {
            const std::size_t end = std::min(help.find('\n', begin), help.size());
            EXPECT_LE(end - begin, 80U) << help.substr(begin, end - begin);
            begin = end + 1;
        }
    }
}

}  // namespace
}  // namespace Kestra::Test
