#include "Common/Wildcard.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

enum class PieceKind { kLiteral, kAnyRun, kAtMostOne };

struct Piece {
  PieceKind kind;
  char literal;
};

// How many wildcards stand inside each other in the cheapest way to fit the rest of a text; beyond
// the limit the match is given up, so that every larger number means the same.
using Cost = uint8_t;
constexpr Cost kDeepest = 16;
constexpr Cost kNoMatch = kDeepest + 1;

Cost Deeper(Cost cost) { return std::min<Cost>(kNoMatch, static_cast<Cost>(cost + 1)); }

std::vector<Piece> SplitPattern(std::string_view pattern) {
  std::vector<Piece> pieces;
  for (size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '\\' && i + 1 < pattern.size()) {
      pieces.push_back({PieceKind::kLiteral, pattern[++i]});
    } else if (pattern[i] == '*') {
      const bool repeated = !pieces.empty() && pieces.back().kind == PieceKind::kAnyRun;
      if (!repeated) pieces.push_back({PieceKind::kAnyRun, 0});
    } else if (pattern[i] == '?') {
      pieces.push_back({PieceKind::kAtMostOne, 0});
    } else {
      pieces.push_back({PieceKind::kLiteral, pattern[i]});
    }
  }
  return pieces;
}

// Turns the costs of fitting "the rest of the pattern" at every place of the text into those of
// fitting `piece` and then the rest. A wildcard at the end of the text is passed over without going
// deeper.
void PutInFront(const Piece& piece, std::string_view text, std::vector<Cost>* costs) {
  std::vector<Cost>& cost = *costs;
  const size_t end = text.size();
  switch (piece.kind) {
    case PieceKind::kLiteral:
      for (size_t i = 0; i < end; ++i) cost[i] = text[i] == piece.literal ? cost[i + 1] : kNoMatch;
      cost[end] = kNoMatch;
      return;
    case PieceKind::kAtMostOne:
      for (size_t i = 0; i < end; ++i) cost[i] = Deeper(std::min(cost[i], cost[i + 1]));
      return;
    case PieceKind::kAnyRun: {
      Cost deeper_from_here = kNoMatch;
      for (size_t i = end; i-- > 0;) {
        deeper_from_here = std::min(deeper_from_here, Deeper(cost[i]));
        cost[i] = std::min(deeper_from_here, cost[end]);
      }
      return;
    }
  }
}

}  // namespace

// Worked from the end of the pattern to its front, one pass over the text per piece: the time is
// the product of the two lengths whatever the pattern, where plain recursion would take the power
// of the number of asterisks.
bool MatchPattern(std::string_view text, std::string_view pattern) {
  const std::vector<Piece> pieces = SplitPattern(pattern);
  std::vector<Cost> costs(text.size() + 1, kNoMatch);
  costs[text.size()] = 0;
  for (auto piece = pieces.rbegin(); piece != pieces.rend(); ++piece) {
    PutInFront(*piece, text, &costs);
  }
  return costs[0] <= kDeepest;
}
