#include "tools/kestra-html/commandline/RewriteArguments.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace Kestra::Test {
namespace {

using Tool::RewriteArguments;
using Tool::RewriteEdit;
using Words = std::vector<std::string>;

/// An edit in one line.
std::string Show(const RewriteEdit& edit) {
    std::string replaced = "x1y";
    switch (edit.kind) {
        case RewriteEdit::Kind::SET:
            return "set " + edit.selector + " " + edit.attribute + " " + edit.value;
        case RewriteEdit::Kind::REPLACE:
            edit.replacement->Apply(&replaced);
            return "replace " + edit.selector + " " + edit.attribute + " x1y " + replaced;
        case RewriteEdit::Kind::REMOVE:
            return "remove " + edit.selector + " " + edit.attribute;
        case RewriteEdit::Kind::REMOVE_ELEMENT:
            return "remove-element " + edit.selector;
    }
    return "";
}

TEST(RewriteEdit, EditsAreTakenInTheirOrder) {
    const RewriteArguments taken = Tool::TakeRewriteArguments(
        {"rewrite", "--remove", "a.onclick", "f", "--set=A.rel=x=y", "--dry-run", "--replace", "*.src", "[0-9]",
         "(\\0)", "--remove-element", "p > .b", "--set", "b.c.d=", "--in-place=.bak", "g"});
    Words edits;
    for (const RewriteEdit& edit : taken.edits)
        edits.push_back(Show(edit));
    EXPECT_EQ(edits, (Words{"remove a onclick", "set A rel x=y", "replace * src x1y x(1)y", "remove-element p > .b",
                            "set b c.d "}));
    EXPECT_EQ(taken.rest, (Words{"rewrite", "f", "--dry-run", "g"}));
    EXPECT_TRUE(taken.inPlace);
    EXPECT_EQ(taken.backupSuffix, ".bak");
}

TEST(RewriteEdit, ValuesMayLookLikeOptions) {
    const RewriteArguments taken = Tool::TakeRewriteArguments(
        {"rewrite", "--replace", "a.b", "--", "--set", "--set", "a.b=--set", "--in-place", "--", "--set"});
    ASSERT_EQ(taken.edits.size(), 2U);
    std::string value = "a--b";
    EXPECT_TRUE(taken.edits[0].replacement->Apply(&value));
    EXPECT_EQ(value, "a--setb");
    EXPECT_EQ(taken.edits[1].value, "--set");
    EXPECT_TRUE(taken.inPlace);
    EXPECT_EQ(taken.backupSuffix, "");
    EXPECT_EQ(taken.rest, (Words{"rewrite", "--", "--set"})) << "after the mark everything is a file";
}

TEST(RewriteEdit, WithoutEdits) {
    const RewriteArguments taken = Tool::TakeRewriteArguments({"rewrite", "--setx", "--in-places", "-"});
    EXPECT_TRUE(taken.edits.empty());
    EXPECT_FALSE(taken.inPlace);
    EXPECT_EQ(taken.rest, (Words{"rewrite", "--setx", "--in-places", "-"}));
}

TEST(RewriteEdit, WhatIsWrongIsSaid) {
    const struct {
        Words arguments;
        std::string expected;
    } CASES[] = {
        {{"--set"}, "--set: ELEMENT.ATTRIBUTE=VALUE is missing"},
        {{"--set", "a.b"}, "--set: \"a.b\" is not ELEMENT.ATTRIBUTE=VALUE"},
        {{"--set", "a=b"}, "--set: \"a\" is not ELEMENT.ATTRIBUTE"},
        {{"--set", ".b=c"}, "--set: \".b\" is not ELEMENT.ATTRIBUTE"},
        {{"--set", "a.=c"}, "--set: \"a.\" is not ELEMENT.ATTRIBUTE"},
        {{"--set", "a.b c=d"}, "--set: \"a.b c\" is not ELEMENT.ATTRIBUTE"},
        {{"--set", "a.b=\xE9"}, "--set: \"a.b=\xE9\" is not UTF-8"},
        {{"--remove", "a"}, "--remove: \"a\" is not ELEMENT.ATTRIBUTE"},
        {{"--remove", "a.b>c"}, "--remove: \"a.b>c\" is not ELEMENT.ATTRIBUTE"},
        {{"--remove="}, "--remove: \"\" is not ELEMENT.ATTRIBUTE"},
        {{"--replace", "a.b"}, "--replace: REGEX is missing"},
        {{"--replace", "a.b", "x"}, "--replace: REPLACEMENT is missing"},
        {{"--replace", "a.b", "[", "x"}, "--replace: missing ]: ["},
        {{"--replace", "a.b", "(?=x)", "x"}, "--replace: invalid perl operator: (?="},
        {{"--remove-element", "a,b"}, "--remove-element: \"a,b\" cannot be used, character 2: "},
        {{"--remove-element", ""}, "--remove-element: \"\" cannot be used, "},
        {{"--in-place=a/b"}, "--in-place: \"a/b\" is not the end of a file's name"},
        {{"--in-place=a\\b"}, "--in-place: \"a\\b\" is not the end of a file's name"},
    };
    for (const auto& row : CASES) {
        std::string what = "nothing";
        try {
            Tool::TakeRewriteArguments(row.arguments);
        } catch (const CLI::ParseError& error) {
            what = error.what();
        }
        EXPECT_EQ(what.substr(0, row.expected.size()), row.expected) << what;
    }
    EXPECT_THROW(Tool::TakeRewriteArguments({"--replace", "a.b", "x", "\\1"}), CLI::ParseError)
        << "there is no such group";
    EXPECT_THROW(Tool::TakeRewriteArguments({"--replace", "a.b", "x", "\\"}), CLI::ParseError);
}

TEST(RewriteEdit, NamesOfElementsAsSelectors) {
    const struct {
        const char* name;
        const char* selector;
    } CASES[] = {
        {"a", "a"},       {"*", "*"},        {"H1", "H1"},       {"_x-1", "_x-1"},
        {"1", "\\31 "},   {"-x", "\\2d x"},  {"s:a", "s\\3a a"}, {"\xC3\xA9", "\xC3\xA9"},
        {"a*", "a\\2a "}, {"a\\", "a\\5c "},
    };
    for (const auto& row : CASES)
        EXPECT_EQ(Tool::ToSelector(row.name), row.selector);
}

TEST(Replacement, EveryMatchInTimeInProportionToTheText) {
    std::string value(20000, 'a');
    EXPECT_FALSE(Tool::Replacement("(a*)*b", "x").Apply(&value))
        << "an engine that goes back never comes to an end here";
    EXPECT_EQ(value.size(), 20000U);
    std::string text = "http://a http://\xC3\xA9";
    EXPECT_TRUE(Tool::Replacement("http://(.)", "https://\\1\\\\").Apply(&text));
    EXPECT_EQ(text, "https://a\\ https://\xC3\xA9\\");
    EXPECT_NE(Tool::Replacement("((x{100}){100}){100}", "").GetFault(), "") << "too large";
}

}  // namespace
}  // namespace Kestra::Test
