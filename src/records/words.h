#pragma once

#include <QString>

#include <algorithm>

/// The value of an enumeration whose word in a table that is; `words` has them in the enumeration's order. A word that
/// isn't among them is the first value's.
template <class Enum, class Words>
Enum FromWord(const Words& words, const QString& word)
{
    const auto found = std::ranges::find(words, word);
    return found == std::ranges::end(words) ? Enum{} : static_cast<Enum>(found - std::ranges::begin(words));
}
