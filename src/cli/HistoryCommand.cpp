// `brimvale history [--json]`: everything History holds, newest first, with whether each
// Trash move can still be put back. Read-only: it looks in the Trash and moves nothing.
#include <cstdio>

#include "cli/CliCommand.h"
#include "core/ActionLog.h"
#include "foundation/Json.h"
#include "restore/PutBack.h"

namespace bv::cli {
namespace {

const char* stateWord(PutBack::State s) {
    switch (s) {
    case PutBack::State::available: return "inTrash";
    case PutBack::State::notInTrash: return "notInTrash";
    case PutBack::State::putBack: return "putBack";
    case PutBack::State::none: break;
    }
    return "none";
}

const char* stateText(PutBack::State s) {
    switch (s) {
    case PutBack::State::available: return "can be put back";
    case PutBack::State::notInTrash: return "no longer in the Trash";
    case PutBack::State::putBack: return "put back already";
    case PutBack::State::none: break;
    }
    return "";
}

} // namespace

int runHistory(const std::vector<std::string>& args) {
    bool json = false;
    for (const auto& a : args) {
        if (a == "--json") json = true;
        else return usageError(*findCommand("history"), "unknown option " + a);
    }
    const auto log = loadLog(AppPersistence::live());
    const auto states = PutBack::states(log);
    const auto stateOf = [&](const ActionLogEntry& e) {
        const auto it = states.find(e.id);
        return it == states.end() ? PutBack::State::none : it->second;
    };
    if (json) {
        // Each entry as log.json holds it; a Trash move adds whether it can still come back.
        Json out = Json::object();
        out["entries"] = Json::array();
        for (const auto& e : log) {
            Json j = e.toJson();
            if (const auto s = stateOf(e); s != PutBack::State::none) {
                j["canPutBack"] = s == PutBack::State::available;
                j["putBackState"] = stateWord(s);
            }
            out["entries"].push_back(std::move(j));
        }
        std::fputs(encodeJson(out).c_str(), stdout);
        return 0;
    }
    if (log.empty()) {
        std::printf("History is empty.\n");
        return 0;
    }
    for (const auto& e : log) {
        std::printf("%s  %s\n", isoDateText(e.date).c_str(), e.title.c_str());
        std::printf("    %s\n", e.subtitle.c_str());
        if (const auto s = stateOf(e); s != PutBack::State::none) std::printf("    %s\n", stateText(s));
    }
    std::printf("\nNothing was moved. Put back from History in the window.\n");
    return 0;
}

} // namespace bv::cli
