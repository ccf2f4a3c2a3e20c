#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>
#include <cstdio>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

#include "core/qt/BrimvaleLink.h"
#include "core/qt/SingleInstance.h"
#include "support/TestEnvironment.h"

using namespace bv;

TEST(BrimvaleLink, ReadsWatchAndScanLinksAndNothingElse) {
    const QString withNumber = "Wardlet noticed your Mac needs about 12 GB more free space so it can use swap without "
                               "freezing. Here's what can be cleared safely.";
    const QString withoutNumber =
        "Wardlet noticed low disk space is limiting your Mac's memory. Here's what can be cleared safely.";
    struct Case {
        const char* link;
        LinkRequest::Kind kind;
        QString path;
        std::optional<QString> banner;
    };
    using K = LinkRequest::Kind;
    const Case cases[] = {
        {"brimvale://scan?need=12&source=wardlet", K::scan, {}, withNumber},
        {"brimvale://scan?source=wardlet&need=%2B12", K::scan, {}, withNumber},
        {"brimvale://scan?need=12&need=40&source=wardlet", K::scan, {}, withNumber}, // the first item counts
        {"brimvale://scan?need=-3&source=wardlet", K::scan, {}, QString(withNumber).replace("12", "-3")},
        {"brimvale://scan?need=twelve&source=wardlet", K::scan, {}, withoutNumber},
        {"brimvale://scan?need=12.5&source=wardlet", K::scan, {}, withoutNumber},
        {"brimvale://scan?need=&source=wardlet", K::scan, {}, withoutNumber},
        {"brimvale://scan?need=%2012&source=wardlet", K::scan, {}, withoutNumber},
        {"brimvale://scan?need=99999999999999999999&source=wardlet", K::scan, {}, withoutNumber},
        {"brimvale://scan?source=wardlet", K::scan, {}, withoutNumber},
        {"brimvale://scan?need=12", K::scan, {}, std::nullopt},               // no source: a pass, no text
        {"brimvale://scan?need=12&source=Wardlet", K::scan, {}, std::nullopt}, // compared exactly
        {"brimvale://scan", K::scan, {}, std::nullopt},
        {"brimvale://watch?path=/home/u/My%20Project", K::watch, "/home/u/My Project", std::nullopt},
        {"brimvale://watch?path=/srv/%C3%A9t%C3%A9&path=/other", K::watch, "/srv/été", std::nullopt},
        {"brimvale://watch", K::none, {}, std::nullopt},
        {"brimvale://watch?path=relative/dir", K::none, {}, std::nullopt},
        {"brimvale://watch?folder=/home/u", K::none, {}, std::nullopt},
        {"brimvale://open?path=/home/u", K::none, {}, std::nullopt},
        {"https://scan?need=12&source=wardlet", K::none, {}, std::nullopt},
        {"not a link", K::none, {}, std::nullopt},
    };
    for (const auto& c : cases) {
        const auto r = interpretLink(QUrl(QString::fromUtf8(c.link)));
        EXPECT_EQ(r.kind, c.kind) << c.link;
        EXPECT_EQ(r.path, c.path) << c.link;
        EXPECT_EQ(r.banner, c.banner) << c.link;
    }
}

TEST(SingleInstance, ALaterStartHandsItsArgumentsToTheRunningOne) {
    const QString name = QString::fromStdString(test::TestEnvironment::freshFolder("instance")) + "/brimvale.socket";
    SingleInstance first(name);
    ASSERT_TRUE(first.listen());
    QSignalSpy received(&first, &SingleInstance::argumentsReceived);

    SingleInstance second(name);
    EXPECT_FALSE(second.listen()) << "a live instance keeps its name";

    const QStringList args{"brimvale://watch?path=/home/u/Ünïcode dir", "--watch-folder", "/tmp/a\nb"};
    bool handed = false;
    // The later start blocks while it hands over, so it runs beside this thread's event loop.
    std::thread later([&] { handed = SingleInstance(name).handOver(args); });
    const bool arrived = QTest::qWaitFor([&] { return received.count() == 1; }, 5000);
    later.join();
    ASSERT_TRUE(arrived);
    EXPECT_TRUE(handed);
    EXPECT_EQ(received[0][0].toStringList(), args);
}

TEST(SingleInstance, NoRunningInstanceAndStaleSockets) {
    const QString dir = QString::fromStdString(test::TestEnvironment::freshFolder("instance-stale"));
    const QString name = dir + "/brimvale.socket";
    EXPECT_FALSE(SingleInstance(name).handOver({"x"}, 500)) << "nobody listens";
    // A crash leaves the socket file behind with nobody listening on it.
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    std::snprintf(addr.sun_path, sizeof addr.sun_path, "%s", name.toLocal8Bit().constData());
    ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
    ::close(fd);
    ASSERT_TRUE(test::exists(name.toStdString()));
    EXPECT_FALSE(SingleInstance(name).handOver({"x"}, 500)) << "a dead socket takes nothing";
    SingleInstance next(name);
    EXPECT_TRUE(next.listen()) << "the leftover is cleared and the name taken";
}
