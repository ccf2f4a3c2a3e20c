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
