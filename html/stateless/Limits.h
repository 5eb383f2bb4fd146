#pragma once

#include "html/stateless/Scan.h"

/// @file
/// What a token may take, and what is retained between tokens. Not installed.

namespace Kestra::HTML::Stateless {

/// Derives the bounds of a token from the limits that the host has set.
void ApplyLimits(Data& data);

/// The token under way went over a limit: the next piece goes on at its first byte.
void GoBackToToken(Data& data);

/// Frees the buffers if too much memory is retained. Nothing happens while a construct is under
/// way: its text may lie in any of them.
void LimitBuffers(Data& data, bool isNewDocument);

}  // namespace Kestra::HTML::Stateless
