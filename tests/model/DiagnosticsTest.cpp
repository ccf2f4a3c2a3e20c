#include <gtest/gtest.h>

#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <signal.h>
#include <sys/stat.h>

#include <chrono>
#include <thread>

#include "diagnostics/CrashHandler.h"
#include "diagnostics/DiagnosticsStore.h"
#include "diagnostics/qt/DiagnosticsMailer.h"
#include "diagnostics/qt/DiagnosticsModel.h"
#include "foundation/FileIO.h"
#include "foundation/Json.h"
#include "platform/XdgPaths.h"
#include "support/EventLoopWait.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace std::chrono_literals;

namespace {

std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

} // namespace

// The real program, up in its window (offscreen), killed by a fatal signal: its handler
// leaves exactly one report named by the rule, and collecting the same payload again (what
// the next start does if the collector never ran) adds nothing.
TEST(Diagnostics, TheRealProgramKilledBySignalLeavesOneCrashReport) {
    const std::pair<int, const char*> cases[] = {{SIGSEGV, "SIGSEGV"}, {SIGABRT, "SIGABRT"}};
    const QRegularExpression rule(QStringLiteral("^\\d{8}T\\d{6}\\.\\d{3}Z-crash-[0-9a-f]{64}\\.json$"));
    for (const auto& [sig, name] : cases) {
        SCOPED_TRACE(name);
        const std::string state = test::TestEnvironment::freshFolder(std::string("state-") + name);
        const std::string runtime = test::TestEnvironment::freshFolder(std::string("runtime-") + name);
        ::chmod(runtime.c_str(), 0700);
        const std::string dir = state + "/Brimvale/Diagnostics";
        QProcess program;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("QT_QPA_PLATFORM", "offscreen");
        env.insert("QT_QUICK_BACKEND", "software");
        env.insert("XDG_STATE_HOME", QString::fromStdString(state));
        env.insert("XDG_RUNTIME_DIR", QString::fromStdString(runtime));
        program.setProcessEnvironment(env);
        program.start(QStringLiteral(BV_APP_PATH), {});
        // The handler is in place once its folder exists; then the window gets a moment.
        ASSERT_TRUE(test::spinUntil([&] { return test::exists(dir); }, 30000));
        test::spin(1500);
        ASSERT_EQ(program.state(), QProcess::Running);
        const qint64 pid = program.processId();
        ::kill(static_cast<pid_t>(pid), sig);
        ASSERT_TRUE(program.waitForFinished(30000));
        EXPECT_EQ(program.exitStatus(), QProcess::CrashExit);

        const DiagnosticsStore store(dir);
        std::vector<std::string> crashes;
        for (const auto& path : store.list())
            if (rule.match(QString::fromStdString(nameOf(path))).hasMatch()) crashes.push_back(path);
        ASSERT_EQ(crashes.size(), 1u);
        const auto payload = readWholeFile(crashes[0]);
        const auto json = parseJson(*payload);
        ASSERT_TRUE(json);
        EXPECT_EQ((*json)["signalName"], name);
        EXPECT_EQ((*json)["pid"], pid);

        // The terminal lists it, by the same rule.
        QProcess cli;
        env.insert("QT_QPA_PLATFORM", "");
        cli.setProcessEnvironment(env);
        cli.start(QStringLiteral(BV_APP_PATH), {"diagnostics", "--json"});
        ASSERT_TRUE(cli.waitForFinished(30000));
        const auto listed = parseJson(cli.readAllStandardOutput().toStdString());
        ASSERT_TRUE(listed);
        EXPECT_EQ((*listed)["directory"], dir);
        EXPECT_EQ((*listed)["reports"][0]["name"], nameOf(crashes[0]));
        EXPECT_EQ((*listed)["reports"][0]["kind"], "crash");

        test::writeFile(dir + "/.crash-1.pending", *payload);
        EXPECT_EQ(CrashHandler::collectPending(store), 1);
        std::size_t after = 0;
        for (const auto& path : store.list()) after += rule.match(QString::fromStdString(nameOf(path))).hasMatch();
        EXPECT_EQ(after, 1u);
    }
}

// The GUI thread really blocked past the hang limit gives one hang report, which says how
// long it was blocked once the thread answered; a thread that keeps answering gives none.
TEST(Diagnostics, ABlockedMainThreadGivesOneHangReport) {
    const struct { std::chrono::milliseconds block; std::size_t reports; } cases[] = {{1500ms, 1}, {0ms, 0}};
    for (const auto& c : cases) {
        const QString dir = QString::fromStdString(test::TestEnvironment::freshFolder("hangs"));
        DiagnosticsModel model(dir);
        model.startHangWatch(400ms);
        test::spin(600);
        std::this_thread::sleep_for(c.block);
        test::spin(1500);
        const auto reports = DiagnosticsStore(dir.toStdString()).list();
        ASSERT_EQ(reports.size(), c.reports);
        if (c.reports == 0) continue;
        EXPECT_NE(nameOf(reports[0]).find("-hang-"), std::string::npos);
        const auto json = parseJson(*readWholeFile(reports[0]));
        EXPECT_EQ((*json)["ended"], true);
        EXPECT_GE((*json)["blockedMilliseconds"].get<int>(), 1000);
        EXPECT_TRUE(test::spinUntil([&] { return model.reportCount() == 1; }, 5000));
    }
}

// Sending. A real mail program can't run here, so a recording `xdg-email` script stands
// first on PATH; it writes its arguments and exits with the code the case asks for.
TEST(Diagnostics, SendsByXdgEmailOnlyWithReportsAndAnAddress) {
    const std::string bin = test::TestEnvironment::freshFolder("mail-bin");
    const std::string record = bin + "/arguments";
    test::writeFile(bin + "/xdg-email", "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"" + record + "\"\nexit $MAIL_EXIT\n");
    ::chmod((bin + "/xdg-email").c_str(), 0755);
    qputenv("PATH", QByteArray::fromStdString(bin) + ":" + qgetenv("PATH"));
    const struct { int reports; const char* address; const char* exitCode; bool runs, mailed; } cases[] = {
        {0, "help@brimvale.example", "0", false, false},
        {2, "", "0", false, false},
        {2, "--help@x.example", "0", false, false},
        {2, "mailto:help@brimvale.example", "0", true, true},
        {1, "help@brimvale.example", "3", true, false},
    };
    const std::string config = XdgPaths::appConfigDir() + "/deployment.json";
    for (const auto& c : cases) {
        SCOPED_TRACE(c.address);
        const std::string dir = test::TestEnvironment::freshFolder("send");
        for (int i = 0; i < c.reports; ++i)
            (void)DiagnosticsStore(dir).save("{\"n\":" + std::to_string(i) + "}", "crash", std::chrono::system_clock::now());
        test::writeFile(config, std::string("{\"supportEmail\": \"") + c.address + "\"}");
        qputenv("MAIL_EXIT", c.exitCode);
        ::unlink(record.c_str());
        DiagnosticsModel model(QString::fromStdString(dir));
        QSignalSpy finished(&model.mailer(), &DiagnosticsMailer::finished);
        QSignalSpy folder(&model, &DiagnosticsModel::openFolderRequested);
        model.sendDiagnostics();
        ASSERT_TRUE(test::spinUntil([&] { return finished.count() == 1; }, 10000));
        EXPECT_EQ(finished.at(0).at(0).toBool(), c.mailed);
        EXPECT_EQ(folder.count(), c.mailed ? 0 : 1); // the test's session bus has no file manager
        EXPECT_EQ(test::exists(record), c.runs);
        if (!c.runs) continue;
        const QStringList words = QString::fromStdString(*readWholeFile(record)).split('\n');
        EXPECT_EQ(words.mid(0, 3), (QStringList{"--subject", "Brimvale diagnostics", "--body"}));
        EXPECT_TRUE(words[3].startsWith(QStringLiteral("%1 diagnostic report%2 from Brimvale %3 on ")
                                            .arg(c.reports).arg(c.reports == 1 ? "" : "s").arg(model.versionText())));
        EXPECT_FALSE(words.join(' ').contains("macOS"));
        EXPECT_EQ(words.count("--attach"), c.reports);
        EXPECT_TRUE(words.contains("help@brimvale.example"));
    }
    ::unlink(config.c_str());
}
