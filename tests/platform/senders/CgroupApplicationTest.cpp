#include <gtest/gtest.h>

#include "platform/senders/CgroupApplication.h"

namespace platform {
namespace {

const std::string kUser = "/user.slice/user-1000.slice/user@1000.service";
const std::string kApps = kUser + "/app.slice/";
const std::string kSystem = "/system.slice/";
const std::string kUUID = "0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0";
const std::string kHash(64, 'c');

struct Row {
  std::string path;
  std::string application;  // "" for none
};

const Row kRows[] = {
    {kApps + "app-flatpak-org.mozilla.firefox-12345.scope", "org.mozilla.firefox"},
    {kApps + "app-flatpak-org.example.My-App-1.scope", "org.example.My-App"},
    {kApps + "app-flatpak-org.example.My\\x2dApp-1.scope", "org.example.My-App"},
    {kApps + "app-flatpak-org.example.App-x1.scope", "org.example.App"},  // "flatpak" the launcher
    {kApps + "snap.firefox.firefox-" + kUUID + ".scope", "snap.firefox.firefox"},
    {kApps + "snap.code_insiders.url-handler-" + kUUID + ".scope",
     "snap.code_insiders.url-handler"},
    {kApps + "snap.firefox.firefox." + kUUID + ".scope", "snap.firefox.firefox"},
    {kApps + "snap.firefox.hook.configure-" + kUUID + ".scope", "snap.firefox.hook.configure"},
    {kSystem + "snap.lxd.hook.install." + kUUID + ".scope", "snap.lxd.hook.install"},
    {kSystem + "snap.cups.cupsd.service", "snap.cups.cupsd"},
    {"/snap.lxd.user\\x2ddaemon.service", "snap.lxd.user-daemon"},
    {kApps + "snap.firefox-" + kUUID + ".scope", ""},
    {kApps + "snap.firefox.firefox-" + kUUID.substr(1) + ".scope", ""},
    {kApps + "app-gnome-org.gnome.Evince-4321.scope", "org.gnome.Evince"},
    {kApps + "app-org.kde.konsole-8f6b0c.scope", "org.kde.konsole"},
    {kApps + "app-KDE-org.kde.dolphin-" + kUUID + ".scope", "org.kde.dolphin"},
    {kApps + "app-gnome-gnome\\x2dterminal-7.scope", "gnome-terminal"},
    {kApps + "app-gnome-two-words-7.scope", "two-words"},
    {kApps + "app-gnome-\\xc3\\xa9\\x5c-7.scope", "\xc3\xa9\\"},
    {kApps + "app-a\\x2-b\\xzz\\x00\\x-7.scope", "b\\xzz\\x00\\x"},
    {kApps + "app-org.example.App.scope", ""},
    {kApps + "app--7.scope", ""},
    {kApps + "app-org.kde.kate@9c0f.service", "org.kde.kate"},
    {kApps + "app-org.kde.kate.service", "org.kde.kate"},
    {kApps + "app-gnome-user\\x2ddirs@autostart.service", "user-dirs"},
    {kUser + "/foo.slice/app-gnome-org.gnome.Maps@1.service", "org.gnome.Maps"},
    {kApps + "app-gnome-org.gnome.Evince-4321.scope/tab/1", "org.gnome.Evince"},
    {kApps + "app-.service", "app-.service"},
    {kSystem + "cups.service", "cups.service"},
    {kSystem + "cups.service/worker", "cups.service"},
    {kSystem + "system-getty.slice/getty@tty1.service", "getty@tty1.service"},
    {kSystem + "a\\x2db.service", "a\\x2db.service"},
    {kUser + "/session.slice/org.gnome.Shell@wayland.service", "org.gnome.Shell@wayland.service"},
    {kUser + "/background.slice/tracker.service", "tracker.service"},
    {kApps + "app-dbus\\x2d:1.2\\x2dx.slice/dbus-:1.2-org.x@0.service",
     "dbus-:1.2-org.x@0.service"},
    {kApps + "outer.service/app-flatpak-org.example.Inner-1.scope", "org.example.Inner"},
    {kApps + "app-gnome-outer-1.scope/app.slice/inner.service", "inner.service"},
    {"/user.slice/user-1000.slice/session-2.scope", ""},
    {kApps + "app-org.gnome.Terminal.slice/vte-spawn-" + kUUID + ".scope", ""},
    {kUser, ""},
    {kUser + "/init.scope", ""},
    {kUser + "/other.slice/some.service", ""},
    {"/user.slice/user-1000.slice/user-runtime-dir@1000.service", ""},
    {kSystem + "user@1000.service", ""},
    {"/init.scope", ""},
    {"/", ""},
    {"", ""},
    {"///", ""},
    {kSystem, ""},
    {kSystem + ".service", ".service"},
    {kSystem + "docker-" + kHash + ".scope", ""},
    {kSystem + "docker-" + kHash + ".scope/system.slice/cups.service", ""},
    {kUser + "/user.slice/libpod-" + kHash + ".scope/container/system.slice/cups.service", ""},
    {kApps + "app-gnome-outer-1.scope/libpod-" + kHash + ".scope/app-x-1.scope", ""},
    {"/docker/" + kHash + "/system.slice/cups.service", ""},
    {"/kubepods.slice/pod1.slice/cri-containerd-" + kHash + ".scope/system.slice/a.service", ""},
    {"/lxc.payload.web/system.slice/cups.service", ""},
    {"/machine.slice/systemd-nspawn@web.service/payload/system.slice/cups.service", ""},
    {kSystem + "web.service/payload/system.slice/cups.service", ""},
};

TEST(CgroupApplication, IsNamedByTheInnermostUnit) {
  for (const auto& [path, application] : kRows) {
    EXPECT_EQ(cgroupApplication(path).value_or(""), application) << path;
  }
}

}  // namespace
}  // namespace platform
