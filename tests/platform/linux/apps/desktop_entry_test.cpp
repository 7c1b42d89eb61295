#include "platform/linux/apps/desktop_entry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "tests/platform/linux/apps/fake_system.h"
#include "tests/support/environment.h"

namespace tollvane {
namespace {

using test::FakeSystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::optional<DesktopEntry> parsed(const std::string& keys, std::string_view desktop = "") {
  return parseDesktopEntry("[Desktop Entry]\nType=Application\n" + keys, desktop);
}

// The variables that decide the language. Variables that are not listed are not set.
using LanguageVariables = std::vector<test::Environment::Variable>;

TEST(DesktopEntry, OnlyApplicationsAreRead) {
  EXPECT_TRUE(parseDesktopEntry("[Desktop Entry]\nType=Application\nName=A\n", ""));
  for (const char* text : {"", "[Desktop Entry]\n", "[Desktop Entry]\nType=Link\nName=A\n", "Type=Application\n",
                           "[Other]\nType=Application\n", "[Desktop Entry]\nType=Directory\n", "\177ELF\x02\x01\x01"}) {
    EXPECT_FALSE(parseDesktopEntry(text, "")) << text;
  }
  EXPECT_FALSE(parseDesktopEntry(std::string(5000, '\0'), ""));
}

TEST(DesktopEntry, TheNameIsInTheUsersLanguage) {
  const std::string keys = "Name=Files\nName[de]=Dateien\nName[de_AT]=Akten\nName[sr@latin]=Datoteke\n";
  const auto nameWith = [&](const LanguageVariables& languages) {
    const test::Environment none{
        {"LANGUAGE", nullptr}, {"LC_ALL", nullptr}, {"LC_MESSAGES", nullptr}, {"LANG", nullptr}};
    const test::Environment wanted(languages);
    return parsed(keys)->name;
  };
  EXPECT_EQ(nameWith({}), "Files");
  EXPECT_EQ(nameWith({{"LANG", "C.UTF-8"}}), "Files");
  EXPECT_EQ(nameWith({{"LANG", "de_DE.UTF-8"}}), "Dateien");
  EXPECT_EQ(nameWith({{"LANG", "de_AT.UTF-8"}}), "Akten");
  EXPECT_EQ(nameWith({{"LANG", "sr_RS.UTF-8@latin"}}), "Datoteke");
  EXPECT_EQ(nameWith({{"LANG", "de_DE.UTF-8"}, {"LC_MESSAGES", "fr_FR.UTF-8"}}), "Files");
  EXPECT_EQ(nameWith({{"LANG", "fr_FR.UTF-8"}, {"LC_ALL", "de_DE.UTF-8"}, {"LC_MESSAGES", "fr_FR.UTF-8"}}), "Dateien");
}

TEST(DesktopEntry, TheCommandHasNeitherFieldCodesNorVariables) {
  struct Row {
    const char* exec;
    std::vector<std::string> command;
  };
  const Row rows[] = {
      {"firefox-esr %u", {"firefox-esr"}},
      {"\"/opt/My App/run\" --name=%c --x '%f' 100%%", {"/opt/My App/run", "--x", "100%"}},
      {"env A=b LD_PRELOAD= /snap/bin/vlc %U", {"/snap/bin/vlc"}},
      {"/usr/bin/flatpak run --command=x --file-forwarding org.x.X @@u %u @@",
       {"/usr/bin/flatpak", "run", "--command=x", "--file-forwarding", "org.x.X"}},
      {"sh -c \"sleep 1 && player\"", {"sh", "-c", "sleep 1 && player"}},
      {"unbalanced \"quote", {}},
      {"", {}},
      {"   ", {}},
  };
  for (const Row& row : rows)
    EXPECT_EQ(parsed(std::string("Name=x\nExec=") + row.exec + "\n")->command, row.command) << row.exec;
}

TEST(DesktopEntry, OrdinaryApplicationsAreRegularAndTheOthersAreNot) {
  EXPECT_TRUE(parsed("Name=A\nExec=a\n")->isRegular());
  EXPECT_FALSE(parsed("Name=A\nNoDisplay=true\n")->isRegular());
  EXPECT_FALSE(parsed("Name=A\nHidden=true\n")->isRegular());
  EXPECT_FALSE(parsed("Name=A\nTerminal=true\n")->isRegular());
}

TEST(DesktopEntry, TheCurrentDesktopDecidesWhereAnEntryIsShown) {
  EXPECT_TRUE(parsed("Name=A\n", "XFCE")->isRegular());
  EXPECT_TRUE(parsed("Name=A\nOnlyShowIn=GNOME;XFCE;\n", "XFCE")->isRegular());
  EXPECT_FALSE(parsed("Name=A\nOnlyShowIn=GNOME;\n", "XFCE")->isRegular());
  EXPECT_FALSE(parsed("Name=A\nOnlyShowIn=GNOME;\n", "")->isRegular());
  EXPECT_FALSE(parsed("Name=A\nNotShowIn=XFCE;\n", "XFCE")->isRegular());
  EXPECT_TRUE(parsed("Name=A\nNotShowIn=KDE;\n", "XFCE")->isRegular());
  // The first of the desktop's names that the entry mentions decides.
  EXPECT_TRUE(parsed("Name=A\nOnlyShowIn=Phosh;\nNotShowIn=GNOME;\n", "Phosh:GNOME")->isRegular());
  EXPECT_FALSE(parsed("Name=A\nOnlyShowIn=GNOME;\nNotShowIn=Phosh;\n", "Phosh:GNOME")->isRegular());
}

TEST(DesktopEntry, OnlyTheFirstGroupCounts) {
  const auto entry = parsed("Name=Browser\nExec=browser\n[Desktop Action private]\nName=Private\nExec=browser -p\n");
  EXPECT_EQ(entry->name, "Browser");
  EXPECT_THAT(entry->command, ElementsAre("browser"));
}

TEST(DesktopEntry, TextThatIsNotUtf8GetsReplacementCharacters) {
  EXPECT_EQ(parsed("Name=M\xfcsli\nExec=a\n")->name, "M\uFFFDsli");
  EXPECT_EQ(parsed("Name=Caf\xc3\xa9\nExec=a\n")->name, "Café");
  EXPECT_EQ(parsed(std::string("Name=a\0b\nExec=a\n", 16))->name, "a\uFFFDb");
}

TEST(DesktopEntry, AHiddenEntryNeedsNoName) {
  const auto entry = parseDesktopEntry("[Desktop Entry]\nHidden=true\n", "");
  ASSERT_TRUE(entry);
  EXPECT_TRUE(entry->hidden);
  EXPECT_EQ(entry->name, "");
}

TEST(DesktopEntry, CategoriesTellTerminalsFileManagersAndBrowsers) {
  EXPECT_TRUE(parsed("Name=A\nCategories=GTK;System;TerminalEmulator;\n")->isTerminalEmulator);
  EXPECT_TRUE(parsed("Name=A\nCategories=FileManager;\n")->isFileManager);
  EXPECT_TRUE(parsed("Name=A\nCategories=Network;WebBrowser;\n")->isWebBrowser);
  EXPECT_FALSE(parsed("Name=A\nCategories=XTerminalEmulator;\n")->isTerminalEmulator);
}

TEST(DesktopEntryFile, OnlyPlainFilesAreRead) {
  FakeSystem system;
  const std::string pipe = system.at("/pipe.desktop");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_FALSE(readDesktopEntry(pipe, ""));
  EXPECT_FALSE(readDesktopEntry(system.at(""), ""));
  EXPECT_FALSE(readDesktopEntry("/dev/zero", ""));
  EXPECT_FALSE(readDesktopEntry(system.at("/missing.desktop"), ""));
  system.link("/loop.desktop", "loop.desktop");
  EXPECT_FALSE(readDesktopEntry(system.at("/loop.desktop"), ""));
}

TEST(DesktopEntryFile, AnAbsurdlyLongFileIsNotRead) {
  FakeSystem system;
  const std::string head = "[Desktop Entry]\nType=Application\nName=Long\n";
  test::writeFile(system.at("/long.desktop"), head + "#" + std::string(900'000, 'x') + "\n");
  EXPECT_TRUE(readDesktopEntry(system.at("/long.desktop"), ""));
  test::writeFile(system.at("/longer.desktop"), head + "#" + std::string(2'000'000, 'x') + "\n");
  EXPECT_FALSE(readDesktopEntry(system.at("/longer.desktop"), ""));
}

TEST(FindPrograms, TheSearchPathAndLinksAreFollowed) {
  FakeSystem system;
  const std::string real = system.program("/opt/google/chrome/google-chrome");
  system.link("/usr/bin/google-chrome-stable", "/opt/google/chrome/google-chrome");
  auto entry = *parsed("Name=A\nExec=google-chrome-stable %U\nTryExec=google-chrome-stable\n");
  findPrograms(entry, "relative:" + system.at("/none") + ":" + system.at("/usr/bin"));
  EXPECT_EQ(entry.program, system.at("/usr/bin/google-chrome-stable"));
  EXPECT_EQ(entry.realProgram, real);
  EXPECT_EQ(entry.realTryExec, real);
  EXPECT_TRUE(entry.installed);
}

TEST(FindPrograms, AMissingTryExecMeansNotInstalled) {
  FakeSystem system;
  system.program("/usr/bin/a");
  auto entry = *parsed("Name=A\nExec=a\nTryExec=b\n");
  findPrograms(entry, system.at("/usr/bin"));
  EXPECT_FALSE(entry.installed);
  EXPECT_FALSE(entry.isRegular());
}

TEST(FindPrograms, InterpretersAndLaunchersAreNotTheProgramOfAnEntry) {
  FakeSystem system;
  for (const char* name : {"python3", "flatpak", "sh", "snap"}) system.program(std::string("/usr/bin/") + name);
  const std::string script = system.program("/usr/share/tuner/tuner.py");
  system.link("/usr/bin/firefox", "snap");
  const auto found = [&](const std::string& exec) {
    auto entry = *parsed("Name=A\nExec=" + exec + "\n");
    findPrograms(entry, system.at("/usr/bin"));
    return entry;
  };
  EXPECT_EQ(found("sh -c 'x'").program, "");
  EXPECT_EQ(found("flatpak run org.x.X").realProgram, "");
  EXPECT_EQ(found("python3 " + script + " %U").script, script);
  EXPECT_EQ(found("python3 " + script).program, "");
  EXPECT_EQ(found("python3 -m tuner").script, "tuner");
  EXPECT_EQ(found("wine \"C:\\\\\\\\Games\\\\\\\\Chess.exe\"").script, "chess.exe");
  // A link to the program snap: the name of the link says which application it is, its target does not.
  EXPECT_EQ(found("firefox").program, system.at("/usr/bin/firefox"));
  EXPECT_EQ(found("firefox").realProgram, "");
  EXPECT_TRUE(found("python3").isInterpretersOwn());
  EXPECT_FALSE(found("python3 " + script).isInterpretersOwn());
}

}  // namespace
}  // namespace tollvane
