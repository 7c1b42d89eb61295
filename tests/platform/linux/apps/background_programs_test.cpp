#include "platform/linux/apps/background_programs.h"

#include <gtest/gtest.h>

#include "tests/platform/linux/apps/fake_system.h"

namespace tollvane {
namespace {

using test::FakeProcess;
using test::FakeSystem;
using test::writeFile;

const std::string manager = "/user.slice/user-1000.slice/user@1000.service/";

class BackgroundProgramsTest : public ::testing::Test {
 protected:
  void autostart(const std::string& id, const std::string& text, const std::string& folder = "/etc/xdg") {
    writeFile(system.at(folder + "/autostart/" + id + ".desktop"), "[Desktop Entry]\nType=Application\n" + text);
  }
  void busService(const std::string& name, const std::string& text) {
    writeFile(system.at("/usr/share/dbus-1/services/" + name + ".service"),
              "[D-BUS Service]\nName=" + name + "\n" + text);
  }
  void unit(const std::string& name, const std::string& text, const std::string& folder = "/usr/lib/systemd/user") {
    writeFile(system.at(folder + "/" + name), text);
  }

  // The name that the desktop shows for the process; "-" for none, and with a "!" if it were an ordinary application.
  std::string nameOf(FakeProcess process) {
    process.pid = ++lastPid_;
    system.process(process);
    const auto application = system.workspace().runningApplication(process.pid);
    if (!application) return "-";
    const bool regular = application->activationPolicy == ActivationPolicy::regular;
    return application->localizedName.value_or("") + (regular ? "!" : "");
  }
  std::string nameIn(const std::string& cgroup) {
    return nameOf({.executable = system.program("/usr/bin/paplay"), .cgroup = cgroup});
  }

  FakeSystem system;
  Pid lastPid_ = 100;
};

TEST_F(BackgroundProgramsTest, AnAgentIsCalledAsItsAutostartEntrySays) {
  const std::string agent = system.program("/usr/libexec/evolution-alarm-notify");
  autostart("org.gnome.Evolution-alarm-notify", "Name=Evolution Alarm Notify\nExec=" + agent + "\n");
  EXPECT_EQ(nameOf({.executable = agent, .command = "evolution-alarm"}), "Evolution Alarm Notify");
  EXPECT_EQ(nameOf({.executable = system.program("/usr/libexec/other")}), "-");
}

TEST_F(BackgroundProgramsTest, TheUsersAutostartEntryGoesBeforeTheSystems) {
  const std::string agent = system.program("/usr/bin/agent");
  autostart("agent", "Name=Agent\nExec=agent\n");
  EXPECT_EQ(nameOf({.executable = agent}), "Agent");
  autostart("agent", "Name=My Agent\nExec=agent\n", "/home/config");
  EXPECT_EQ(nameOf({.executable = agent}), "My Agent");
}

TEST_F(BackgroundProgramsTest, AnEntryThatPlaysASoundAtLoginDoesNotOwnThePlayer) {
  const std::string player = system.program("/usr/bin/canberra-gtk-play");
  autostart("login-sound", "Name=Login Sound\nExec=canberra-gtk-play --id=desktop-login\n");
  EXPECT_EQ(nameOf({.executable = player, .arguments = {player, "--id=desktop-login"}}), "Login Sound");
  EXPECT_EQ(nameOf({.executable = player, .arguments = {player, "--id=bell"}}), "-");
}

TEST_F(BackgroundProgramsTest, AnAgentThatASessionStartedAsAUnitIsKnownByThat) {
  autostart("org.example.Agent-notify", "Name=Example Agent\nExec=sh -c 'agent --run'\n");
  EXPECT_EQ(nameIn(manager + "app.slice/app-org.example.Agent\\x2dnotify@autostart.service"), "Example Agent");
}

TEST_F(BackgroundProgramsTest, AnApplicationsEntryGoesBeforeItsAutostartEntry) {
  const std::string program = system.program("/usr/bin/chat");
  system.entry("chat", "Name=Chat\nExec=chat\n");
  autostart("chat", "Name=Chat in the background\nExec=chat --hidden\n");
  EXPECT_EQ(nameOf({.executable = program, .arguments = {program, "--hidden"}}), "Chat!");
}

TEST_F(BackgroundProgramsTest, ABusServiceIsTheApplicationOfItsNameOrOfTheNameAbove) {
  const std::string search = system.program("/usr/libexec/clocks-search");
  const std::string calendar = system.program("/usr/libexec/calendar-server");
  system.program("/usr/bin/clocks");
  system.program("/usr/bin/shell");
  system.entry("org.example.Clocks", "Name=Clocks\nExec=clocks\n");
  system.entry("org.example.Shell", "Name=Shell\nExec=shell\nNoDisplay=true\n");
  busService("org.example.Clocks", "Exec=" + search + "\n");
  busService("org.example.Shell.Calendar.Server", "Exec=" + calendar + "\n");
  EXPECT_EQ(nameOf({.executable = search}), "Clocks");
  EXPECT_EQ(nameOf({.executable = calendar}), "Shell");
}

TEST_F(BackgroundProgramsTest, ABusServiceIsItsUnitElseItsProgramAndItsName) {
  const std::string factory = system.program("/usr/libexec/calendar-factory");
  const std::string daemon = system.program("/usr/libexec/gvfsd");
  busService("org.example.dataserver.Calendar8", "Exec=" + factory + "\nSystemdService=calendar-factory.service\n");
  busService("org.example.vfs.Daemon", "Exec=" + daemon + "\nSystemdService=missing.service\n");
  unit("calendar-factory.service", "[Unit]\nDescription=Calendar service\n[Service]\nDescription=Wrong\n");
  EXPECT_EQ(nameOf({.executable = factory}), "Calendar service (calendar-factory.service)");
  EXPECT_EQ(nameOf({.executable = daemon}), "gvfsd (org.example.vfs.Daemon)");
}

TEST_F(BackgroundProgramsTest, ABusServiceThatAnInterpreterRunsIsKnownByItsScript) {
  system.program("/usr/bin/gjs");
  const std::string script = system.program("/usr/share/shell/org.example.Screencast", "#!/usr/bin/gjs\n");
  busService("org.example.Screencast", "Exec=" + system.at("/usr/bin/gjs") + " " + script + "\n");
  EXPECT_EQ(nameOf({.executable = system.at("/usr/bin/gjs"), .arguments = {"gjs", script}}),
            "org.example.Screencast (org.example.Screencast)");
  EXPECT_EQ(nameOf({.executable = system.at("/usr/bin/gjs"), .arguments = {"gjs", "/home/me/other"}}), "-");
}

TEST_F(BackgroundProgramsTest, WhatRunsInAServiceUnitIsCalledByItsDescription) {
  unit("backup.service", "# mine\n[Unit]\nDescription = Backup \nAfter=a\n\n[Service]\nExecStart=/bin/x\n");
  unit("backup.service", "[Unit]\nDescription=System Backup\n", "/etc/systemd/system");
  EXPECT_EQ(nameIn(manager + "app.slice/backup.service"), "Backup (backup.service)");
  EXPECT_EQ(nameIn(manager + "app.slice/backup.service/part"), "Backup (backup.service)");
  EXPECT_EQ(nameIn("/system.slice/backup.service"), "System Backup (backup.service)");
  EXPECT_EQ(nameIn(manager + "app.slice/other.service"), "-");
  EXPECT_EQ(nameIn(manager + "init.scope"), "-");
  EXPECT_EQ(nameIn(manager + "app.slice/backup.service/app.slice/vte-1.scope"), "-");
  EXPECT_EQ(nameIn("/user.slice/user-1000.slice/session-2.scope"), "-");
}

TEST_F(BackgroundProgramsTest, AUnitOfATemplateHasItsInstanceInItsDescription) {
  unit("remind@.service", "[Unit]\nDescription=Reminder for %i, 100%%\n");
  EXPECT_EQ(nameIn(manager + "app.slice/remind@tea.service"), "Reminder for tea, 100% (remind@tea.service)");
  unit("remind@tea.service", "[Unit]\nDescription=Tea\n", "/home/config/systemd/user");
  EXPECT_EQ(nameIn(manager + "app.slice/remind@tea.service"), "Tea (remind@tea.service)");
}

TEST_F(BackgroundProgramsTest, AUnitThatRunsAllSortsOfThingsNamesNoneOfThem) {
  for (const std::string name : {"dbus", "cron", "sshd", "gnome-session-manager@gnome", "plasma-plasmashell", "run-u7"})
    unit(name + ".service", "[Unit]\nDescription=Something\n");
  for (const std::string name : {"dbus", "cron", "sshd", "gnome-session-manager@gnome", "plasma-plasmashell", "run-u7"})
    EXPECT_EQ(nameIn(manager + "session.slice/" + name + ".service"), "-") << name;
  unit("sway.service", "[Unit]\nDescription=A compositor\nBindsTo=graphical-session.target\n");
  EXPECT_EQ(nameIn(manager + "session.slice/sway.service"), "-");
}

TEST_F(BackgroundProgramsTest, ADescriptionThatChangesIsReadAnew) {
  unit("backup.service", "[Unit]\nDescription=Backup\n");
  EXPECT_EQ(nameIn(manager + "app.slice/backup.service"), "Backup (backup.service)");
  unit("backup.service", "[Unit]\nDescription=Copy\n");
  EXPECT_EQ(nameIn(manager + "app.slice/backup.service"), "Copy (backup.service)");
}

TEST_F(BackgroundProgramsTest, BrokenFilesDoNoHarm) {
  const std::string program = system.program("/usr/bin/x");
  busService("org.example.NoExec", "");
  busService("org.example.Odd", "Exec=\"" + program + "\n");
  writeFile(system.at("/usr/share/dbus-1/services/empty.service"), "");
  autostart("nameless", "Exec=x\n");
  unit("odd.service", "Description=Outside\n[Unit]\nDescription\n=\n[Unit");
  EXPECT_EQ(nameOf({.executable = program, .cgroup = manager + "app.slice/odd.service"}), "-");
  unit("bytes.service", "[Unit]\nDescription=B\xff\n");
  EXPECT_EQ(nameIn(manager + "app.slice/bytes.service"), "B\uFFFD (bytes.service)");
}

TEST_F(BackgroundProgramsTest, AWindowMakesTheAgentOrdinaryAndLeavesTheUnitOut) {
  const std::string agent = system.program("/usr/bin/agent");
  autostart("agent", "Name=Agent\nExec=agent\n");
  unit("tool.service", "[Unit]\nDescription=Tool\n");
  system.windows.windows = {{101, "agent", "Agent-class"}, {102, "tool", "Tool-class"}};
  EXPECT_EQ(nameOf({.executable = agent}), "Agent!");
  EXPECT_EQ(nameOf({.executable = system.program("/usr/bin/tool"), .cgroup = manager + "app.slice/tool.service"}),
            "Tool-class!");
}

TEST_F(BackgroundProgramsTest, ABackgroundProgramHasNoIdAndNoEntry) {
  unit("backup.service", "[Unit]\nDescription=Backup\n");
  system.process({.pid = 50, .executable = system.program("/usr/bin/x"), .cgroup = manager + "backup.service"});
  const auto application = system.applications().of(50);
  ASSERT_TRUE(application);
  EXPECT_EQ(application->entry, nullptr);
  EXPECT_EQ(application->id, "");
  EXPECT_TRUE(application->isBackground());
  EXPECT_FALSE(application->isRegular());
}

}  // namespace
}  // namespace tollvane
