#pragma once

#include "html/stateless/Scan.h"

/// @file
/// The limits of tokens, and the memory retained between them. Not installed.

namespace Kestra::HTML::Stateless {

/// Derives the bounds of a token from the limits that the host has set.
void ApplyLimits(Data& data);

/// The unfinished token exceeded a limit: the next piece goes on at its first byte.
void GoBackToToken(Data& data);

/// Frees the buffers if too much memory is retained. Does nothing inside a construct, whose text
/// may be in any of them.
void LimitBuffers(Data& data, bool isNewDocument);

}  // namespace Kestra::HTML::Stateless
