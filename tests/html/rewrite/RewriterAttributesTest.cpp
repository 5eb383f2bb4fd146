#include <algorithm>
#include <random>

#include "tests/html/rewrite/RewriteRun.h"

namespace Kestra::Test {
namespace {

using namespace HTML;

TEST(RewriterAttributesTest, SetsValues) {
    const std::vector<AttributeRow> rows = {
        {"quotation marks stay", "<a b=\"c\">", Set("b", "d"), "<a b=\"d\">"},
        {"apostrophes stay", "<a b='c'>", Set("b", "d"), "<a b='d'>"},
        {"none stay", "<a b=c>", Set("b", "d"), "<a b=d>"},
        {"white space around the equals sign stays", "<a  b = 'c' >", Set("b", "d"), "<a  b = 'd' >"},
        {"the quote in use is escaped", "<a b=\"c\">", Set("b", "\"'&<>"), "<a b=\"&quot;'&amp;<>\">"},
        {"the other quote in use", "<a b='c'>", Set("b", "\"'&"), "<a b='\"&#39;&amp;'>"},
        {"an ampersand needs no quotes", "<a b=c>", Set("b", "?d&e"), "<a b=?d&amp;e>"},
        {"white space needs quotes", "<a b=c>", Set("b", "d e"), "<a b=\"d e\">"},
        {"so does white space beyond ASCII", "<a b=c>",
         Set("b",
             "d\xE2\x80\x83"
             "e"),
         "<a b=\"d\xE2\x80\x83"
         "e\">"},
        {"a line feed", "<a b=c>", Set("b", "d\ne"), "<a b=\"d\ne\">"},
        {"quotes", "<a b=c>", Set("b", "'"), "<a b=\"'\">"},
        {"a quotation mark", "<a b=c>", Set("b", "\""), "<a b=\"&quot;\">"},
        {"an equals sign", "<a b=c>", Set("b", "d=e"), "<a b=\"d=e\">"},
        {"angle brackets", "<a b=c>", Set("b", "<"), "<a b=\"<\">"},
        {"a grave accent", "<a b=c>", Set("b", "`"), "<a b=\"`\">"},
        {"a slash at the end", "<a b=c>", Set("b", "d/"), "<a b=\"d/\">"},
        {"not one inside", "<a b=c>", Set("b", "/d"), "<a b=/d>"},
        {"nothing", "<a b=c>", Set("b", ""), "<a b=\"\">"},
        {"a value that is missing", "<a b=>", Set("b", "d"), "<a b=d>"},
        {"before a slash", "<a b=c/>", Set("b", "d e"), "<a b=\"d e\"/>"},
        {"a bare word", "<a b>", Set("b", "d"), "<a b=\"d\">"},
        {"a bare word with a slash", "<a b/>", Set("b", "d"), "<a b=\"d\"/>"},
        {"a folded value", "<a href=\"/one\" download>", Set("href", "/two"), "<a href=\"/two\" download>"},
        {"a folded value without quotes", "<a href=/b hidden />", Set("href", "/c"), "<a href=/c hidden />"},
        {"a folded word", "<a href=\"/one\" download>", Set("download", "x"), "<a href=\"/one\" download=\"x\">"},
        {"a folded word in the middle", "<a b=c d e f='g' h>", Set("e", "x"), "<a b=c d e=\"x\" f='g' h>"},
        {"a folded word without white space", "<a b=\"x\"c>", Set("c", "d"), "<a b=\"x\"c=\"d\">"},
        {"names in any case", "<A HREF=\"b\">", Set("hRef", "c"), "<A HREF=\"c\">"},
        {"the first of two", "<a b=1 b=2>", Set("b", "3"), "<a b=3 b=2>"},
        {"one that is not there", "<a>", Set("b", "c"), "<a b=\"c\">"},
        {"the last call counts", "<a b=c>", All(Set("b", "d e"), Set("b", "f")), "<a b=f>"},
        {"an end tag", "</a b=c>", Set("b", "d e"), "</a b=\"d e\">"},
        {"an XML declaration", "<?xml version=\"1.0\"?>", Set("version", "1.1"), "<?xml version=\"1.1\"?>"},
        {"without quotes before its end", "<?xml a=b ?>", Set("a", "c?"), "<?xml a=\"c?\" ?>"},
        {"characters beyond ASCII", "<a b=c>", Set("b", "\xC3\xA9\xF0\x9F\x98\x80"), "<a b=\xC3\xA9\xF0\x9F\x98\x80>"},
        {"ill-formed values", "<a b=c>", Set("b", "\xE9"), "<a b=c>", 2},
        {"a text has none", "<!--b-->", Set("b", "c"), "<!--b-->", REWRITE_WRONG_KIND},
        {"an instruction that is free style has none", "<?php b ?>", Set("b", "c"), "<?php b ?>", REWRITE_WRONG_KIND},
    };
    CheckRows(rows);
}

TEST(RewriterAttributesTest, AddsThem) {
    const std::vector<AttributeRow> rows = {
        {"after the name", "<a>", Add("b", "c"), "<a b=\"c\">"},
        {"after the last one", "<a b=c>", Add("d", "e"), "<a b=c d=\"e\">"},
        {"in a short tag", "<a/>", Add("b", "c"), "<a b=\"c\"/>"},
        {"in a short tag with white space", "<a />", Add("b", "c"), "<a b=\"c\" />"},
        {"after a value before a slash", "<a b=c/>", Add("d", "e"), "<a b=c d=\"e\"/>"},
        {"after a bare word before a slash", "<a b/>", Add("d", "e"), "<a b d=\"e\"/>"},
        {"after a folded word", "<a b='c' d>", Add("e", "f"), "<a b='c' d e=\"f\">"},
        {"one of that name", "<a b=c>", Add("b", "d"), "<a b=c b=\"d\">"},
        {"in an end tag", "</a >", Add("b", "c"), "</a b=\"c\" >"},
        {"in an XML declaration", "<?xml version='1.0'?>", Add("b", "c"), "<?xml version='1.0' b=\"c\"?>"},
        {"after a value that is missing", "<a b=>", Add("c", "d"), "<a b=\"\" c=\"d\">"},
        {"in an end tag without its bracket", "</a<b>", Add("c", "d"), "</a<b>", REWRITE_WRONG_KIND},
        {"two", "<a>", All(Add("b", "1"), Add("c", "2")), "<a b=\"1\" c=\"2\">"},
        {"an empty value", "<a>", Add("b", ""), "<a b=\"\">"},
        {"a value that is escaped", "<a>", Add("b", "\"&'"), "<a b=\"&quot;&amp;'\">"},
        {"no name", "<a>", Add("", "c"), "<a>", REWRITE_BAD_NAME},
        {"a name with white space", "<a>", Add("b c", "d"), "<a>", REWRITE_BAD_NAME},
        {"with white space beyond ASCII", "<a>", Add("b\xC2\xA0", "d"), "<a>", REWRITE_BAD_NAME},
        {"with an equals sign", "<a>", Add("b=", "d"), "<a>", REWRITE_BAD_NAME},
        {"with a slash", "<a>", Add("b/", "d"), "<a>", REWRITE_BAD_NAME},
        {"with a quote", "<a>", Add("b'", "d"), "<a>", REWRITE_BAD_NAME},
        {"with a bracket", "<a>", Add("b>", "d"), "<a>", REWRITE_BAD_NAME},
        {"with a control character", "<a>", Add(std::string_view("b\0", 2), "d"), "<a>", REWRITE_BAD_NAME},
        {"ill-formed", "<a>", Add("\xFF", "d"), "<a>", 2},
        {"a tag without a name", "<>", Add("b", "c"), "<>", REWRITE_WRONG_KIND},
        {"a name beyond ASCII", "<a>", Add("\xC3\xA9", "d"), "<a \xC3\xA9=\"d\">"},
    };
    CheckRows(rows);
}

TEST(RewriterAttributesTest, RenamesThem) {
    const std::vector<AttributeRow> rows = {
        {"the value stays", "<a b = 'c'>", Rename("b", "d"), "<a d = 'c'>"},
        {"a bare word", "<a b>", Rename("b", "d"), "<a d>"},
        {"a folded word", "<a b=c d>", Rename("d", "e"), "<a b=c e>"},
        {"it has the new name then", "<a b=c>",
         [](RewriterToken token) {
             return token.RenameAttribute("b", "d") + token.SetAttribute("d", "e") + token.HasAttribute("b");
         },
         "<a d=e>"},
        {"one that begins at the tag's name", "<a[b>", Rename("[b", "c"), "<a c>"},
        {"none", "<a b>", Rename("c", "d"), "<a b>", REWRITE_NO_ATTRIBUTE},
        {"a bad name", "<a b>", Rename("b", ""), "<a b>", REWRITE_BAD_NAME},
        {"of an instruction", "<?xml a='b'?>", Rename("a", "c?"), "<?xml a='b'?>", REWRITE_BAD_NAME},
    };
    CheckRows(rows);
}

TEST(RewriterAttributesTest, RemovesThem) {
    const std::vector<AttributeRow> rows = {
        {"with the white space before it", "<a  b=c d>", Remove("b"), "<a d>"},
        {"the last one", "<a b=c d >", Remove("d"), "<a b=c >"},
        {"one that another one follows at once", "<a b=\"x\"c>", Remove("b"), "<a c>"},
        {"one that stands after a quote", "<a b=\"x\"c='y'd>", Remove("c"), "<a b=\"x\"d>"},
        {"one before a slash, after a value without quotes", "<a x=y b=\"z\"/>", Remove("b"), "<a x=y />"},
        {"one before a slash, after a bare word", "<a x b=\"z\"/>", Remove("b"), "<a x/>"},
        {"one before a slash, after the name", "<a b=\"z\"/>", Remove("b"), "<a/>"},
        {"a folded word", "<a b=c d e>", Remove("d"), "<a b=c e>"},
        {"a value with folded words", "<a b=c d e>", Remove("b"), "<a d e>"},
        {"one that begins at the tag's name", "<a[b c>", Remove("[b"), "<a c>"},
        {"and one that follows it at once", "<a[b=\"x\"c>", Remove("[b"), "<a c>"},
        {"all", "<a b c='d' e=f>", All(Remove("c"), Remove("b"), Remove("e")), "<a>"},
        {"then the next of that name", "<a b=1 b=2>", All(Remove("b"), Set("b", "3")), "<a b=3>"},
        {"an added one", "<a b>", All(Add("c", "d"), Remove("c")), "<a b>"},
        {"before a value without a name", "<a b c='1'='2'>", Remove("c"), "<a b c='1'='2'>", REWRITE_WRONG_KIND},
        {"the first in an end tag", "</a b=c d>", Remove("b"), "</a  d>"},
        {"none", "<a b>", Remove("c"), "<a b>", REWRITE_NO_ATTRIBUTE},
    };
    CheckRows(rows);
}

TEST(RewriterAttributesTest, SaysWhatTheyAre) {
    const std::string_view document = "<a HREF=\"?b&amp;c&copy=&eacute;\" d=e f g='' h=>";
    ExpectRewritten(document, document, [](Rewriter* rewriter) {
        rewriter->OnContent("", [](RewriterToken token) {
            const auto get = [&](std::string_view name) {
                std::string value = "untouched";
                const std::uint32_t result = token.GetAttribute(name, &value);
                return std::to_string(result) + value;
            };
            EXPECT_EQ(get("href"), "0?b&c&copy=\xC3\xA9");
            EXPECT_EQ(get("d"), "0e");
            EXPECT_EQ(get("F"), "0");
            EXPECT_EQ(get("g"), "0");
            EXPECT_EQ(get("h"), "0");
            EXPECT_EQ(get("i"), "722untouched");
            EXPECT_EQ(get(""), "722untouched");
            EXPECT_EQ(token.GetAttribute("d", nullptr), 2U);
            EXPECT_TRUE(token.HasAttribute("f"));
            EXPECT_FALSE(token.HasAttribute("e"));
        });
    });
}

TEST(RewriterAttributesTest, SaysWhatTheyHaveBecome) {
    ExpectRewritten("<a b=c>", "<a b=\"&amp; d\" e=\"f\">", [](Rewriter* rewriter) {
        rewriter->OnContent("", [](RewriterToken token) {
            std::string value;
            EXPECT_EQ(token.SetAttribute("b", "& d"), 0U);
            EXPECT_EQ(token.SetAttribute("e", "f"), 0U);
            EXPECT_EQ(token.GetAttribute("b", &value), 0U);
            EXPECT_EQ(value, "& d");
            EXPECT_EQ(token.GetAttribute("E", &value), 0U);
            EXPECT_EQ(value, "f");
        });
    });
}

// ------------------------------------------------------------------------------- many edits,
// beside a list that is searched

/// What a tag with many attributes should become, the plain way.
class ListOfAttributes {
public:
    std::vector<std::pair<std::string, std::string>> list;

    std::size_t Find(const std::string& name) const {
        const auto isSame = [&](const auto& attribute) { return Fold(attribute.first) == Fold(name); };
        return static_cast<std::size_t>(std::find_if(list.begin(), list.end(), isSame) - list.begin());
    }

    std::string ToTag() const {
        std::string tag = "<a";
        for (const auto& [name, value] : list)
            tag.append(" ").append(name).append("=\"").append(value).append("\"");
        return tag + ">";
    }

private:
    static std::string Fold(std::string name) {
        for (char& character : name)
            character = static_cast<char>(character >= 'A' && character <= 'Z' ? character + ('a' - 'A') : character);
        return name;
    }
};

/// Makes one random edit of both, or a question to both.
void EditBoth(std::mt19937* random, RewriterToken* token, ListOfAttributes* model) {
    const auto choose = [random](std::size_t count) { return (*random)() % count; };
    const auto makeName = [&] {
        constexpr std::string_view LETTERS = "bBcC";
        std::string name(1, LETTERS[choose(LETTERS.size())]);
        return name + (choose(8) == 0 ? "\xC3\xA4" : "") + std::to_string(choose(40));
    };
    const std::string name = makeName();
    const std::string value = std::to_string(choose(1000));
    const std::size_t index = model->Find(name);
    const bool isThere = index < model->list.size();
    const std::uint32_t expected = isThere ? REWRITE_OK : REWRITE_NO_ATTRIBUTE;
    switch (choose(6)) {
        case 0: {
            std::string found = "as it was";
            EXPECT_EQ(token->GetAttribute(name, &found), expected);
            EXPECT_EQ(found, isThere ? model->list[index].second : "as it was");
            break;
        }
        case 1:
            EXPECT_EQ(token->HasAttribute(name), isThere);
            break;
        case 2:
            EXPECT_EQ(token->SetAttribute(name, value), REWRITE_OK);
            if (isThere)
                model->list[index].second = value;
            else
                model->list.emplace_back(name, value);
            break;
        case 3:
            EXPECT_EQ(token->AddAttribute(name, value), REWRITE_OK);
            model->list.emplace_back(name, value);
            break;
        case 4: {
            const std::string newName = makeName();
            EXPECT_EQ(token->RenameAttribute(name, newName), expected);
            if (isThere)
                model->list[index].first = newName;
            break;
        }
        case 5:
            EXPECT_EQ(token->RemoveAttribute(name), expected);
            if (isThere)
                model->list.erase(model->list.begin() + static_cast<std::ptrdiff_t>(index));
            break;
    }
}

/// However many attributes a tag has, and however often it is edited: few of both are searched in
/// another way than many.
TEST(RewriterAttributesTest, ManyEditsAreThoseOfAList) {
    std::mt19937 random(42);
    const RewriteSettings narrow;
    RewriteSettings wide;
    wide.type = GenericParser::DATA_STREAM_UTF16;
    for (const std::size_t attributes : {0U, 3U, 31U, 32U, 33U, 34U, 100U, 300U}) {
        for (const std::size_t edits : {10U, 40U, 400U}) {
            for (const bool isWide : {false, true}) {
                ListOfAttributes model;
                for (std::size_t i = 0; i < attributes; ++i)
                    model.list.emplace_back((i % 2 == 0 ? "b" : "C\xC3\xA4") + std::to_string(i / 2 % 40),
                                            std::to_string(i));
                const std::string document = model.ToTag();
                const RewriteRun run = Rewrite(isWide ? Utf8ToUtf16LE(document) : document, isWide ? wide : narrow, {},
                                               [&](Rewriter* rewriter) {
                                                   rewriter->OnContent("", [&](RewriterToken token) {
                                                       for (std::size_t i = 0; i < edits; ++i)
                                                           EditBoth(&random, &token, &model);
                                                   });
                                               });
                EXPECT_EQ(run.feeding, 0U);
                EXPECT_EQ(run.ending, 0U);
                ASSERT_EQ(run.output, isWide ? Utf8ToUtf16LE(model.ToTag()) : model.ToTag())
                    << document << ", edits: " << edits;
            }
        }
    }
}

// ------------------------------------------------------------------------------------- a tag with
// an edit, parsed again

struct TagPart {
    std::string name;
    bool hasValue;
    std::string value;

    bool operator==(const TagPart&) const = default;
};

/// What a document is that consists of one tag.
struct ParsedTag {
    int tokens = 0;
    TokenKind kind = TOKEN_NONE;
    std::string name;
    bool isClosed = false;
    std::vector<TagPart> parts;
};

class TagReader final : public ParserObserver<char, std::string> {
public:
    explicit TagReader(std::string_view documentBytes) : document(documentBytes) {
        parser.SetObserver(this, false);
        parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
        parser.ParseBuffer(document.data(), document.size());
        parser.EndParse();
    }

    void OnText(TextData<char, std::string>*) override {
        ++tag.tokens;
    }
    void OnJunkData(JunkData<char, std::string>*) override {
        ++tag.tokens;
    }
    void OnStartTag(StartTagData<char, std::string>* data) override {
        Take(TOKEN_START_TAG, *data->name, data->closed);
    }
    void OnShortTag(ShortTagData<char, std::string>* data) override {
        Take(TOKEN_SHORT_TAG, *data->name, data->closed);
    }
    void OnEndTag(EndTagData<char, std::string>* data) override {
        Take(TOKEN_END_TAG, *data->name, data->closed);
    }

    ParsedTag tag;

private:
    void Take(TokenKind kind, const std::string& name, bool closed) {
        ++tag.tokens;
        tag.kind = kind;
        tag.name = name;
        tag.isClosed = closed;
        const TokenPlace place = parser.GetTokenPlace();
        if (place.begin != 0 || place.end != document.size())
            ++tag.tokens;
        std::vector<AttributePlace> places;
        for (std::uint64_t i = 0; parser.GetAttributeParts(i, &places) == 0; ++i) {
            for (const AttributePlace& part : places)
                tag.parts.push_back({At(part.nameBegin, part.nameEnd), part.valueBegin != part.nameEnd,
                                     At(part.valueBegin, part.valueEnd)});
        }
    }

    std::string At(std::uint64_t begin, std::uint64_t end) const {
        return std::string(document.substr(begin, end - begin));
    }

    std::string_view document;
    GenericParser parser;
};

/// A change of the parts of a tag, and the same as an edit.
struct PartEdit {
    const char* note;
    std::function<std::uint32_t(RewriterToken, const std::string& name)> edit;
    std::function<void(std::vector<TagPart>*, std::size_t index)> change;
};

const std::vector<PartEdit> PART_EDITS = {
    {"set", [](RewriterToken token, const std::string& name) { return token.SetAttribute(name, "v"); },
     [](std::vector<TagPart>* parts, std::size_t index) {
         (*parts)[index] = {(*parts)[index].name, true, "v"};
     }},
    {"set with white space",
     [](RewriterToken token, const std::string& name) { return token.SetAttribute(name, "v >"); },
     [](std::vector<TagPart>* parts, std::size_t index) {
         (*parts)[index] = {(*parts)[index].name, true, "v >"};
     }},
    {"rename", [](RewriterToken token, const std::string& name) { return token.RenameAttribute(name, "n"); },
     [](std::vector<TagPart>* parts, std::size_t index) { (*parts)[index].name = "n"; }},
    {"remove", [](RewriterToken token, const std::string& name) { return token.RemoveAttribute(name); },
     [](std::vector<TagPart>* parts, std::size_t index) {
         parts->erase(parts->begin() + static_cast<std::ptrdiff_t>(index));
     }},
    {"add", [](RewriterToken token, const std::string&) { return token.AddAttribute("n", "v/"); },
     [](std::vector<TagPart>* parts, std::size_t) {
         parts->push_back({"n", true, "v/"});
     }},
};

class EditedTagTest : public testing::TestWithParam<std::string_view> {};

/// Every tag with up to four odd characters: what is not edited is read again as it was.
TEST_P(EditedTagTest, ChangesExactlyItsPlace) {
    constexpr std::string_view CHARACTERS = " b=\"'/<[";
    constexpr std::size_t LENGTH = 4;
    std::uint64_t edits = 0;
    std::uint64_t refused = 0;
    for (std::size_t length = 1; length <= LENGTH; ++length) {
        std::vector<std::size_t> digits(length, 0);
        for (bool isDone = false; !isDone;) {
            std::string document(GetParam());
            for (const std::size_t digit : digits)
                document += CHARACTERS[digit];
            document += '>';
            const TagReader before(document);
            for (std::size_t i = 0; before.tag.tokens == 1 && before.tag.isClosed && i < before.tag.parts.size(); ++i) {
                const std::string& name = before.tag.parts[i].name;
                const auto isSame = [&](const TagPart& part) { return part.name == name; };
                if (name.empty() || std::find_if(before.tag.parts.begin(), before.tag.parts.end(), isSame) !=
                                        before.tag.parts.begin() + static_cast<std::ptrdiff_t>(i))
                    continue;
                for (const PartEdit& edit : PART_EDITS) {
                    std::uint32_t result = 12345;
                    const RewriteRun run =
                        Rewrite(document,
                                EditFirst(
                                    TOKEN_NONE, [&](RewriterToken token) { return edit.edit(token, name); }, &result));
                    const TagReader after(run.output);
                    std::vector<TagPart> expected = before.tag.parts;
                    if (result == REWRITE_OK)
                        edit.change(&expected, i);
                    else
                        EXPECT_EQ(run.output, document);
                    ++edits;
                    refused += result == REWRITE_OK ? 0 : 1;
                    const bool isGood = after.tag.tokens == 1 && after.tag.kind == before.tag.kind &&
                                        after.tag.name == before.tag.name && after.tag.isClosed &&
                                        after.tag.parts == expected;
                    ASSERT_TRUE(isGood) << edit.note << " of \"" << name << "\" made " << document << " to "
                                        << run.output;
                }
            }
            std::size_t place = 0;
            while (place < length && ++digits[place] == CHARACTERS.size())
                digits[place++] = 0;
            isDone = place == length;
        }
    }
    EXPECT_GT(edits, 3000U);
    EXPECT_LT(refused, edits / 10);
}

INSTANTIATE_TEST_SUITE_P(Tags, EditedTagTest, testing::Values("<a", "</a ", "<a b=c "));

}  // namespace
}  // namespace Kestra::Test
