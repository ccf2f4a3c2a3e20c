#pragma once
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace bv {

// The words both sentence grammars read as file extensions ("jpgs" gives jpg and jpeg),
// and the words the editor never marks as not understood. Built once, on first use.

// The extensions a word stands for, or nothing when the word is no key of the vocabulary.
[[nodiscard]] const std::vector<std::string>* extensionsForWord(std::string_view lowercaseWord);
// The 36 keys of the vocabulary.
[[nodiscard]] const std::vector<std::string>& extensionVocabularyKeys();
// The keys and the grammar's own words, 158 in all.
[[nodiscard]] const std::unordered_set<std::string>& knownSortWords();

} // namespace bv
