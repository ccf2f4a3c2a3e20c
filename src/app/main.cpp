// Brimvale's entry point. Terminal commands are answered before any GUI object exists; with
// no display the overview is printed instead of opening a window.
#include <QApplication>
#include <QFileInfo>
#include <QStringList>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "cli/CliCommand.h"
#include "cli/ManPage.h"
#include "cli/ShellCompletion.h"
#include "core/qt/SingleInstance.h"
#include "screens/GuiApplication.h"

namespace {

bool hasDisplay() {
    const char* platform = std::getenv("QT_QPA_PLATFORM");
    if (platform && *platform) return true; // offscreen, xcb, wayland: the caller chose
    const char* x = std::getenv("DISPLAY");
    const char* w = std::getenv("WAYLAND_DISPLAY");
    return (x && *x) || (w && *w);
}

} // namespace

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    if (!args.empty()) {
        const std::string& first = args.front();
        if (first == "help" || first == "--help" || first == "-h") {
            if (args.size() > 2) {
                std::fprintf(stderr, "usage: brimvale help [COMMAND]\n");
                return 2;
            }
            return args.size() == 2 ? bv::cli::printCommandHelp(args[1]) : bv::cli::printHelp();
        }
        if (first == "--version") {
            std::printf("brimvale %s\n", BRIMVALE_VERSION);
            return 0;
        }
        // What the package installs as the manual page and the shell completions.
        if (first == "--man-page") {
            std::fputs(bv::cli::manPage(BRIMVALE_VERSION).c_str(), stdout);
            return 0;
        }
        if (first == "--completion") {
            const auto script = bv::cli::completionScript(args.size() == 2 ? args[1] : std::string());
            if (!script) {
                std::fprintf(stderr, "usage: brimvale --completion bash|zsh|fish\n");
                return 2;
            }
            std::fputs(script->c_str(), stdout);
            return 0;
        }
        if (const auto* command = bv::cli::findCommand(first)) {
            if (args.size() == 2 && (args[1] == "--help" || args[1] == "-h")) return bv::cli::printCommandHelp(first);
            return command->run(std::vector<std::string>(args.begin() + 1, args.end()));
        }
        // A mistyped command must not open the window or print the overview as if it were one.
        if (bv::cli::looksLikeCommandWord(first) && !QFileInfo::exists(QString::fromLocal8Bit(first.c_str())))
            return bv::cli::unknownCommand(first);
        // Anything else (a brimvale: link, a folder, an option) is for the window.
    }
    QStringList forwarded;
    for (const auto& a : args) forwarded << QString::fromLocal8Bit(a.c_str());
    // One instance per user: a later start hands its arguments to the running one and ends.
    // The start-up benchmark always measures a start of its own.
    if (!qEnvironmentVariableIsSet("BV_EXIT_AFTER_FIRST_FRAME") && bv::SingleInstance().handOver(forwarded))
        return 0;
    if (!hasDisplay()) {
        std::fprintf(stderr, "No display found; printing the overview instead of opening a window.\n\n");
        return bv::cli::findCommand("overview")->run({});
    }
    QCoreApplication::setApplicationVersion(QStringLiteral(BRIMVALE_VERSION)); // "Version …" in the tray
    return bv::runGuiApplication(argc, argv);
}
