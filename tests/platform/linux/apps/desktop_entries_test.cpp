#include "platform/linux/apps/desktop_entries.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "tests/platform/linux/apps/fake_system.h"
#include "tests/support/process.h"

namespace tollvane {
namespace {

namespace fs = std::filesystem;
using test::FakeSystem;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

DesktopEntries& refreshed(FakeSystem& system) {
  system.entries().refresh();
  return system.entries();
}

std::string nameOf(const DesktopEntries::Entry& entry) { return entry ? entry->name : "(none)"; }

TEST(DesktopEntries, TheFirstFolderWinsAnId) {
  FakeSystem system;
  system.entry("player", "Name=System's\nExec=player\n");
  system.entry("player", "Name=Mine\nExec=player\n", "/home/share");
  EXPECT_EQ(nameOf(refreshed(system).withId("player")), "Mine");
  EXPECT_THAT(system.entries().programs().all(), SizeIs(1));
}

TEST(DesktopEntries, AnUnreadableOverrideDoesNotHideTheEntryBelow) {
  FakeSystem system;
  system.entry("player", "Name=System's\nExec=player\n");
  test::writeFile(system.at("/home/share/applications/player.desktop"),
                  "\x7f"
                  "ELF nonsense");
  EXPECT_EQ(nameOf(refreshed(system).withId("player")), "System's");
}

TEST(DesktopEntries, SubfoldersArePartOfTheId) {
  FakeSystem system;
  system.entry("kde4/okular", "Name=Okular\nExec=okular\n");
  system.entry("a/b/c", "Name=Deep\nExec=c\n");
  EXPECT_EQ(nameOf(refreshed(system).withId("kde4-okular")), "Okular");
  EXPECT_EQ(nameOf(system.entries().withId("a-b-c")), "Deep");
  EXPECT_EQ(system.entries().withId("okular"), nullptr);
}

TEST(DesktopEntries, IdsAreFoundWithTheirSuffixAndInAnyCase) {
  FakeSystem system;
  system.entry("org.example.Player", "Name=Player\nExec=player\n");
  const DesktopEntries& entries = refreshed(system);
  EXPECT_EQ(nameOf(entries.withId("org.example.Player")), "Player");
  EXPECT_EQ(nameOf(entries.withId("org.example.Player.desktop")), "Player");
  EXPECT_EQ(nameOf(entries.withId("ORG.example.player")), "Player");
  EXPECT_EQ(entries.withId("org.example"), nullptr);
  EXPECT_EQ(entries.withId(""), nullptr);
}

TEST(DesktopEntries, OddThingsInTheFoldersDoNoHarm) {
  FakeSystem system;
  const fs::path folder = system.at("/usr/share/applications");
  system.entry("good", "Name=Good\nExec=good\n");
  ASSERT_EQ(::mkfifo((folder / "pipe.desktop").c_str(), 0600), 0);
  fs::create_directories(folder / "folder.desktop");
  fs::create_directory_symlink(folder, folder / "circle");
  fs::create_directory_symlink(folder.parent_path(), folder / "outside");
  fs::create_symlink("self.desktop", folder / "self.desktop");
  fs::create_symlink("/nonexistent", folder / "dangling.desktop");
  test::writeFile(folder / "huge.desktop", std::string(3'000'000, 'x'));
  std::string binary;
  for (int i = 0; i < 100'000; ++i) binary += static_cast<char>(i * 7919 >> 3);
  test::writeFile(folder / "binary.desktop", binary);
  test::writeFile(folder / "caf\xe9.desktop", "[Desktop Entry]\nType=Application\nName=Caf\xe9\nExec=cafe\n");
  test::writeFile(folder / ".desktop", "[Desktop Entry]\nType=Application\nName=Nameless\n");
  test::writeFile(folder / "locked.desktop", "[Desktop Entry]\nType=Application\nName=Locked\n");
  fs::permissions(folder / "locked.desktop", fs::perms::none);

  const DesktopEntries& entries = refreshed(system);
  EXPECT_EQ(nameOf(entries.withId("good")), "Good");
  EXPECT_EQ(nameOf(entries.withId("caf\xe9")), "Caf\uFFFD");
  for (const char* id : {"pipe", "folder", "self", "dangling", "huge", "binary", "circle-good", "outside-good"})
    EXPECT_EQ(entries.withId(id), nullptr) << id;
}

TEST(DesktopEntries, ChangesAreSeenAtTheNextRefresh) {
  FakeSystem system;
  system.entry("one", "Name=One\nExec=one\n");
  DesktopEntries& entries = refreshed(system);
  // As long as the files are so new that a change may leave them the same times, they are read each time.
  const auto nothingIsReadAgain = [&] {
    const auto before = entries.generation();
    entries.refresh();
    return entries.generation() == before;
  };
  EXPECT_TRUE(test::waitUntil(nothingIsReadAgain)) << "nothing changed";

  const fs::path two = system.entry("two", "Name=Two\nExec=two\n");
  entries.refresh();
  EXPECT_EQ(nameOf(entries.withId("two")), "Two");

  fs::remove(two);
  entries.refresh();
  EXPECT_EQ(entries.withId("two"), nullptr);
  EXPECT_EQ(nameOf(entries.withId("one")), "One");
}

TEST(DesktopEntries, ChangesThatFollowEachOtherAtOnceAreAllSeen) {
  FakeSystem system;
  DesktopEntries& entries = refreshed(system);
  // If two changes fall into one tick of the file system's clock, the folder's time is the same after both.
  for (int i = 0; i < 200; ++i) {
    const std::string id = "entry" + std::to_string(i);
    system.entry(id, "Name=" + id + "\nExec=x\n");
    entries.refresh();
    ASSERT_EQ(nameOf(entries.withId(id)), id);
  }
}

TEST(DesktopEntries, AFolderThatAppearsLaterIsSeen) {
  FakeSystem system;
  DesktopEntries& entries = refreshed(system);
  EXPECT_THAT(entries.programs().all(), IsEmpty());
  system.entry("new", "Name=New\nExec=new\n", "/home/share");
  entries.refresh();
  EXPECT_EQ(nameOf(entries.withId("new")), "New");
  system.entry("below/newer", "Name=Newer\nExec=newer\n", "/home/share");
  entries.refresh();
  EXPECT_EQ(nameOf(entries.withId("below-newer")), "Newer");
}

TEST(DesktopEntries, AFileThatWasReplacedIsReadAgainAndTheOthersAreKept) {
  FakeSystem system;
  system.entry("kept", "Name=Kept\nExec=kept\n");
  const fs::path file = system.entry("player", "Name=Old\nExec=player\n");
  DesktopEntries& entries = refreshed(system);
  test::writeFile(file.string() + ".new", "[Desktop Entry]\nType=Application\nName=New\nExec=player\n");
  fs::rename(file.string() + ".new", file);
  entries.refresh();
  EXPECT_EQ(nameOf(entries.withId("player")), "New");
  EXPECT_EQ(nameOf(entries.withId("kept")), "Kept");
}

TEST(DesktopEntries, AFileThatWasWrittenInPlaceIsReadAgainBeforeItIsUsed) {
  FakeSystem system;
  system.program("/usr/bin/player");
  const fs::path file = system.entry("player", "Name=Old\nExec=player\n");
  system.process({.pid = 100, .executable = system.at("/usr/bin/player")});
  EXPECT_EQ(system.workspace().runningApplication(100)->localizedName, "Old");
  test::writeFile(file, "[Desktop Entry]\nType=Application\nName=Changed\nExec=player\n");
  EXPECT_EQ(system.workspace().runningApplication(100)->localizedName, "Changed");
}

std::string entryText(const std::string& name, const std::string& program) {
  return "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + program + "\n";
}

TEST(DesktopEntries, AFileThatWasWrittenInPlaceIsReadAgainAtTheNextRefresh) {
  FakeSystem system;
  system.program("/usr/bin/player");
  system.program("/usr/bin/other");
  const fs::path file = system.entry("player", "Name=Old\nExec=player\n");
  DesktopEntries& entries = refreshed(system);
  system.process({.pid = 100, .executable = system.at("/usr/bin/other")});
  EXPECT_EQ(system.workspace().runningApplication(100), std::nullopt);
  for (const std::string name : {"One", "Two", "Six"}) {  // of one length, and perhaps within one tick of the clock
    test::writeFile(file, entryText(name, "other"));
    entries.refresh();
    EXPECT_EQ(nameOf(entries.withId("player")), name);
    EXPECT_EQ(system.workspace().displayName(file), name);
    EXPECT_EQ(system.workspace().urlForApplicationNamed(name), file);
    EXPECT_EQ(system.workspace().runningApplication(100)->localizedName, name);
  }
}

TEST(DesktopEntries, AnEntryThatIsALinkIsAsItsTargetIsNow) {
  FakeSystem system;
  test::writeFile(system.at("/opt/one/player.desktop"), entryText("One", "player"));
  test::writeFile(system.at("/opt/two/player.desktop"), entryText("Two", "player"));
  system.link("/opt/current", "/opt/one");
  system.link("/usr/share/applications/player.desktop", "/opt/current/player.desktop");
  DesktopEntries& entries = refreshed(system);
  EXPECT_EQ(nameOf(entries.withId("player")), "One");
  test::writeFile(system.at("/opt/one/player.desktop"), entryText("New", "player"));
  entries.refresh();
  EXPECT_EQ(nameOf(entries.withId("player")), "New") << "the target was written to";
  system.link("/opt/next", "/opt/two");
  fs::rename(system.at("/opt/next"), system.at("/opt/current"));
  entries.refresh();
  EXPECT_EQ(nameOf(entries.withId("player")), "Two") << "a link on the way leads elsewhere";
  fs::remove(system.at("/opt/two/player.desktop"));
  entries.refresh();
  EXPECT_EQ(entries.withId("player"), nullptr);
  test::writeFile(system.at("/opt/two/player.desktop"), entryText("Back", "player"));
  entries.refresh();
  EXPECT_EQ(nameOf(entries.withId("player")), "Back");
}

TEST(DesktopEntries, AFolderThatIsALinkIsAsItsTargetIsNow) {
  FakeSystem system;
  for (const std::string name : {"one", "two"})
    test::writeFile(system.at("/opt/" + name + "/player.desktop"), entryText(name, "player"));
  system.link("/usr/share/applications", "/opt/one");
  DesktopEntries& entries = refreshed(system);
  EXPECT_EQ(nameOf(entries.withId("player")), "one");
  fs::remove(system.at("/usr/share/applications"));
  system.link("/usr/share/applications", "/opt/two");
  entries.refresh();
  EXPECT_EQ(nameOf(entries.withId("player")), "two");
  test::writeFile(system.at("/opt/two/player.desktop"), entryText("new", "player"));
  entries.refresh();
  EXPECT_EQ(nameOf(entries.withId("player")), "new");
}

TEST(DesktopEntries, AHiddenEntryHidesTheEntryBelow) {
  FakeSystem system;
  system.entry("player", "Name=Player\nExec=player\n");
  test::writeFile(system.at("/home/share/applications/player.desktop"), "[Desktop Entry]\nHidden=true\n");
  const auto entry = refreshed(system).withId("player");
  ASSERT_NE(entry, nullptr);
  EXPECT_TRUE(entry->hidden);
  EXPECT_EQ(system.entries().named("Player"), nullptr);
  EXPECT_FALSE(system.workspace().urlForApplication("player"));
}

}  // namespace
}  // namespace tollvane
