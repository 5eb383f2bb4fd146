#pragma once

/// @file
/// Everything of the document parser: `GenericParser`, the observer with its records, the rewriter, the serializer, character references
/// and the recognizers.

#include "html/framework/ParserObserver.h"
#include "html/framework/ResultCodes.h"
#include "html/output/AttributesNormalizer.h"
#include "html/output/ParserObserverOutput.h"
#include "html/output/ParserSelfCheck.h"
#include "html/output/StringOutputStreamParserObserverOutputHandler.h"
#include "html/parser/GenericParser.h"
#include "html/references/CharacterReferences.h"
#include "html/rewrite/Rewriter.h"
#include "html/tags/EndTagSimpleParser.h"
#include "html/tags/EntityTagSimpleParser.h"
#include "html/tags/ExternTagSimpleParser.h"
#include "html/tags/GenericTagSimpleParser.h"
#include "html/tags/StartTagSimpleParser.h"
#include "html/text/CCommentSimpleParser.h"
#include "html/text/CDATATagSimpleParser.h"
#include "html/text/CPPCommentSimpleParser.h"
#include "html/text/CommentTagSimpleParser.h"
#include "html/text/ConditionalTagSimpleParser.h"
#include "html/text/DQuoteStringSimpleParser.h"
#include "html/text/JSRegExSimpleParser.h"
#include "html/text/JunkSimpleParser.h"
#include "html/text/SQuoteStringSimpleParser.h"
#include "html/text/TextSimpleParser.h"
#include "platform/MemoryInputStream.h"
#include "platform/VirtualFileSystem.h"
