#include "tools/kestra-html/RewriteSubcommand.h"

#include <utility>

namespace Kestra::Tool {

namespace {

constexpr const char* REWRITE_FOOTER =
    "The input is copied byte for byte, but for the edits. ELEMENT is the name of an\n"
    "element or * for any, ATTRIBUTE that of an attribute; both are compared without\n"
    "the case of A to Z. SELECTOR is one of CSS: a name or *, #id, .class and\n"
    "[attribute] with its operators, joined by white space or \">\". REGEX is in the\n"
    "syntax of RE2; every match is replaced, and \\1 to \\9 stand for what its groups\n"
    "matched. Values are what they say: references such as &amp; are decoded before\n"
    "and written after. Elements are removed first; the other edits are made in the\n"
    "order of the options. An element without its end tag lasts until the one around\n"
    "it ends.\n"
    "\n"
    "With --in-place a file is written beside itself and then put in its place. It\n"
    "keeps its permissions; a link stays one, and what it leads to is written. A file\n"
    "that is read-only, has nothing to edit, or cannot be rewritten to its end, stays\n"
    "as it is. SUFFIX is added to the file's name for a copy of it as it was.\n"
    "\n"
    "With --dry-run nothing is written but a line for each edit, with the place of\n"
    "the tag: file:line:column: old -> new. What is not there is (none).\n"
    "\n"
    "Without --charset it is that of the markup; without any, UTF-8 when all of the\n"
    "input is UTF-8, else windows-1252, in which every byte stays as it is.\n"
    "\n"
    "With --scripts tokens a string, a comment or a regular expression of a script\n"
    "may hide the tags after it from the edits.\n"
    "\n";

}  // namespace

RewriteSubcommand::RewriteSubcommand(CLI::App* tool)
    : ParsingSubcommand(tool, "rewrite", "Copy an input and edit its tags") {
    AddText("--set", &helpOnly, "ELEMENT.ATTRIBUTE=VALUE", "give an attribute a value, or add it");
    AddText("--replace", &helpOnly, "ELEMENT.ATTRIBUTE REGEX REPLACEMENT",
            "replace what matches in the value of an\nattribute");
    AddText("--remove", &helpOnly, "ELEMENT.ATTRIBUTE", "remove an attribute");
    AddText("--remove-element", &helpOnly, "SELECTOR", "remove elements with their content");
    AddText("--in-place", &helpOnly, "[=SUFFIX]", "write into the files, with a backup or without");
    AddFlag("--dry-run", &dryRun, "tell the edits and write nothing");
    AddCharset();
    AddInput();
    AddScripts();
    AddMaxToken();
    AddFiles("the file to read, with --in-place or --dry-run\nany number; - or none is standard input", REWRITE_FOOTER);
}

std::vector<std::string> RewriteSubcommand::TakeEdits(const std::vector<std::string>& arguments) {
    taken = TakeRewriteArguments(arguments);
    return std::move(taken.rest);
}

RewriteOptions RewriteSubcommand::GetOptions() const {
    RewriteOptions options;
    TakeParseOptions(&options, true);
    options.edits = taken.edits;
    options.inPlace = taken.inPlace;
    options.backupSuffix = taken.backupSuffix;
    options.dryRun = dryRun;
    options.inputs = GetFiles();
    return options;
}

}  // namespace Kestra::Tool
