#include "platform/senders/CgroupApplication.h"
#include "tests/platform/Test.h"

namespace platform::test {

const std::string kUser = "/user.slice/user-1000.slice/user@1000.service";
const std::string kApps = kUser + "/app.slice/";
const std::string kSystem = "/system.slice/";
const std::string kUUID = "0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0";
const std::string kHash(64, 'c');

/// "" for none.
std::string applicationOf(const std::string& path) { return cgroupApplication(path).value_or(""); }

TEST(CgroupApplication, IsNamedByTheInnermostUnit) {
  expectEach(applicationOf,
             {{kApps + "app-flatpak-org.mozilla.firefox-12345.scope", "org.mozilla.firefox"},
              {kApps + "app-flatpak-org.example.My\\x2dApp-1.scope", "org.example.My-App"},
              // "flatpak" is the launcher.
              {kApps + "app-flatpak-org.example.App-x1.scope", "org.example.App"},
              {kApps + "snap.firefox.firefox-" + kUUID + ".scope", "snap.firefox.firefox"},
              {kApps + "snap.firefox.firefox." + kUUID + ".scope", "snap.firefox.firefox"},
              {kApps + "snap.firefox.hook.run-" + kUUID + ".scope", "snap.firefox.hook.run"},
              {kSystem + "snap.cups.cupsd.service", "snap.cups.cupsd"},
              {"/snap.lxd.user\\x2ddaemon.service", "snap.lxd.user-daemon"},
              {kApps + "snap.firefox-" + kUUID + ".scope", ""},
              {kApps + "snap.firefox.firefox-" + kUUID.substr(1) + ".scope", ""},
              {kApps + "app-gnome-org.gnome.Evince-4321.scope", "org.gnome.Evince"},
              {kApps + "app-org.kde.konsole-8f6b0c.scope", "org.kde.konsole"},
              {kApps + "app-gnome-gnome\\x2dterminal-7.scope", "gnome-terminal"},
              {kApps + "app-gnome-two-words-7.scope", "two-words"},
              {kApps + "app-gnome-\\xc3\\xa9\\x5c-7.scope", "\xc3\xa9\\"},
              {kApps + "app-a\\x2-b\\xzz\\x00\\x-7.scope", "b\\xzz\\x00\\x"},
              {kApps + "app-org.example.App.scope", ""},
              {kApps + "app--7.scope", ""},
              {kApps + "app-org.kde.kate@9c0f.service", "org.kde.kate"},
              {kSystem + "cups.service", "cups.service"},
              {kSystem + "cups.service/worker", "cups.service"},
              {kApps + "app-dbus\\x2d:1.2.slice/dbus-:1.2-x@0.service", "dbus-:1.2-x@0.service"},
              {kApps + "outer.service/app-flatpak-org.example.Inner-1.scope", "org.example.Inner"},
              {kApps + "app-gnome-outer-1.scope/app.slice/inner.service", "inner.service"},
              {"/user.slice/user-1000.slice/session-2.scope", ""},
              {kUser + "/init.scope", ""},
              {kUser + "/other.slice/some.service", ""},
              {kSystem + "user@1000.service", ""},
              {"", ""},
              {kSystem + "docker-" + kHash + ".scope", ""},
              {kUser + "/user.slice/libpod-" + kHash + ".scope/inner/system.slice/a.service", ""},
              {kApps + "app-gnome-outer-1.scope/libpod-" + kHash + ".scope/app-x-1.scope", ""},
              {"/docker/" + kHash + "/system.slice/cups.service", ""},
              {"/kubepods.slice/cri-containerd-" + kHash + ".scope/system.slice/a.service", ""},
              {"/lxc.payload.web/system.slice/cups.service", ""}});
}

}  // namespace platform::test
