// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tristop {

/// Nodes along one axis of the art style's colour table, 16 levels apart, and in all.
constexpr size_t kArtAxisNodes = 17;
constexpr size_t kArtNodes = kArtAxisNodes * kArtAxisNodes * kArtAxisNodes;

/// Output blue, green and red (planes 0, 1, 2) of every node.
using ArtTable = std::array<std::array<uint8_t, kArtNodes>, 3>;

/// Index of the node of input red, green and blue, each 0 to 16.
constexpr size_t artNode(int red, int green, int blue) {
    return static_cast<size_t>(289 * red + 17 * green + blue);
}

/**
 * The colour table of the art style, a cross-processed look: deep blue-green shadows, warm highlights,
 * strong contrast in the mid-tones. Built on first use, by any thread.
 *
 * The look is given by its eight corner colours and by what becomes of the 17 greys. Each output channel
 * bends the three input axes by one curve of its own and then mixes the eight corners trilinearly:
 *
 *     out(R, G, B) = sum over corners of corner x w(h[R]) x w(h[G]) x w(h[B]),  w(h) = h or 1 - h
 *
 * The curve h is the one that makes the greys come out as given: on the grey axis the mix is a rising cubic
 * of h alone, so each h[k] is that cubic's inverse at the given grey, found by bisection in integers. Hence
 * corners and greys are exact, and between them the table is as smooth as the grey curves are and rises or
 * falls steadily along every axis.
 */
const ArtTable &artTable();

} // namespace tristop
