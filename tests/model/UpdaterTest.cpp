#include <gtest/gtest.h>

#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>

#include "core/qt/AppClock.h"
#include "diagnostics/qt/Updater.h"
#include "model/AppModel.h"
#include "platform/XdgPaths.h"
#include "support/TestEnvironment.h"
#include "support/UpdateSigning.h"

using namespace bv;
using namespace std::chrono_literals;
using test::updateRelease;

namespace {

// A real HTTP server on 127.0.0.1: every request gets `status` and `body`, or, with `hang`,
// is read and never answered.
struct FeedServer : QTcpServer {
    std::string body;
    int status = 200;
    bool hang = false;
    int requests = 0;
    FeedServer() {
        connect(this, &QTcpServer::newConnection, [this] {
            QTcpSocket* socket = nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, [this, socket, request = std::make_shared<QByteArray>()] {
                *request += socket->readAll();
                if (!request->contains("\r\n\r\n")) return;
                ++requests;
                if (hang) return;
                socket->write(QByteArray("HTTP/1.1 ") + QByteArray::number(status) + " Answer\r\nContent-Length: " +
                              QByteArray::number(qsizetype(body.size())) + "\r\nConnection: close\r\n\r\n" + body.c_str());
                socket->disconnectFromHost();
            });
        });
        listen(QHostAddress::LocalHost, 0);
    }
};

// A live model whose deployment.json in the temporary config folder names the server and the key.
class UpdaterTest : public ::testing::Test {
protected:
    void SetUp() override {
        test::removeTree(XdgPaths::appConfigDir());
        const std::string url = "http://127.0.0.1:" + std::to_string(server.serverPort()) + "/feed.json";
        test::writeFile(XdgPaths::appConfigDir() + "/deployment.json",
                        Json{{"updateFeedURL", url}, {"updatePublicKey", key.publicKeyBase64()}}.dump());
        remake();
    }
    void TearDown() override { model.reset(); }
    void remake() {
        model.reset();
        model = std::make_unique<AppModel>(true);
        model->setNow([this] { return now; });
        updater = model->room<Updater>();
        updater->setCurrentVersion("1.3.2");
        updater->setTransferTimeout(400ms);
    }
    [[nodiscard]] bool finished() { return QTest::qWaitFor([&] { return updater->canCheckForUpdates(); }, 10000); }

    test::UpdateSigningKey key;
    FeedServer server;
    TimePoint now = *parseIsoDate("2026-11-23T08:00:00Z");
    std::unique_ptr<AppModel> model;
    Updater* updater = nullptr;
};

} // namespace

// Only a good, newer feed offers its release; each failure says why, and the event loop
// keeps turning all the while, with a server that never answers too.
TEST_F(UpdaterTest, OnlyAGoodNewerFeedOffersAnUpdate) {
    if (!Updater::isBuiltIn()) { // the package build: configured or not, never a request
        EXPECT_FALSE(updater->canCheckForUpdates());
        EXPECT_EQ(updater->statusText(), "Updates are managed by your package manager.");
        return;
    }
    const std::string newer = updateRelease("1.4.0"), good = key.feed(newer);
    const struct { std::string body; int status; const char* says; } rows[] = {
        {key.feed(newer, &good), 200, "Couldn’t check for updates: the feed’s signature does not match the update key."},
        {good.substr(0, good.size() - 20), 200, "Couldn’t check for updates: the feed is not complete JSON."},
        {"", 0, "Couldn’t check for updates: the server did not answer in time."},
        {std::string(2 * Updater::kMaxFeedBytes, ' '), 200, "Couldn’t check for updates: the answer is larger than 1 MiB."},
        {key.feed(updateRelease("1.3.2")), 200, "Brimvale is up to date."},
        {good, 200, "Brimvale 1.4.0 is available."},
    };
    int beats = 0;
    QTimer beat;
    QObject::connect(&beat, &QTimer::timeout, [&] { ++beats; });
    beat.start(20);
    for (const auto& row : rows) {
        std::tie(server.body, server.status, server.hang, beats) = std::tuple(row.body, row.status, row.status == 0, 0);
        updater->checkForUpdates();
        EXPECT_EQ(updater->statusText(), "Checking…");
        ASSERT_TRUE(finished()) << row.says;
        EXPECT_EQ(updater->statusText(), row.says);
        EXPECT_EQ(updater->availableVersion(), row.body == good ? "1.4.0" : "") << row.says;
        EXPECT_TRUE(!server.hang || beats >= 5) << "the event loop stood still while the server was silent";
    }
    EXPECT_EQ(updater->availableUrl(), QUrl("https://example.org/get/1.4.0"));
    EXPECT_EQ(server.requests, 6);
}

// Automatic checks run from the minute tick once a day while the setting is on and fail
// silently; the setting and the last check outlive the model. No feed: no check can start.
TEST_F(UpdaterTest, AutomaticChecksRunDailyAndFailSilently) {
    if (!Updater::isBuiltIn()) GTEST_SKIP() << "built without updates";
    server.status = 500;
    const TimePoint first = now;
    const struct { std::chrono::hours later; bool automatic, checks; } ticks[] = {
        {0h, true, true}, {23h, true, false}, {25h, false, false}, {25h, true, true}, {26h, true, false}};
    for (const auto& tick : ticks) {
        now = first + tick.later;
        updater->setAutomaticallyChecksForUpdates(tick.automatic);
        emit model->clock()->ticked();
        EXPECT_EQ(updater->canCheckForUpdates(), !tick.checks) << tick.later.count() << "h";
        ASSERT_TRUE(finished());
        EXPECT_EQ(updater->statusText(), tick.automatic ? "Brimvale checks for updates once a day."
                                                        : "Brimvale checks for updates only when you ask.");
    }
    EXPECT_EQ(server.requests, 2);

    updater->setAutomaticallyChecksForUpdates(false);
    remake();
    EXPECT_FALSE(updater->automaticallyChecksForUpdates());
    EXPECT_EQ(updater->statusText(), "Brimvale checks for updates only when you ask.");
    EXPECT_TRUE(updater->lastCheck() && sameMoment(*updater->lastCheck(), first + 25h));

    test::removeTree(XdgPaths::appConfigDir());
    remake();
    EXPECT_FALSE(updater->canCheckForUpdates());
    EXPECT_EQ(updater->statusText(), "No update feed is configured, so Brimvale never checks for updates.");
}
