#include "tests/html/parser/RandomTokens.h"

namespace Kestra::Test {

namespace {

constexpr std::string_view PHRASE = "#abcdefghijklmnopqrstuvwxyz    .,;:()\n";  // means nothing in any construct

}  // namespace

RandomTokens::RandomTokens(std::uint64_t seed, std::size_t longestRun)
    : dice(seed),
      grammar(
          {
              {"word", "#abcdefghijklmnopqrstuvwxyz"},
              {"blanks", "# \t\r\n\f"},
              {"phrase", PHRASE},
              {"space", "{blanks}|3: "},
              {"optional-space", "{space}|3:"},
              {"tag-name", "x{word}"},  // never that of a script or a style sheet
              {"equals", "{optional-space}={optional-space}"},
              // With the white space before it.
              {"attribute",
               "{space}{word}{|{equals}'{phrase}\"'|{equals}{word}|{equals}{''|\"\"}|2:{equals}\"{phrase}'\"}"},
              // None in every second list; in one of 64 many.
              {"attributes", "{|{{attribute*1-40}|31:{attribute*1-6}}}"},
              {"start-tag",
               "<{optional-space}{tag-name}{{attributes}{space}/>|/>|{attributes}{space}{word}={optional-space}>|"
               "{attributes}{space}>|4:{attributes}>}"},
              // The first one is ended by the "<" of the next tag.
              {"end-tag",
               "</{optional-space}{tag-name}{{optional-space}<{tag-name}>|{attributes}{space}{word}={word}/>|"
               "{attributes}{space}>|5:{optional-space}>}"},
              {"comment",
               "<!--[if {word}]>{phrase}<![endif]-->|<!--[if !{word}]><!-->{phrase}<!--<![endif]-->|"
               "<!--{phrase}-- >{phrase}- --->|2:<!--{phrase}-->"},
              // The third one is ended without a ">".
              {"section",
               "<![if {phrase}]>{phrase}<![endif]>|"
               "<![if {phrase}]{phrase}>{phrase}<![EndIf{space}{phrase}]{phrase}>|"
               "<![CDATA[{phrase}]]{phrase}|2:<![cdata[{phrase}]>{phrase}]]>"},
              {"item", "{space}{\"{phrase}'\"|'{phrase}\"'|{[{space}{word}{space}]|\"\"}|{word}}"},
              {"declaration", "<!{optional-space}{{word}|DOCTYPE}{{item*0-39}|31:{item*0-4}}{optional-space}>"},
              {"instruction",
               "<?{optional-space}xml{attributes}?>|<?xml-{word}{attributes}{space}?>|"
               "<?xml:{word}{attributes}{space}{word}/>|"
               "<?php {phrase}'{phrase}?>\\''{phrase}\"{phrase}?>\\\"\"{phrase}?>|"
               "<?{optional-space}= {phrase}/*{phrase}?>*/{phrase}//{word}?>\n{phrase}a ? b / c?>|<?{tag-name}>"},
              // To the tokenizer start tags with odd names.
              {"server-tag", "<%@ {word}=\"{phrase}\" %>|<%=\"{phrase}\" %>|<% {word} {word} %>"},
              {"script", "<script{attributes}>{script-item*0-15}\n</{optional-space}SCRIPT{optional-space}>"},
              // The sixth one is text, as a script has it.
              {"script-item",
               "'{phrase}\\'\"</{word}>'|\"{phrase}\\\"'<!--\"|/*{phrase}**'\"</{word}* /*/|"
               "//{word}'\"</{word}<{word}<!{word}<?\n|= /{word}\\/{word}\n|"
               "</{tag-name}{attributes}{optional-space}>| < {word} <{word}<!{word}<?{word}|"
               "{comment}|{section}|//{word}{comment}|//{word}{section}|{phrase}"},
              {"style", "<style{attributes}>{style-item*0-7}</style{optional-space}>"},
              {"style-item",
               "`{content:'{phrase}\\'\"'`}|`{content:\"{phrase}\\\"'\"`}|/*{phrase}**'\"*/|a / b // c {word}|"
               "{comment}|{phrase}"},
              {"token",
               "2:{end-tag}|2:{phrase}|&amp;{phrase}&#x{word};|{comment}|{section}|{declaration}|{instruction}|"
               "{server-tag}|{script}|{style}|4:{start-tag}"},
              {"junk",
               "<!-{phrase}|<![{tag-name}[{phrase}|<{tag-name}{attributes}{space}/ {phrase}|"
               "<{tag-name}{attributes}{space}{word}=\"{phrase}\"/ {phrase}|"
               "</{tag-name}{attributes}{space}{word}/ {phrase}|<!{word} \"{phrase}\" {word}<x>{phrase}|"
               "<?xml{attributes}{space}>{phrase}|<script>//{phrase}<!-{phrase}\n</script>"},
              {"plain-attributes", " first=\"{phrase}\" second='{phrase}' third={word} fourth"},
              {"plain",
               "</{word}>|<!--{phrase}-->|<!{word} {word} \"{phrase}\">|<?{word} first=\"{phrase}\" ?>|"
               "<script{plain-attributes}>{phrase}'{phrase}' < \"{phrase}\"/*{phrase}*/</script>|"
               "<style{plain-attributes}>{phrase} < {phrase}</style>|"
               "<{tag-name}{plain-attributes}/>|<{tag-name}{plain-attributes}>|2:{phrase}"},
          },
          longestRun) {}

std::string RandomTokens::Next() {
    return grammar.Make("token", &dice);
}

std::string RandomTokens::NextJunk() {
    return grammar.Make("junk", &dice);
}

std::string RandomTokens::NextPlain() {
    return grammar.Make("plain", &dice);
}

std::string RandomTokens::Text(std::size_t size) {
    std::string text(size, ' ');
    for (char& character : text)
        character = PHRASE[dice.Between(1, PHRASE.size() - 1)];
    return text;
}

}  // namespace Kestra::Test
