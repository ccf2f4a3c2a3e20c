#include <gtest/gtest.h>

#include "clean/KeptVersions.h"
#include "support/TestEnvironment.h"

using namespace bv;
using bv::test::makeDir;
using bv::test::writeFile;

namespace {
std::set<std::string> S(std::initializer_list<const char*> names) { return {names.begin(), names.end()}; }
} // namespace

TEST(KeptNodeVersions, FollowsTheDefaultAlias) {
    struct Row {
        const char* label;
        std::vector<const char*> versions;
        std::vector<std::pair<const char*, const char*>> aliases; // file under ~/.nvm/alias, content
        std::set<std::string> expected;
    };
    const Row rows[] = {
        {"no versions folder", {}, {}, {}},
        {"one version, no alias", {"v20.11.1"}, {}, S({"20.11.1"})},
        {"major default", {"v18.19.0", "v20.11.1", "v20.9.0"}, {{"default", "20\n"}}, S({"20.11.1", "20.9.0"})},
        {"exact default with v", {"v18.19.0", "v20.11.1"}, {{"default", "  v18.19.0  \n"}}, S({"18.19.0"})},
        {"prefix needs a dot", {"v2.0.0", "v20.1.0"}, {{"default", "2"}}, S({"2.0.0"})},
        {"alias chain", {"v18.19.0", "v20.11.1"}, {{"default", "lts"}, {"lts", "18"}}, S({"18.19.0"})},
        {"unknown default keeps all", {"v18.19.0", "v20.11.1"}, {{"default", "node"}}, S({"18.19.0", "20.11.1"})},
        {"alias loop keeps all", {"v18.19.0"}, {{"default", "a"}, {"a", "default"}}, S({"18.19.0"})},
        {"escaping alias keeps all", {"v18.19.0", "v20.1.0"}, {{"default", "../../etc/x"}}, S({"18.19.0", "20.1.0"})},
    };
    for (const auto& row : rows) {
        const std::string home = bv::test::TestEnvironment::freshFolder("nvm-home");
        for (const char* v : row.versions) makeDir(home + "/.nvm/versions/node/" + v);
        for (const auto& [file, content] : row.aliases) writeFile(home + "/.nvm/alias/" + file, content);
        EXPECT_EQ(keptNodeVersions(home), row.expected) << row.label;
    }
}

TEST(KeptToolchains, ReadsDefaultAndOverrides) {
    EXPECT_EQ(rustupSettingsValues("default_toolchain = \"stable\"\n[overrides]\n\"/p\" = \"1.75.0\"\n\"/q\" = \"\"\n"),
              S({"stable", "1.75.0"}));
    EXPECT_EQ(rustupSettingsValues("[other]\ndefault_toolchain = \"beta\"\n"), S({}))
        << "a default inside a section doesn't count";
    EXPECT_EQ(rustupSettingsValues("profile = \"minimal\"\nno equals here\n"), S({}));
    EXPECT_EQ(rustupSettingsValues("  default_toolchain=nightly  \r\n"), S({"nightly"}));

    const std::vector<const char*> folders{"stable-x86_64-unknown-linux-gnu", "beta-x86_64-unknown-linux-gnu",
                                           "stable2-x86_64-unknown-linux-gnu", "1.75.0-x86_64-unknown-linux-gnu"};
    struct Row {
        const char* label;
        std::optional<std::string> settings;
        std::set<std::string> expected;
    };
    const std::set<std::string> all(folders.begin(), folders.end());
    const Row rows[] = {
        {"no settings", std::nullopt, all},
        {"no default, no overrides", "version = \"12\"\n", all},
        {"default", "default_toolchain = \"stable\"\n", S({"stable-x86_64-unknown-linux-gnu"})},
        {"default and override", "default_toolchain = \"beta\"\n[overrides]\n\"/p\" = \"1.75.0\"\n",
         S({"beta-x86_64-unknown-linux-gnu", "1.75.0-x86_64-unknown-linux-gnu"})},
        {"nothing matches", "default_toolchain = \"1.60.0\"\n", all},
    };
    for (const auto& row : rows) {
        const std::string home = bv::test::TestEnvironment::freshFolder("rustup-home");
        for (const char* f : folders) makeDir(home + "/.rustup/toolchains/" + f);
        if (row.settings) writeFile(home + "/.rustup/settings.toml", *row.settings);
        EXPECT_EQ(keptToolchains(home), row.expected) << row.label;
    }
    EXPECT_EQ(keptToolchains(bv::test::TestEnvironment::freshFolder("no-rustup")), S({}));
}
