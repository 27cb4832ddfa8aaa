#include "base/nearest.h"

#include <algorithm>

namespace stpswitch {
namespace {

// The optimal string alignment distance.
size_t distance_between(std::string_view one, std::string_view other) {
  using Row = std::vector<size_t>;
  std::vector<Row> distances(one.size() + 1, Row(other.size() + 1));
  for (size_t i = 0; i <= one.size(); ++i) {
    for (size_t j = 0; j <= other.size(); ++j) {
      size_t &here = distances[i][j];
      if (i == 0 || j == 0) {
        here = i + j;
        continue;
      }
      const size_t replaced = distances[i - 1][j - 1] + (one[i - 1] == other[j - 1] ? 0 : 1);
      here = std::min({distances[i - 1][j] + 1, distances[i][j - 1] + 1, replaced});
      if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1]) {
        here = std::min(here, distances[i - 2][j - 2] + 1);
      }
    }
  }
  return distances.back().back();
}

}  // namespace

std::string suggestion(std::string_view word, const std::vector<std::string> &known) {
  constexpr size_t kLettersForEachMistake = 3;
  // What is longer is no misspelt word, and costs its length times that of all others.
  constexpr size_t kLongestWord = 200;
  if (word.size() > kLongestWord) {
    return "";
  }
  const std::string *nearest = nullptr;
  const size_t letters = word.size() - (word.rfind('.') + 1);
  size_t least = std::max<size_t>(1, letters / kLettersForEachMistake) + 1;
  for (const std::string &candidate : known) {
    const size_t distance = distance_between(word, candidate);
    if (distance != 0 && distance < least) {
      least = distance;
      nearest = &candidate;
    }
  }
  return nearest != nullptr ? "; did you mean '" + *nearest + "'?" : "";
}

}  // namespace stpswitch
