#include "tools/kestra-html/output/PrintableName.h"

#include <gtest/gtest.h>

#include <string>

namespace Kestra::Test {
namespace {

using namespace std::string_literals;

TEST(PrintableName, WhatATerminalObeysIsEscaped) {
    const struct {
        const char* note;
        std::string name;
        std::string printable;
    } CASES[] = {
        {"an ordinary name", "folder/page 1.html", "folder/page 1.html"},
        {"a backslash is a separator on Windows", "folder\\page", "folder\\page"},
        {"letters of two, three and four bytes", "\xC3\xA9\xE6\x97\xA5\xF0\x9F\x98\x80",
         "\xC3\xA9\xE6\x97\xA5\xF0\x9F\x98\x80"},
        {"line feed, carriage return, tab, escape", "a\nb\rc\td\x1B[2J", "a\\x0Ab\\x0Dc\\x09d\\x1B[2J"},
        {"the other ends of the controls", "\0\x01\x1F\x7F~"s, "\\x00\\x01\\x1F\\x7F~"},
        {"C1 controls, the first and the last", "\xC2\x80\xC2\x9B\xC2\x9F\xC2\xA1", "\\u0080\\u009B\\u009F\xC2\xA1"},
        {"the marks of direction", "\xD8\x9C\xE2\x80\x8E\xE2\x80\x8F", "\\u061C\\u200E\\u200F"},
        {"embeddings and overrides", "\xE2\x80\xAA\xE2\x80\xAB\xE2\x80\xAC\xE2\x80\xAD\xE2\x80\xAE",
         "\\u202A\\u202B\\u202C\\u202D\\u202E"},
        {"isolates", "\xE2\x81\xA6\xE2\x81\xA7\xE2\x81\xA8\xE2\x81\xA9", "\\u2066\\u2067\\u2068\\u2069"},
        {"separators of lines", "\xE2\x80\xA8\xE2\x80\xA9", "\\u2028\\u2029"},
        {"a tag character", "\xF3\xA0\x81\x81", "\\U000E0041"},
        {"a byte that begins nothing", "a\x9B"s + "b\x80\xFF", "a\\x9Bb\\x80\\xFF"},
        {"characters that are cut off", "\xC3"s + "a\xE2\x80"s + "b\xF0\x9F\x98", "\\xC3a\\xE2\\x80b\\xF0\\x9F\\x98"},
        {"a control in too many bytes", "\xC1\x9B\xE0\x82\x9B\xF0\x80\x82\x9B",
         "\\xC1\\x9B\\xE0\\x82\\x9B\\xF0\\x80\\x82\\x9B"},
        {"a surrogate", "\xED\xA0\x80", "\\xED\\xA0\\x80"},
        {"above the last character", "\xF4\x90\x80\x80\xF5\x80\x80\x80", "\\xF4\\x90\\x80\\x80\\xF5\\x80\\x80\\x80"},
        {"nothing", "", ""},
    };
    for (const auto& row : CASES)
        EXPECT_EQ(Tool::PrintableName(row.name), row.printable) << row.note;
}

}  // namespace
}  // namespace Kestra::Test
