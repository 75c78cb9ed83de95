#include "tests/cockpit/model/World.h"

namespace mervo {
namespace {

using Settings = test::World;

TEST_F(Settings, changeOneFieldAndKeepWhatOthersWrote)
{
    start();
    lower();
    auto& settings = *model->settings();
    settings.setTerminalApp("iTerm");
    settings.setNotifyEmail("  me@example.org\n");
    settings.setNotifyIMessageHandle(" +32 ");
    settings.setAskChannel("cockpit");
    settings.setAskCleanup("off");
    auto config = HarnessConfig::load();
    EXPECT_EQ(config.autonomyMode, AutonomyMode::panic);
    EXPECT_EQ(config.terminalApp.value_or("") + config.notifyEmail + config.notifyIMessageHandle.value_or("")
            + config.askChannel + config.askCleanup,
        "iTermme@example.org+32cockpitoff");
    settings.setTerminalApp("");
    settings.setNotifyIMessageHandle(" ");
    settings.setAskChannel("pigeon");
    settings.setAskCleanup("burn");
    config = HarnessConfig::load();
    EXPECT_EQ(config.terminalApp, std::nullopt);
    EXPECT_EQ(config.notifyIMessageHandle, std::nullopt);
    EXPECT_EQ(config.askChannel + config.askCleanup, "mailarchive");
    EXPECT_EQ(settings.terminalApp() + settings.askCleanup(), "archive");

    model->settings()->setLaunchAtLogin(true);
    EXPECT_TRUE(settings.launchAtLogin());
    loginItem.refuses = true;
    model->settings()->setLaunchAtLogin(false);
    EXPECT_TRUE(settings.launchAtLogin()) << "the truth of the service";
    EXPECT_EQ(result(), "❌ launch at login - the folder is read-only");
}

} // namespace
} // namespace mervo
