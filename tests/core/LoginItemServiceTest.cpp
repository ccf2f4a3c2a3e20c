#include <gtest/gtest.h>

#include "core/LoginItemService.h"
#include "foundation/FileIO.h"
#include "support/TestEnvironment.h"

using namespace bv;

TEST(LoginItemService, WritesAndRemovesItsAutostartEntry) {
    const std::string dir = test::TestEnvironment::freshFolder("login") + "/config/autostart"; // made on demand
    const LoginItemService service(dir, "/opt/My Apps/brim\"vale$");
    EXPECT_EQ(service.status(), LoginItemService::Status::off);

    service.setEnabled(true);
    EXPECT_EQ(service.status(), LoginItemService::Status::enabled);
    const std::string text = *readWholeFile(dir + "/brimvale.desktop");
    EXPECT_NE(text.find("Exec=\"/opt/My Apps/brim\\\\\"vale\\\\$\"\n"), std::string::npos) << text;

    service.setEnabled(true); // already enabled: nothing to do, no failure
    service.setEnabled(false);
    EXPECT_FALSE(test::exists(dir + "/brimvale.desktop"));
    service.setEnabled(false); // nothing registered: nothing to do
    EXPECT_EQ(service.status(), LoginItemService::Status::off);
}

TEST(LoginItemService, AnEntrySwitchedOffByTheSessionReadsOff) {
    const std::string dir = test::TestEnvironment::freshFolder("login-off");
    const LoginItemService service(dir, "/usr/bin/brimvale");
    const std::pair<const char*, LoginItemService::Status> cases[] = {
        {"[Desktop Entry]\nExec=brimvale\nHidden=true\n", LoginItemService::Status::off},
        {"[Desktop Entry]\nExec=brimvale\nX-GNOME-Autostart-enabled=false\n", LoginItemService::Status::off},
        {"[Desktop Entry]\nExec=brimvale\n[Desktop Action x]\nHidden=true\n", LoginItemService::Status::enabled},
    };
    for (const auto& [content, expected] : cases) {
        test::writeFile(dir + "/brimvale.desktop", content);
        EXPECT_EQ(service.status(), expected) << content;
    }
    // Turning it on again rewrites a switched-off entry.
    test::writeFile(dir + "/brimvale.desktop", "[Desktop Entry]\nHidden=true\n");
    service.setEnabled(true);
    EXPECT_EQ(service.status(), LoginItemService::Status::enabled);
}

TEST(LoginItemService, FailuresSayWhatCouldNotBeDone) {
    // A file where the autostart folder should be makes registering fail, even for root.
    const std::string base = test::TestEnvironment::freshFolder("login-fail");
    test::writeFile(base + "/autostart", "not a folder");
    const LoginItemService broken(base + "/autostart", "/usr/bin/brimvale");
    try {
        broken.setEnabled(true);
        FAIL() << "registering into a file cannot work";
    } catch (const LoginItemService::Error& e) {
        EXPECT_EQ(std::string(e.what()).rfind("The autostart folder " + base + "/autostart couldn’t be made", 0), 0u)
            << e.what();
    }
    EXPECT_EQ(broken.status(), LoginItemService::Status::off);
    broken.setEnabled(false); // nothing registered: no failure
}
