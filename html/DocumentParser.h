#pragma once

/// @file
/// Everything of the document parser: `GenericParser`, the observer with its records, the serializer, character references
/// and the recognizers.

#include "html/framework/ParserObserver.h"
#include "html/framework/ResultCodes.h"
#include "html/output/AttributesNormalizer.h"
#include "html/output/ParserObserverOutput.h"
#include "html/output/StringOutputStreamParserObserverOutputHandler.h"
#include "html/parser/GenericParser.h"
#include "html/references/CharacterReferences.h"
#include "platform/MemoryInputStream.h"
#include "platform/VirtualFileSystem.h"
