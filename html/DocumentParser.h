#pragma once

/// @file
/// Everything of the document parser: `GenericParser`, the observer with its records, the rewriter,
/// the serializer, character references and the recognizers.

#include "../platform/MemoryInputStream.h"
#include "../platform/VirtualFileSystem.h"
#include "framework/ParserObserver.h"
#include "framework/ResultCodes.h"
#include "output/AttributesNormalizer.h"
#include "output/ParserObserverOutput.h"
#include "output/ParserSelfCheck.h"
#include "output/StringOutputStreamParserObserverOutputHandler.h"
#include "parser/GenericParser.h"
#include "references/CharacterReferences.h"
#include "rewrite/Rewriter.h"
#include "tags/EndTagSimpleParser.h"
#include "tags/EntityTagSimpleParser.h"
#include "tags/ExternTagSimpleParser.h"
#include "tags/GenericTagSimpleParser.h"
#include "tags/StartTagSimpleParser.h"
#include "text/CCommentSimpleParser.h"
#include "text/CDATATagSimpleParser.h"
#include "text/CPPCommentSimpleParser.h"
#include "text/CommentTagSimpleParser.h"
#include "text/ConditionalTagSimpleParser.h"
#include "text/DQuoteStringSimpleParser.h"
#include "text/JSRegExSimpleParser.h"
#include "text/JunkSimpleParser.h"
#include "text/SQuoteStringSimpleParser.h"
#include "text/TextSimpleParser.h"
