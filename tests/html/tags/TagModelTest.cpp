#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tests/html/tags/AttributeModel.h"

namespace Kestra::Test {
namespace {

/// A second opinion on tags: reads the whole input with plain searches, one character class at a
/// time.
class TagModel {
public:
    TagModel(std::string_view wholeInput, bool allowRuns, bool isEndTag)
        : input(wholeInput), iso2022(allowRuns), endTag(isEndTag) {}

    /// The line of the outcome, without a record when the tag fails or stays open.
    std::string Read() {
        prefix = ModelSpaces(input, &place);
        if (AtEnd())
            return "end 16";
        name = ModelRun(input, &place, "\t\n\v\f\r =[]<>");
        if (AtEnd())
            return "end 16";
        if (endTag) {
            afterName = ModelSpaces(input, &place);
            if (AtEnd())
                return "end 16";
            if (input[place] == '<')
                return Finish(false);
            if (input[place] == '>') {
                ++place;
                return Finish(true);
            }
        }
        return ReadAttributes();
    }

private:
    std::string ReadAttributes() {
        ModelAttribute attribute;
        bool runs = iso2022;
        for (;;) {
            if (needsPrefix)
                attribute.prefix = ModelSpaces(input, &place);
            needsPrefix = false;
            if (!ModelAfterPrefix(input, &place, runs, &attribute))
                return "end 16";
            std::string carry;
            bool slash = false;
            runs = iso2022;
            if (attribute.hasValue) {
                if (attribute.mark.empty() && attribute.value.ends_with('/') && input[place] == '>') {
                    attribute.value.pop_back();
                    if (attribute.value.empty())
                        return Fail();
                    slash = true;
                }
                // After a bare value a start tag forgets about escape runs for one attribute.
                runs = iso2022 && (endTag || !attribute.mark.empty() || attribute.value.empty());
                attributes.push_back(attribute);
            } else if (attribute.name.empty()) {
                suffix = attribute.prefix;
                ++place;  // only ">" can be here
                return Finish(true);
            } else {
                carry = attribute.beforeEquals;
                attribute.beforeEquals.clear();
                if (attribute.name.ends_with('/')) {
                    if (!carry.empty())
                        return Fail();
                    slash = true;
                    attribute.name.pop_back();
                }
                if (attribute.name.empty())
                    suffix = attribute.prefix;
                else
                    attributes.push_back(attribute);
            }
            if (slash) {
                hasSlash = true;
                ++place;  // only ">" can be here
                return Finish(true);
            }
            needsPrefix = attribute.hasValue;
            attribute = {};
            attribute.prefix = carry;
        }
    }

    bool AtEnd() const {
        return place == input.size();
    }

    std::string Fail() const {
        return "11" + Rest();
    }

    std::string Rest() const {
        return ModelRest(input, place);
    }

    std::string Finish(bool closed) {
        std::string list;
        for (std::size_t i = 0; i < attributes.size();) {
            ModelAttribute& anchor = attributes[i++];
            if (anchor.hasValue) {
                anchor.value = anchor.mark + anchor.value + anchor.mark;
                anchor.mark.clear();
                for (; i < attributes.size() && !attributes[i].hasValue; ++i)
                    anchor.value += attributes[i].prefix + attributes[i].name;
            }
            list += anchor.Describe();
        }
        std::string line = endTag ? "19 end(" : "19 start(";
        line += Trace::Escape(prefix) + "|" + Trace::Escape(name) + "|";
        if (endTag)
            line += Trace::Escape(afterName) + "|";
        line += list + "|" + Trace::Escape(suffix);
        if (hasSlash)
            line += endTag ? ", slash" : ", short";
        return line + (closed ? "" : ", open") + ")" + Rest();
    }

    std::string_view input;
    bool iso2022;
    bool endTag;
    std::size_t place = 0;
    bool needsPrefix = true;
    std::string prefix;
    std::string name;
    std::string afterName;
    std::string suffix;
    std::vector<ModelAttribute> attributes;
    bool hasSlash = false;
};

std::string ModelStartTag(std::string_view input, const ModelOptions& options) {
    return TagModel(input, options.Has("iso2022"), false).Read();
}

std::string ModelEndTag(std::string_view input, const ModelOptions& options) {
    return TagModel(input, options.Has("iso2022"), true).Read();
}

const RandomRow TAGS = {.rounds = 10000,
                        .seed = 5,
                        .maxParts = 14,
                        .parts = {"a", "b", "bc", " ", " ", "\n",  "=",  "=",     "/",  "/",
                                  ">", "<", "[",  "]", "'", "'x'", "\"", "\"y\"", "=z", "\\"},
                        .ends = {">x", ""},
                        .alphabet = "a =/><'",
                        .maxLength = 5,
                        .shortBegin = "t"};

const RandomRow TAGS_WITH_ESCAPE_RUNS = {.rounds = 10000,
                                         .seed = 6,
                                         .maxParts = 14,
                                         .parts = {"a", " ", " b", "=", "=", "/", ">", "<", "'", "\"", "\"", "\033",
                                                   "\033$B", "\033(B", "$B", " c=\"\033$B\"", "=z"},
                                         .options = {"iso2022"},
                                         .ends = {"\">", ""}};

const auto START_TAG_SUITE =
    MakeModelSuite<HTML::StartTagSimpleParser>("TagModelTest", "RandomStartTags", TAGS, ModelStartTag);
const auto END_TAG_SUITE = MakeModelSuite<HTML::EndTagSimpleParser>("TagModelTest", "RandomEndTags", TAGS, ModelEndTag);
const auto START_TAG_RUN_SUITE = MakeModelSuite<HTML::StartTagSimpleParser>(
    "TagModelTest", "RandomStartTagsWithEscapeRuns", TAGS_WITH_ESCAPE_RUNS, ModelStartTag);
const auto END_TAG_RUN_SUITE = MakeModelSuite<HTML::EndTagSimpleParser>("TagModelTest", "RandomEndTagsWithEscapeRuns",
                                                                        TAGS_WITH_ESCAPE_RUNS, ModelEndTag);

}  // namespace
}  // namespace Kestra::Test
