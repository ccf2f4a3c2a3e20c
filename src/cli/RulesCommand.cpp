// `brimvale rules check [--folder] [--json] SENTENCE...`: what the rule editor would show for
// each sentence, without opening the window or touching any file. Sort sentences print the
// rule as "rules-v2.json" would store it, its chips, the words that weren't used (with their
// places) and the message; with --folder, the reading of an Autopilot sentence or its error.
#include <cstdio>

#include "autopilot/FolderRuleParser.h"
#include "cli/CliCommand.h"
#include "foundation/Json.h"
#include "sort/SortRuleParser.h"

namespace bv::cli {
namespace {

void printSortLine(const LineReview& line) {
    std::printf("%s\n", line.text.c_str());
    const PhraseReview& r = line.review;
    if (r.parsed) {
        std::printf("  rule: %s\n", r.parsed->interpretation.c_str());
        for (const auto& chip : r.parsed->chips) std::printf("  chip: %s (%s)\n", chip.text.c_str(), chip.id.c_str());
        if (r.parsed->needsFolder) std::printf("  needs a folder: choose where the files go\n");
        if (auto problem = r.parsed->rule.validationMessage()) std::printf("  before saving: %s\n", problem->c_str());
    }
    for (const auto& word : r.unrecognized)
        std::printf("  not used: \"%s\" at %d\n", word.text.c_str(), static_cast<int>(word.start));
    if (r.message) std::printf("  message: %s\n", r.message->c_str());
}

void printFolderLine(const std::string& sentence, const std::optional<ParsedFolderRule>& parsed) {
    std::printf("%s\n", sentence.c_str());
    if (!parsed) {
        std::printf("  message: %s\n", kFolderRuleUnrecognized);
        return;
    }
    std::printf("  rule: %s\n", parsed->interpretation.c_str());
    std::printf("  scope: %s\n", folderScopeTitle(parsed->suggestedScope));
}

} // namespace

int runRulesPreviewOrList(const std::string& action, const std::vector<std::string>& options);

int runRules(const std::vector<std::string>& args) {
    const CliCommand& command = *findCommand("rules");
    if (!args.empty() && (args.front() == "preview" || args.front() == "list"))
        return runRulesPreviewOrList(args.front(), {args.begin() + 1, args.end()});
    if (args.empty() || args.front() != "check") return usageError(command, args.empty() ? "" : "unknown action " + args.front());
    bool folder = false, json = false, optionsDone = false;
    std::vector<std::string> sentences;
    for (size_t i = 1; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (!optionsDone && a == "--") optionsDone = true;
        else if (!optionsDone && a == "--folder") folder = true;
        else if (!optionsDone && a == "--json") json = true;
        else if (!optionsDone && a.size() > 2 && a.rfind("--", 0) == 0) return usageError(command, "unknown option " + a);
        else sentences.push_back(a);
    }
    if (sentences.empty()) return usageError(command, "give at least one sentence");

    const TimePoint now = Clock::now();
    Json out = Json::array();
    bool allRead = true;
    int index = 0;
    for (const auto& sentence : sentences) {
        if (folder) {
            const auto parsed = FolderRuleParser::parse(sentence);
            allRead = allRead && parsed.has_value();
            if (json) {
                Json j = Json::object();
                j["text"] = sentence;
                if (parsed) j["rule"] = parsed->toJson();
                else j["message"] = kFolderRuleUnrecognized;
                out.push_back(std::move(j));
            } else {
                printFolderLine(sentence, parsed);
            }
            continue;
        }
        // Each argument is one line of the editor; a sentence with new lines is several.
        for (auto line : SortRuleParser::reviewLines(sentence, now)) {
            line.index = index++;
            allRead = allRead && line.review.parsed.has_value();
            if (json) out.push_back(toJson(line));
            else printSortLine(line);
        }
    }
    if (json) std::fputs(encodeJson(out).c_str(), stdout);
    std::fflush(stdout);
    // 1 tells a script that some sentence is not a rule yet.
    return allRead ? 0 : 1;
}

} // namespace bv::cli
