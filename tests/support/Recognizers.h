#pragma once

#include <gtest/gtest.h>

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

/// @file
/// All recognizers, for tests of what is true of each.

namespace Kestra::Test {

/// Calls `check.template operator()<Parser>(name)` for each recognizer of a flavour, with its name
/// without "SimpleParser". Failures show the name.
template <typename Flavour, typename Check>
void ForEachRecognizer(Check check) {
#define CHECK_RECOGNIZER(NAME)                                                                                \
    {                                                                                                         \
        SCOPED_TRACE(#NAME);                                                                                  \
        check.template operator()<HTML::NAME##SimpleParser<typename Flavour::C, typename Flavour::S>>(#NAME); \
    }
    CHECK_RECOGNIZER(Text)
    CHECK_RECOGNIZER(WhiteSpace)
    CHECK_RECOGNIZER(SQuoteString)
    CHECK_RECOGNIZER(DQuoteString)
    CHECK_RECOGNIZER(JSRegEx)
    CHECK_RECOGNIZER(Escape2022)
    CHECK_RECOGNIZER(Junk)
    CHECK_RECOGNIZER(Identifier)
    CHECK_RECOGNIZER(Token)
    CHECK_RECOGNIZER(Attribute)
    CHECK_RECOGNIZER(GenericTag)
    CHECK_RECOGNIZER(StartTag)
    CHECK_RECOGNIZER(EndTag)
    CHECK_RECOGNIZER(CommentTag)
    CHECK_RECOGNIZER(CDATATag)
    CHECK_RECOGNIZER(ConditionalTag)
    CHECK_RECOGNIZER(CComment)
    CHECK_RECOGNIZER(CPPComment)
    CHECK_RECOGNIZER(EntityTag)
    CHECK_RECOGNIZER(ExternTag)
    CHECK_RECOGNIZER(ExternTagFreeStyle)
#undef CHECK_RECOGNIZER
}

}  // namespace Kestra::Test
