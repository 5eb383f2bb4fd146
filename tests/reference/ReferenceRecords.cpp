#include "tests/reference/ReferenceRecords.h"

#include <initializer_list>

namespace Kestra::Test {
namespace {

std::string Escaped(std::string_view text) {
    const std::string_view digits = "0123456789ABCDEF";
    std::string line;
    for (const char character : text) {
        const unsigned byte = static_cast<unsigned char>(character);
        if (character == '\\')
            line += "\\\\";
        else if (character == '\n')
            line += "\\n";
        else if (character == '\r')
            line += "\\r";
        else if (character == '\t')
            line += "\\t";
        else if (byte < 0x20 || byte >= 0x7F) {
            line += "\\x";
            line += digits[byte / 16];
            line += digits[byte % 16];
        } else
            line += character;
    }
    return line;
}

std::string Joined(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts)
        text += part;
    return text;
}

std::string Quoted(const std::string& value, ReferenceQuote quote) {
    if (quote == ReferenceQuote::SINGLE)
        return Joined({"'", value, "'"});
    if (quote == ReferenceQuote::DOUBLE)
        return Joined({"\"", value, "\""});
    return value;
}

std::string AttributesTrace(const ReferenceAttributes& attributes) {
    std::string line;
    for (const ReferenceAttribute& attribute : attributes) {
        line += Joined({"{", Escaped(attribute.prefix), "|", Escaped(attribute.name)});
        if (attribute.hasValue)
            line += Joined({"|", Escaped(attribute.beforeEquals), "=", Escaped(attribute.afterEquals), "|",
                            Quoted(Escaped(attribute.value), attribute.quote)});
        line += "}";
    }
    return line;
}

std::string AttributesCopy(const ReferenceAttributes& attributes) {
    std::string text;
    for (const ReferenceAttribute& attribute : attributes) {
        text += Joined({attribute.prefix, attribute.name});
        if (attribute.hasValue)
            text +=
                Joined({attribute.beforeEquals, "=", attribute.afterEquals, Quoted(attribute.value, attribute.quote)});
    }
    return text;
}

std::string_view OpenFlag(bool closed) {
    return closed ? "" : ", open";
}

}  // namespace

std::string ReferenceTrace(std::string_view kind, std::string_view text) {
    return Joined({kind, "(", Escaped(text), ")"});
}

std::string ReferenceTrace(const ReferenceStartTag& tag) {
    return Joined({tag.isShort ? "short(" : "start(", Escaped(tag.prefix), "|", Escaped(tag.name), "|",
                   AttributesTrace(tag.attributes), "|", Escaped(tag.suffix), ")"});
}

std::string ReferenceTrace(const ReferenceEndTag& tag) {
    return Joined({"end(", Escaped(tag.prefix), "|", Escaped(tag.name), "|", Escaped(tag.afterName), "|",
                   AttributesTrace(tag.attributes), "|", Escaped(tag.suffix), tag.slashBeforeClose ? ", slash" : "",
                   OpenFlag(tag.closed), ")"});
}

std::string ReferenceTrace(const ReferenceInstruction& instruction) {
    if (instruction.freeStyle)
        return ReferenceTrace("extern-text", instruction.text);
    return Joined({"extern(", Escaped(instruction.prefix), "|", Escaped(instruction.name), "|",
                   AttributesTrace(instruction.attributes), "|", Escaped(instruction.suffix),
                   instruction.slashBeforeClose ? ", slash" : "", ")"});
}

std::string ReferenceTrace(const ReferenceDeclaration& declaration) {
    std::string items;
    for (const ReferenceItem& item : declaration.items)
        items += Joined({"{", Escaped(item.prefix), "|", Quoted(Escaped(item.value), item.quote), "}"});
    return Joined({"entity(", Escaped(declaration.prefix), "|", Escaped(declaration.name), "|", items, "|",
                   Escaped(declaration.suffix), ")"});
}

std::string ReferenceTrace(const ReferenceComment& comment) {
    return Joined({"comment(", Escaped(comment.text), OpenFlag(comment.closed), ")"});
}

std::string ReferenceTrace(const ReferenceCDATA& section) {
    return Joined({"cdata(", Escaped(section.keyword), "|", Escaped(section.text), OpenFlag(section.closed), ")"});
}

std::string ReferenceTrace(const ReferenceConditional& section) {
    return Joined({"conditional(", Escaped(section.keyword), "|", Escaped(section.condition), "|",
                   Escaped(section.tail), section.bracketClosed ? "" : ", no-bracket", OpenFlag(section.tagClosed),
                   ")"});
}

std::string ReferenceCopy(const ReferenceStartTag& tag) {
    return Joined({"<", tag.prefix, tag.name, AttributesCopy(tag.attributes), tag.suffix, tag.isShort ? "/>" : ">"});
}

std::string ReferenceCopy(const ReferenceEndTag& tag) {
    std::string attributes;
    if (!tag.attributes.empty())
        attributes = Joined({AttributesCopy(tag.attributes), tag.suffix});
    return Joined({"</", tag.prefix, tag.name, tag.afterName, attributes, tag.slashBeforeClose ? "/" : "",
                   tag.closed ? ">" : ""});
}

std::string ReferenceCopy(const ReferenceInstruction& instruction) {
    if (instruction.freeStyle)
        return instruction.text;
    return Joined({"<?", instruction.prefix, instruction.name, AttributesCopy(instruction.attributes),
                   instruction.suffix, instruction.slashBeforeClose ? "/>" : "?>"});
}

std::string ReferenceCopy(const ReferenceDeclaration& declaration) {
    std::string items;
    for (const ReferenceItem& item : declaration.items)
        items += Joined({item.prefix, Quoted(item.value, item.quote)});
    return Joined({"<!", declaration.prefix, declaration.name, items, declaration.suffix, ">"});
}

std::string ReferenceCopy(const ReferenceComment& comment) {
    return Joined({"<!--", comment.text, comment.closed ? "-->" : ""});
}

std::string ReferenceCopy(const ReferenceCDATA& section) {
    return Joined({"<![", section.keyword, section.text, section.closed ? "]]>" : ""});
}

std::string ReferenceCopy(const ReferenceConditional& section) {
    return Joined({"<![", section.keyword, section.condition, section.bracketClosed ? "]" : "", section.tail,
                   section.tagClosed ? ">" : ""});
}

}  // namespace Kestra::Test
