#pragma once

#include <string>
#include <string_view>
#include <type_traits>

#include "html/framework/Attribute.h"
#include "html/framework/EntityToken.h"
#include "html/parser/RecordCalls.h"
#include "html/tags/AttributeSimpleParser.h"
#include "html/tags/EndTagSimpleParser.h"
#include "html/tags/EntityTagSimpleParser.h"
#include "html/tags/ExternTagFreeStyleSimpleParser.h"
#include "html/tags/ExternTagSimpleParser.h"
#include "html/tags/GenericTagSimpleParser.h"
#include "html/tags/IdentifierSimpleParser.h"
#include "html/tags/StartTagSimpleParser.h"
#include "html/tags/TokenSimpleParser.h"
#include "html/text/CCommentSimpleParser.h"
#include "html/text/CDATATagSimpleParser.h"
#include "html/text/CPPCommentSimpleParser.h"
#include "html/text/CommentTagSimpleParser.h"
#include "html/text/ConditionalTagSimpleParser.h"
#include "html/text/DQuoteStringSimpleParser.h"
#include "html/text/Escape2022SimpleParser.h"
#include "html/text/JSRegExSimpleParser.h"
#include "html/text/JunkSimpleParser.h"
#include "html/text/SQuoteStringSimpleParser.h"
#include "html/text/TextSimpleParser.h"
#include "html/text/WhiteSpaceSimpleParser.h"
#include "tools/trace/TokenTrace.h"

/// @file
/// What a recognizer gathered, as one line in the escapes of the trace language. States, options
/// and other means of a machine are left out.
///
///     text(t)                                  white space, names, strings, escape runs, junk, free-style instructions
///     text(t) next(Recognizer)                 text that has handed over
///     text(t) next(Recognizer) keyword(k)      script comments, which may hand over as well
///     {prefix|value}                           a value, in its quotes
///     {prefix|name|beforeEquals}               an attribute without a value
///     {prefix|name|beforeEquals=afterEquals|value}
///     next(Recognizer)  next(Recognizer) keyword(k)
///     start(prefix|name|attributes|suffix)     ", short", ", open"
///     end(prefix|name|afterName|attributes|suffix)   ", slash", ", open"
///     comment(t)  cdata(keyword|text)          ", open"
///     conditional(keyword|condition|tail)      ", no-bracket", ", open"
///     entity(prefix|name|tokens|suffix)
///     extern(prefix|name|attributes|suffix)    ", slash"
///     extern(prefix|name||) free(t)            an instruction that was read as raw text

namespace Kestra::Test {

template <typename Data>
std::string DumpText(const Data& data) {
    return "text(" + Trace::Escape(data.text) + ")";
}

/// A hand-over, and what it leaves.
template <typename Name, typename S>
std::string DumpHandOver(const Name& next, const S& keyword) {
    return (next.empty() ? "" : " next(" + Trace::Escape(next) + ")") +
           (keyword.empty() ? "" : " keyword(" + Trace::Escape(keyword) + ")");
}

/// Of a recognizer whose record has a text alone.
template <template <typename, typename> class Data, typename C, typename S>
std::string Dump(const Data<C, S>& data) {
    return DumpText(data);
}

template <typename C, typename S>
std::string Dump(const HTML::TextSimpleParserData<C, S>& data) {
    return DumpText(data) + DumpHandOver(data.nextParserName, std::string());
}

template <typename C, typename S>
std::string Dump(const HTML::CCommentSimpleParserData<C, S>& data) {
    return DumpText(data) + DumpHandOver(data.nextParserName, data.keyword);
}

template <typename C, typename S>
std::string Dump(const HTML::CPPCommentSimpleParserData<C, S>& data) {
    return DumpText(data) + DumpHandOver(data.nextParserName, data.keyword);
}

template <typename C, typename S>
std::string Dump(const HTML::GenericTagSimpleParserData<C, S>& data) {
    return "next(" + Trace::Escape(data.nextParser) + ")" + DumpHandOver(WideString(), data.keyword);
}

template <typename C, typename S>
std::string Dump(const HTML::TokenSimpleParserData<C, S>& data) {
    HTML::EntityToken<C, S> token;
    HTML::ForEachField<HTML::EntityToken>([&](const auto& field) { field.In(token) = field.In(data); });
    return Trace::Format(token);
}

template <typename C, typename S>
std::string Dump(const HTML::AttributeSimpleParserData<C, S>& data) {
    if (data.hasValue == 0)
        return "{" + Trace::Escape(data.prefix) + "|" + Trace::Escape(data.name) + "|" +
               Trace::Escape(data.beforeEquals) + "}";
    HTML::Attribute<C, S> attribute;
    HTML::ForEachField<HTML::Attribute>([&](const auto& field) {
        field.In(attribute) = static_cast<std::remove_cvref_t<decltype(field.In(attribute))>>(field.In(data));
    });
    return Trace::Format(attribute);
}

template <typename C, typename S>
std::string Dump(const HTML::StartTagSimpleParserData<C, S>& data) {
    const HTML::StartTagData<C, S> record = HTML::MakeRecord<HTML::StartTagData>(data);
    std::string line = Trace::Format(record);
    if (data.selfClosing)
        line.insert(line.size() - (data.closed ? 1 : std::string_view(", open)").size()), ", short");
    return line;
}

template <typename C, typename S>
std::string Dump(const HTML::EndTagSimpleParserData<C, S>& data) {
    return Trace::Format(HTML::MakeRecord<HTML::EndTagData>(data));
}

template <typename C, typename S>
std::string Dump(const HTML::CommentTagSimpleParserData<C, S>& data) {
    return Trace::Format(HTML::MakeRecord<HTML::CommentTagData>(data));
}

template <typename C, typename S>
std::string Dump(const HTML::CDATATagSimpleParserData<C, S>& data) {
    return Trace::Format(HTML::MakeRecord<HTML::CDATATagData>(data));
}

template <typename C, typename S>
std::string Dump(const HTML::ConditionalTagSimpleParserData<C, S>& data) {
    return Trace::Format(HTML::MakeRecord<HTML::ConditionalTagData>(data));
}

template <typename C, typename S>
std::string Dump(const HTML::EntityTagSimpleParserData<C, S>& data) {
    return Trace::Format(HTML::MakeRecord<HTML::EntityTagData>(data));
}

template <typename C, typename S>
std::string Dump(const HTML::ExternTagSimpleParserData<C, S>& data) {
    HTML::ExternTagData<C, S> record = HTML::MakeRecord<HTML::ExternTagData>(data);
    record.freeStyle = false;
    const std::string line = Trace::Format(record);
    if (data.freeStyle)
        return line + " free(" + Trace::Escape(data.text) + ")";
    return data.text.empty() ? line : line + " " + DumpText(data);
}

}  // namespace Kestra::Test
