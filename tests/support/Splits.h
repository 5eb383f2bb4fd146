#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Characters.h"

namespace Kestra::Test {

/// Where an input is cut: indices in ascending order, each the first character of another piece.
/// Equal ones make an empty piece.
using Cuts = std::vector<std::size_t>;

/// The longest input, in characters, that `ForEverySplit` cuts at every pair of places as well.
inline constexpr std::size_t MAX_LENGTH_FOR_PAIRS = 64;

/// Calls `run` for an input of `length` characters: uncut, with each single cut, with each pair of
/// cuts (up to MAX_LENGTH_FOR_PAIRS characters), and cut into single characters. A failure names
/// the cuts, and the first split with a failure is the last one tried.
void ForEverySplit(std::size_t length, const std::function<void(const Cuts&)>& run);
void ForEverySplit(std::string_view input, const std::function<void(const Cuts&)>& run);
void ForEverySplit(WideStringView input, const std::function<void(const Cuts&)>& run);

/// Calls `run` with 0, 1 and so on up to `count` - 1, and stops after the first call that brings a
/// failure.
void ForEachUntilFailure(std::size_t count, const std::function<void(std::size_t)>& run);

/// The cuts of an input of `length` characters into pieces of `size` characters.
Cuts CutsEvery(std::size_t size, std::size_t length);

/// The cuts, each `factor` times as far: from characters to bytes.
Cuts Scaled(const Cuts& cuts, std::size_t factor);

/// Begin and end of each piece; one more than there are cuts.
std::vector<std::pair<std::size_t, std::size_t>> PiecesOf(const Cuts& cuts, std::size_t length);

std::string Describe(const Cuts& cuts);

}  // namespace Kestra::Test
