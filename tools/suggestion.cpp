#include "suggestion.h"

#include <algorithm>
#include <cstddef>

namespace
{

/// Edits that lead from one word to the other: insertions, deletions, replacements (Levenshtein, 1966) and
/// exchanges of neighbours.
std::size_t distanceOf(const std::string& a, const std::string& b)
{
    std::vector<std::vector<std::size_t>> edits(a.size() + 1, std::vector<std::size_t>(b.size() + 1, 0));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                edits[i][j] = i + j;
                continue;
            }
            const std::size_t replaced = edits[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            edits[i][j] = std::min({replaced, edits[i - 1][j] + 1, edits[i][j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                edits[i][j] = std::min(edits[i][j], edits[i - 2][j - 2] + 1);
        }
    }
    return edits[a.size()][b.size()];
}

constexpr std::size_t kLongestWord = 64;  // no option or command is longer

}  // namespace

std::string nearestWord(const std::string& text, const std::vector<std::string>& words)
{
    if (text.size() > kLongestWord) return "";
    std::string nearest;
    std::size_t least = std::max<std::size_t>(2, text.size() / 3) + 1;
    for (const std::string& word : words) {
        const std::size_t distance = distanceOf(text, word);
        if (distance >= least) continue;
        least = distance;
        nearest = word;
    }
    return nearest;
}
