#include "Suggestion.h"

#include <algorithm>
#include <numeric>

namespace
{

/// Letters to insert, delete or replace to make one word of the other.
size_t Distance(const std::string& from, const std::string& to)
{
    std::vector<size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), size_t{ 0 });
    for (size_t i = 0; i < from.size(); ++i)
    {
        size_t nDiagonal = row[0];
        row[0] = i + 1;
        for (size_t j = 0; j < to.size(); ++j)
        {
            const size_t nReplaced = nDiagonal + (from[i] == to[j] ? 0 : 1);
            nDiagonal = row[j + 1];
            row[j + 1] = std::min({ nReplaced, row[j] + 1, row[j + 1] + 1 });
        }
    }
    return row.back();
}

} // namespace

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
