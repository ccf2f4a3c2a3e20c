// The in-process reading of ignore rules against the real `git check-ignore`, case by case.
#include <gtest/gtest.h>

#include "clean/GitQuery.h"
#include "clean/IgnoreRules.h"
#include "support/ShellAndMounts.h"
#include "support/TestEnvironment.h"

namespace bv::test {
namespace {

struct RepoCase {
    const char* name;
    std::vector<std::pair<std::string, std::string>> files; // relative path -> content
    std::vector<std::string> candidates;                    // folders asked about (made empty when missing)
    std::string afterCommit;                                // shell run in the repository last
    std::string globalIgnore;                               // $XDG_CONFIG_HOME/git/ignore
    bool defers = false;                                    // git must be asked
};

std::vector<std::string> gitsAnswer(const std::string& repo, const std::vector<std::string>& paths) {
    std::string input;
    for (const auto& p : paths) input.append(p).push_back('\0');
    const auto out = GitQuery::run({"git", "-C", repo, "check-ignore", "--stdin", "-z"}, input);
    EXPECT_TRUE(out && (out->status == 0 || out->status == 1));
    std::vector<std::string> ignored;
    std::size_t start = 0;
    for (std::size_t i = 0; out && i < out->output.size(); ++i)
        if (out->output[i] == '\0') {
            ignored.push_back(out->output.substr(start, i - start));
            start = i + 1;
        }
    return ignored;
}

TEST(IgnoreRules, AnswersExactlyAsGitOrDefers) {
    const std::vector<std::string> common{"node_modules", "a/node_modules", "dist", "a/dist", "build", "target", "src"};
    const std::vector<RepoCase> setups{
        {"plain", {{".gitignore", "# c\nnode_modules\n/dist\nbuild/\n\n   \ntarget   \n"}}, common, "", ""},
        {"negation, last match wins", {{".gitignore", "*_modules\n!a_modules\ndist\n!dist\n!build\nbuild\n"}},
         {"a_modules", "b_modules", "dist", "build"}, "", ""},
        {"middle slash anchors", {{".gitignore", "a/node_modules\n*/target/\n"}},
         {"a/node_modules", "b/a/node_modules", "a/target", "a/b/target", "target"}, "", ""},
        {"deeper file overrides", {{".gitignore", "node_modules\n"}, {"s/.gitignore", "!node_modules\n/x/dist\n"}},
         {"s/node_modules", "node_modules", "s/d/node_modules", "s/x/dist", "x/dist", "s/y/x/dist"}, "", ""},
        {"excluded parent", {{".gitignore", "out/\nvendor/*\n!vendor/keep\n"}, {"out/.gitignore", "!node_modules\n"},
                             {"vendor/keep/.gitignore", "!target\n"}},
         {"out/node_modules", "vendor/keep/node_modules", "vendor/other/target", "vendor/keep/target"}, "", ""},
        {"info/exclude then global", {{".gitignore", "!target\n"}},
         {"dist", "target", "build", "node_modules"}, "printf 'dist\\nbuild\\n' > .git/info/exclude", "target\n!dist\nbuild\n!build\nnode_modules\n"},
        {"tracked below a candidate", {{".gitignore", "node_modules\nbuild\n"}, {"node_modules/keep.js", "1"},
                                        {"a/node_modules_x/f", "1"}, {"a/build/b/f", "1"}},
         {"node_modules", "a/node_modules", "a/build", "build"},
         "git add -f node_modules/keep.js a/node_modules_x/f a/build/b/f && git update-index --index-version 4", ""},
        {"sets and ?", {{".gitignore", "[Bb]uild\n?arget\n*.py[cod]\n[!a-c]ist\n[]x]y\n"}},
         {"Build", "build", "target", "xtarget", "dist", "cist", "xy", "a.pyc", "a.pyd"}, "", ""},
        {"byte-order mark", {{".gitignore", "\xEF\xBB\xBFnode_modules\n"}}, {"node_modules"}, "", ""},
        {"double star defers", {{".gitignore", "**/node_modules\n"}}, {"node_modules"}, "", "", true},
        {"backslash defers", {{".gitignore", "\\#dist\n"}}, {"dist"}, "", "", true},
        {"linked .gitignore defers", {{"real", "dist\n"}}, {"dist"}, "ln -s real .gitignore", "", true},
        {"excludes file setting defers", {}, {"dist"}, "git config core.excludesFile /dev/null", "", true},
        {"intent-to-add defers", {{".gitignore", "dist\n"}, {"n", ""}}, {"dist"}, "git add -N n", "", true},
        {"corrupt index defers", {{".gitignore", "dist\n"}}, {"dist"}, "git add .gitignore && printf x | dd of=.git/index bs=1 seek=20 conv=notrunc 2>/dev/null", "", true},
    };
    const std::string saved = std::getenv("XDG_CONFIG_HOME");
    for (const auto& s : setups) {
        SCOPED_TRACE(s.name);
        const std::string root = TestEnvironment::freshFolder("ignore-rules");
        const std::string repo = root + "/repo";
        makeDir(repo);
        for (const auto& [path, content] : s.files) writeFile(repo + "/" + path, content);
        for (const auto& c : s.candidates) makeDir(repo + "/" + c);
        ::setenv("XDG_CONFIG_HOME", (root + "/config").c_str(), 1);
        writeFile(root + "/config/git/ignore", s.globalIgnore);
        const int status = runCommand("cd " + shellQuote(repo) + " && git init -q && git -c user.name=t -c user.email=t@t " +
                                      "commit -q --allow-empty -m init" + (s.afterCommit.empty() ? "" : " && " + s.afterCommit))
                               .status;
        const auto ours = IgnoreRules::ignoredPaths(repo, s.candidates);
        const auto git = s.defers ? std::vector<std::string>{} : gitsAnswer(repo, s.candidates);
        ::setenv("XDG_CONFIG_HOME", saved.c_str(), 1);
        ASSERT_EQ(status, 0);
        EXPECT_EQ(ours.has_value(), !s.defers);
        if (ours && !s.defers) {
            EXPECT_EQ(*ours, git);
        }
    }
}

} // namespace
} // namespace bv::test
