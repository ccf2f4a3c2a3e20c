#include "cli/ManPage.h"

#include <cctype>
#include <cstdio>

#include "cli/CliCommand.h"
#include "cli/ExitStatus.h"

namespace bv::cli {
namespace {

// Options the program itself takes, before or instead of a command.
struct ProgramOption {
    const char* usage;
    const char* meaning;
};

constexpr ProgramOption kProgramOptions[] = {
    {"--version", "Print the program's name and version, and exit."},
    {"--help", "The same as help."},
    {"--watch-folder FOLDER...", "Open the window and ask to watch the first of the folders with Build Watch (what a "
                                  "file manager's \"Watch with Build Watch\" action runs)."},
    {"--review-clean", "Open the window at the clean-up preview of what Smart Clean would give back."},
    {"brimvale:LINK", "Open the window and follow the link, for example brimvale://scan?need=12 for a fresh look "
                      "for space."},
    {"--completion bash|zsh|fish", "Print the completion script for that shell."},
    {"--man-page", "Print this manual page in roff."},
};

// One Unicode code point from UTF-8, advancing `i`; a broken sequence gives U+FFFD.
unsigned decodeUtf8(const std::string& s, std::size_t& i) {
    const auto lead = static_cast<unsigned char>(s[i++]);
    const int extra = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
    unsigned code = extra == 0 ? lead : lead & (0x3Fu >> extra);
    for (int k = 0; k < extra; ++k) {
        if (i >= s.size() || (static_cast<unsigned char>(s[i]) & 0xC0) != 0x80) return 0xFFFD;
        code = (code << 6) | (static_cast<unsigned char>(s[i++]) & 0x3F);
    }
    return extra == 0 && lead >= 0x80 ? 0xFFFD : code;
}

// A usage line with its literal words bold and its operands italic.
std::string formattedUsage(const std::string& usage) {
    std::string out, word;
    const auto flush = [&] {
        if (word.empty()) return;
        const bool operand = word.find_first_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos;
        out += (operand ? "\\fI" : "\\fB") + roffText(word) + "\\fR";
        word.clear();
    };
    for (const char c : usage) {
        if (std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_' || c == ':') {
            word += c;
        } else {
            flush();
            out += roffText(std::string(1, c));
        }
    }
    flush();
    return out;
}

// A summary as a sentence: capital first letter and a full stop.
std::string sentence(std::string text) {
    if (!text.empty()) text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
    if (!text.empty() && text.back() != '.') text += '.';
    return roffText(text);
}

} // namespace

std::string roffText(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size();) {
        const char c = text[i];
        if (static_cast<unsigned char>(c) >= 0x80) {
            char name[16];
            std::snprintf(name, sizeof name, "\\[u%04X]", decodeUtf8(text, i));
            out += name;
            continue;
        }
        ++i;
        if (c == '\\') out += "\\e";
        else if (c == '-') out += "\\-";
        else if ((c == '.' || c == '\'') && (out.empty() || out.back() == '\n')) out += std::string("\\&") + c;
        else out += c;
    }
    return out;
}

std::string manPage(const std::string& version) {
    std::string m;
    m += ".TH BRIMVALE 1 \"\" \"Brimvale " + roffText(version) + "\" \"User Commands\"\n";
    m += ".nh\n.SH NAME\nbrimvale \\- find where disk space went and safely get it back\n";
    m += ".SH SYNOPSIS\n.B brimvale\n.RI [ OPTION ]\n.br\n.B brimvale\n.I COMMAND\n.RI [ ARGS ...]\n";
    m += ".SH DESCRIPTION\n"
         "Brimvale measures the disk and its folders, finds what developer tools leave behind, data left by "
         "removed apps and identical files, and gives back what can safely go. Nothing moves until its "
         "preview has been seen and confirmed in the window, and files go to the Trash unless deliberately "
         "chosen otherwise.\n.PP\n"
         "With no command, \\fBbrimvale\\fR opens its window, or prints the overview when there is no display. "
         "One window runs per user: a later start hands its options to the running one.\n.PP\n"
         "The commands below only read and report; nothing that moves a file is ever done from the terminal. "
         "With \\fB\\-\\-json\\fR a command prints one JSON document instead of text.\n";
    m += ".SH COMMANDS\n";
    for (const auto& c : commands()) m += ".TP\n" + formattedUsage(c.usage) + "\n" + sentence(c.summary) + "\n";
    m += ".TP\n" + formattedUsage("help [COMMAND]") + "\n" + sentence(kHelpSummary) + "\n";
    m += ".SH OPTIONS\n";
    for (const auto& o : kProgramOptions) m += ".TP\n" + formattedUsage(o.usage) + "\n" + roffText(o.meaning) + "\n";
    m += ".SH EXIT STATUS\n";
    for (const auto& s : kExitStatuses) m += ".TP\n.B " + std::to_string(s.code) + "\n" + sentence(s.meaning) + "\n";
    m += ".SH ENVIRONMENT\n"
         ".TP\n.B XDG_DATA_HOME\nWhere the state lives: settings, history, rules and the activity log "
         "(\\fI$XDG_DATA_HOME/Brimvale\\fR, by default \\fI~/.local/share/Brimvale\\fR).\n"
         ".TP\n.B XDG_CONFIG_HOME\nSmall per-user values (\\fI$XDG_CONFIG_HOME/Brimvale/defaults.json\\fR).\n"
         ".TP\n.B XDG_STATE_HOME\nA JSON manifest of every clean (\\fI$XDG_STATE_HOME/Brimvale/Logs\\fR).\n"
         ".TP\n.B XDG_RUNTIME_DIR\nThe socket through which a later start reaches the running window.\n"
         ".TP\n.BR DISPLAY \", \" WAYLAND_DISPLAY\nWhen neither is set, the window is not opened and the "
         "overview is printed instead.\n";
    m += ".SH FILES\n"
         ".TP\n.I ~/.local/share/Brimvale\nOne JSON file per record, each written whole and atomically.\n"
         ".TP\n.I ~/.local/share/Trash\nThe Trash, where cleaned files go unless chosen otherwise.\n";
    m += ".SH EXAMPLES\n"
         ".nf\nbrimvale overview \\-\\-json\nbrimvale duplicates \\-\\-min 1048576 ~/Pictures\nbrimvale help map\n.fi\n";
    return m;
}

} // namespace bv::cli
