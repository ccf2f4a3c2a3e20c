// `brimvale duplicates` as the terminal runs it: the words it accepts, what it prints.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include "cli/CliCommand.h"
#include "foundation/FileIO.h"
#include "foundation/Json.h"
#include "support/TestEnvironment.h"

using namespace bv;

namespace {

// Runs the command with stdout and stderr sent to files; gives the exit code and stdout.
std::pair<int, std::string> run(const std::vector<std::string>& args) {
    const std::string out = test::TestEnvironment::freshFolder("cli-out") + "/out";
    std::fflush(stdout);
    std::fflush(stderr);
    const int saved = ::dup(1), savedErr = ::dup(2);
    const int fd = ::open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const int devNull = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(fd, 1);
    ::dup2(devNull, 2);
    const int code = cli::findCommand("duplicates")->run(args);
    std::fflush(stdout);
    std::fflush(stderr);
    ::dup2(saved, 1);
    ::dup2(savedErr, 2);
    for (int f : {fd, devNull, saved, savedErr}) ::close(f);
    return {code, readWholeFile(out).value_or("")};
}

} // namespace

TEST(DuplicatesCommand, PrintsGroupsLargestFirstAndRefusesBadWords) {
    const auto root = test::TestEnvironment::freshFolder("cli");
    test::writeFile(root + "/a/big", std::string(400'000, 'b'));
    test::writeFile(root + "/b/big", std::string(400'000, 'b'));
    test::writeFile(root + "/a/mid", std::string(150'000, 'm'));
    test::writeFile(root + "/b/mid", std::string(150'000, 'm'));
    test::writeFile(root + "/c/mid", std::string(150'000, 'm'));
    test::writeFile(root + "/a/small", std::string(500, 's'));
    test::writeFile(root + "/b/small", std::string(500, 's'));

    // --min below the floor is raised to it: the 500-byte twins never show.
    const auto [code, text] = run({"--min", "1", "--json", root + "/a/..", root});
    ASSERT_EQ(code, 0);
    const auto json = parseJson(text);
    ASSERT_TRUE(json && json->is_array());
    ASSERT_EQ(json->size(), 2u);
    EXPECT_EQ((*json)[0]["reclaimableBytes"], 400'000);
    EXPECT_EQ((*json)[1]["reclaimableBytes"], 300'000);
    EXPECT_EQ((*json)[1]["files"].size(), 3u) << "overlapping folders are searched once";

    const auto [plainCode, plain] = run({"--min", "100000", root});
    EXPECT_EQ(plainCode, 0);
    EXPECT_NE(plain.find("EXTRA COPIES · LARGEST FIRST"), std::string::npos);
    EXPECT_NE(plain.find("2 groups, 700 KB could be freed."), std::string::npos) << plain;
    EXPECT_LT(plain.find("400 KB"), plain.find("150 KB"));

    // The default smallest file is 1 MB: nothing here is that big.
    EXPECT_NE(run({root}).second.find("No duplicates found."), std::string::npos);

    const struct {
        std::vector<std::string> args;
        int code;
    } bad[] = {{{}, 2}, {{"--min"}, 2}, {{"--min", "-5", root}, 2}, {{"--min", "12x", root}, 2},
               {{"--fast", root}, 2}, {{root + "/missing"}, 1}, {{root + "/a/big"}, 1}};
    for (const auto& b : bad) EXPECT_EQ(run(b.args).first, b.code) << (b.args.empty() ? "" : b.args[0]);
}
