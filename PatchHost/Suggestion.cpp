#include "PatchHost/Suggestion.h"

#include <algorithm>
#include <numeric>

namespace
{

/// Letters to insert, delete, replace or exchange with the next one to make one word of the other.
size_t Distance(const std::string& from, const std::string& to)
{
    std::vector<size_t> before; // the row of two letters ago
    std::vector<size_t> last(to.size() + 1);
    std::iota(last.begin(), last.end(), size_t{ 0 });
    for (size_t i = 0; i < from.size(); ++i)
    {
        std::vector<size_t> row = { i + 1 };
        for (size_t j = 0; j < to.size(); ++j)
        {
            const size_t nReplaced = last[j] + (from[i] == to[j] ? 0 : 1);
            row.push_back(std::min({ nReplaced, row[j] + 1, last[j + 1] + 1 }));
            if (i > 0 && j > 0 && from[i] == to[j - 1] && from[i - 1] == to[j])
                row.back() = std::min(row.back(), before[j - 1] + 1);
        }
        before = std::move(last);
        last = std::move(row);
    }
    return last.back();
}

/// The nearest known word; empty when none is near.
std::string Nearest(const std::string& word, const std::vector<std::string>& known)
{
    std::string nearest;
    size_t nBest = word.size() / 3 + 1; // no more than a third of the letters may be wrong
    for (const std::string& candidate : known)
    {
        const size_t nDistance = Distance(word, candidate);
        if (nDistance >= nBest)
            continue;
        nBest = nDistance;
        nearest = candidate;
    }
    return nearest;
}

} // namespace

std::string Suggestion(const std::string& word, const std::vector<std::string>& known)
{
    const std::string nearest = Nearest(word, known);
    return nearest.empty() ? nearest : "; did you mean '" + nearest + "'?";
}
