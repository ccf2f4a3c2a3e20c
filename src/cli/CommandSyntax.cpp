#include "cli/CommandSyntax.h"

#include <algorithm>
#include <sstream>

namespace bv::cli {
namespace {

std::vector<std::string> split(const std::string& text, const std::string& separator) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (std::size_t at; (at = text.find(separator, start)) != std::string::npos; start = at + separator.size())
        parts.push_back(text.substr(start, at - start));
    parts.push_back(text.substr(start));
    return parts;
}

bool isActionWord(const std::string& word) {
    return !word.empty() && word.front() != '-' &&
           std::all_of(word.begin(), word.end(), [](char c) { return (c >= 'a' && c <= 'z') || c == '-' || c == '|'; });
}

bool isOperand(const std::string& word) {
    return !word.empty() && std::all_of(word.begin(), word.end(), [](char c) { return (c >= 'A' && c <= 'Z') || c == '_'; });
}

template <typename T, typename Key>
void addOnce(std::vector<T>& list, T item, Key key) {
    if (std::none_of(list.begin(), list.end(), [&](const T& e) { return key(e) == key(item); })) list.push_back(std::move(item));
}

} // namespace

CommandSyntax CommandSyntax::parse(const std::string& commandName, const std::string& usage) {
    CommandSyntax syntax;
    const auto self = [](const auto& x) { return x; };
    for (const auto& form : split(usage, " | ")) {
        std::istringstream words(form);
        std::vector<std::string> tokens;
        for (std::string w; words >> w;) tokens.push_back(w);
        std::size_t i = 0;
        if (i < tokens.size() && tokens[i] == commandName) ++i;
        if (i < tokens.size() && isActionWord(tokens[i])) {
            for (auto& action : split(tokens[i], "|")) addOnce(syntax.actions, action, self);
            ++i;
        }
        for (; i < tokens.size(); ++i) {
            std::string word = tokens[i];
            const bool opensGroup = word.front() == '[';
            word.erase(std::remove_if(word.begin(), word.end(), [](char c) { return c == '[' || c == ']'; }), word.end());
            const bool closesGroup = tokens[i].back() == ']';
            if (word.rfind("--", 0) == 0) {
                CommandOption option{word, {}, {}};
                // "[--min BYTES]": the value shares the option's brackets.
                if (opensGroup && !closesGroup && i + 1 < tokens.size()) {
                    std::string value = tokens[++i];
                    if (!value.empty() && value.back() == ']') value.pop_back();
                    if (isOperand(value)) option.valueName = value;
                    else {
                        option.valueName = "WORD";
                        option.choices = split(value, "|");
                    }
                }
                addOnce(syntax.options, std::move(option), [](const CommandOption& o) { return o.name; });
                continue;
            }
            if (word.size() > 3 && word.compare(word.size() - 3, 3, "...") == 0) word.resize(word.size() - 3);
            if (word == "PATH" || word == "PARENT" || word == "FOLDER" || word == "DIR") syntax.takesFolders = true;
        }
    }
    return syntax;
}

} // namespace bv::cli
