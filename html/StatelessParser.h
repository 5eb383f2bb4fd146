#pragma once

/// @file
/// Everything of the stateless parser: `StatelessHTMLParser`, its observer and its result codes.

#include "../platform/MemoryInputStream.h"
#include "../platform/VirtualFileSystem.h"
#include "stateless/StatelessHTMLObserver.h"
#include "stateless/StatelessHTMLParser.h"
#include "stateless/StatelessResults.h"
