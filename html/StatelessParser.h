#pragma once

/// @file
/// Everything of the stateless parser: `StatelessHTMLParser`, its observer and its result codes.

#include "html/stateless/StatelessHTMLObserver.h"
#include "html/stateless/StatelessHTMLParser.h"
#include "html/stateless/StatelessResults.h"
#include "platform/MemoryInputStream.h"
#include "platform/VirtualFileSystem.h"
