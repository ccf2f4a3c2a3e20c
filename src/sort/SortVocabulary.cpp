#include "sort/SortVocabulary.h"

#include <unordered_map>
#include <utility>

namespace bv {
namespace {

using Vocabulary = std::vector<std::pair<std::string, std::vector<std::string>>>;

const Vocabulary& vocabulary() {
    static const Vocabulary table = [] {
        const std::pair<std::vector<std::string>, std::vector<std::string>> groups[] = {
            {{"jpg", "jpgs", "jpeg", "jpegs"}, {"jpg", "jpeg"}},
            {{"png", "pngs"}, {"png"}},
            {{"gif", "gifs"}, {"gif"}},
            {{"heic", "heics"}, {"heic"}},
            {{"webp"}, {"webp"}},
            {{"tif", "tiff", "tiffs"}, {"tif", "tiff"}},
            {{"dmg", "dmgs"}, {"dmg"}},
            {{"iso", "isos"}, {"iso"}},
            {{"pkg", "pkgs"}, {"pkg"}},
            {{"zip", "zips"}, {"zip"}},
            {{"pdf", "pdfs"}, {"pdf"}},
            {{"txt"}, {"txt"}},
            {{"csv", "csvs"}, {"csv"}},
            {{"mp4"}, {"mp4"}},
            {{"mov", "movs"}, {"mov"}},
            {{"mp3"}, {"mp3"}},
            {{"json"}, {"json"}},
            {{"gz"}, {"gz"}},
            {{"tar"}, {"tar"}},
            {{"rar"}, {"rar"}},
            {{"7z"}, {"7z"}},
        };
        Vocabulary out;
        for (const auto& [keys, extensions] : groups)
            for (const auto& key : keys) out.emplace_back(key, extensions);
        return out;
    }();
    return table;
}

const std::unordered_map<std::string_view, const std::vector<std::string>*>& index() {
    static const auto map = [] {
        std::unordered_map<std::string_view, const std::vector<std::string>*> m;
        for (const auto& [key, extensions] : vocabulary()) m.emplace(key, &extensions);
        return m;
    }();
    return map;
}

} // namespace

const std::vector<std::string>* extensionsForWord(std::string_view word) {
    const auto& m = index();
    auto it = m.find(word);
    return it == m.end() ? nullptr : it->second;
}

const std::vector<std::string>& extensionVocabularyKeys() {
    static const std::vector<std::string> keys = [] {
        std::vector<std::string> out;
        for (const auto& entry : vocabulary()) out.push_back(entry.first);
        return out;
    }();
    return keys;
}

const std::unordered_set<std::string>& knownSortWords() {
    static const std::unordered_set<std::string> words = [] {
        std::unordered_set<std::string> set(extensionVocabularyKeys().begin(), extensionVocabularyKeys().end());
        for (const char* w :
             {"a",          "an",         "the",      "files",     "file",     "with",      "in",       "into",
              "on",         "of",         "and",      "or",        "this",     "that",      "these",    "those",
              "only",       "should",     "be",       "can",       "for",      "to",        "from",     "are",
              "is",         "whose",      "names",    "name",      "when",     "i",         "it",       "my",
              "your",       "them",       "matching", "leave",     "original", "originals", "folder",   "folders",
              "put",        "place",      "placed",   "move",      "moved",    "moving",    "keep",     "delete",
              "deleted",    "deletes",    "trash",    "trashed",   "remove",   "removed",   "zip",      "archive",
              "compress",   "rename",     "after",    "older",     "than",     "more",      "least",    "at",
              "over",       "days",       "day",      "weeks",     "week",     "bigger",    "larger",   "mb",
              "gb",         "kb",         "prefix",   "suffix",    "starts",   "starting",  "start",    "begins",
              "beginning",  "begin",      "ends",     "ending",    "end",      "contains",  "containing",
              "downloaded", "extension",  "kind",     "images",    "image",    "pictures",  "picture",  "photos",
              "photo",      "screenshots", "screenshot", "screen", "shots",    "shot",      "pdfs",     "pdf",
              "videos",     "video",      "movies",   "movie",     "archives", "installers", "installer", "desktop",
              "downloads",  "hourly",     "daily",    "weekly",    "manual",   "every",     "hour",     "old",
              "not",        "disk",       "disks"})
            set.insert(w);
        return set;
    }();
    return words;
}

} // namespace bv
