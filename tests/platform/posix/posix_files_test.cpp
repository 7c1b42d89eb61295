#include "platform/posix/posix_files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

#include "tests/support/temporary_directory.h"

// The two system calls whose order decides what is left after a power cut: written down, and then done.
namespace {
std::string calls;
}
extern "C" int fsync(int descriptor) {
  calls += "fsync ";
  return static_cast<int>(::syscall(SYS_fsync, descriptor));
}
extern "C" int rename(const char* from, const char* to) noexcept {
  calls += "rename ";
  return static_cast<int>(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

namespace tollvane {
namespace {

using std::filesystem::perms;
using test::modeOf;

constexpr perms ownFile = perms::owner_read | perms::owner_write;

class PosixFilesTest : public testing::Test {
 protected:
  test::TemporaryDirectory home;
  PosixFiles files;
};

TEST_F(PosixFilesTest, ANewContentIsOnTheDiskBeforeItTakesTheOldOnesPlace) {
  calls.clear();
  EXPECT_TRUE(files.writeAtomically(home / "settings", "new"));
  EXPECT_EQ(calls, "fsync rename fsync ") << "the file, its place, and the folder";
}

TEST_F(PosixFilesTest, DirectoriesAreMadeForTheUserOnly) {
  EXPECT_TRUE(files.createDirectories(home / "a/b/c"));
  for (const auto* name : {"a", "a/b", "a/b/c"}) EXPECT_EQ(modeOf(home / name), perms::owner_all) << name;
  EXPECT_TRUE(files.createDirectories(home / "a/b/c"));
}

TEST_F(PosixFilesTest, AFileInTheWayOfADirectoryIsLeftAlone) {
  home.write("file", "content");
  EXPECT_FALSE(files.createDirectories(home / "file"));
  EXPECT_FALSE(files.createDirectories(home / "file/below"));
  EXPECT_EQ(home.read("file"), "content");
}

TEST_F(PosixFilesTest, AppendingNeverMakesAFile) {
  EXPECT_EQ(files.append(home / "history", "line\n"), Files::Append::notOpened);
  EXPECT_FALSE(files.exists(home / "history"));
}

TEST_F(PosixFilesTest, AWrittenFileIsForTheUserOnlyAndCanBeAppendedTo) {
  EXPECT_TRUE(files.writeAtomically(home / "history", "one\n"));
  EXPECT_EQ(modeOf(home / "history"), ownFile);
  EXPECT_EQ(files.append(home / "history", "two\n"), Files::Append::done);
  EXPECT_EQ(home.read("history"), "one\ntwo\n");
}

TEST_F(PosixFilesTest, WritingReplacesTheWholeContentAndLeavesNothingElse) {
  home.write("settings", "a long old content");
  EXPECT_TRUE(files.writeAtomically(home / "settings", "new"));
  EXPECT_EQ(home.read("settings"), "new");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(home.path()), {}), 1);
}

TEST_F(PosixFilesTest, WritingThroughALinkKeepsTheLink) {
  home.write("elsewhere/settings", "old");
  std::filesystem::create_symlink(home / "elsewhere/settings", home / "settings");
  EXPECT_TRUE(files.writeAtomically(home / "settings", "new"));
  EXPECT_TRUE(std::filesystem::is_symlink(home / "settings"));
  EXPECT_EQ(home.read("elsewhere/settings"), "new");
}

TEST_F(PosixFilesTest, WritingIntoAMissingDirectoryFails) {
  EXPECT_FALSE(files.writeAtomically(home / "missing/settings", "new"));
  EXPECT_EQ(files.append(home / "missing/history", "line\n"), Files::Append::notOpened);
}

TEST_F(PosixFilesTest, WritingToAPipeWithoutAReaderFailsAtOnce) {
  ASSERT_EQ(::mkfifo((home / "history").c_str(), 0600), 0);
  EXPECT_EQ(files.append(home / "history", "line\n"), Files::Append::notOpened);
}

TEST_F(PosixFilesTest, WritingToAFullDeviceFails) {
  std::filesystem::create_symlink("/dev/full", home / "history");
  EXPECT_EQ(files.append(home / "history", "line\n"), Files::Append::notWritten);
}

// No file may grow beyond 10 bytes, as on a disk that becomes full in the middle of a line.
TEST_F(PosixFilesTest, ALineThatDoesNotFitIsNotWrittenInPart) {
  ASSERT_TRUE(files.writeAtomically(home / "history", "12345\n"));
  rlimit old{};
  ::getrlimit(RLIMIT_FSIZE, &old);
  const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit = old;
  limit.rlim_cur = 10;
  ::setrlimit(RLIMIT_FSIZE, &limit);
  const auto appended = files.append(home / "history", "abcdefghij\n");
  const bool replaced = files.writeAtomically(home / "history", "a content of more than ten bytes");
  ::setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, oldHandler);
  EXPECT_EQ(appended, Files::Append::notWritten);
  EXPECT_FALSE(replaced);
  EXPECT_EQ(home.read("history"), "12345\n");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(home.path()), {}), 1);
}

TEST_F(PosixFilesTest, ReadingAPipeDoesNotWait) {
  ASSERT_EQ(::mkfifo((home / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(files.read(home / "pipe", 100), std::nullopt);
  EXPECT_FALSE(files.write(home / "pipe", "x"));
  EXPECT_FALSE(files.contentsEqual(home / "pipe", home / "pipe"));
  EXPECT_FALSE(files.copy(home / "pipe", home / "copy"));
}

TEST_F(PosixFilesTest, WritingReplacesTheContentInItsPlace) {
  EXPECT_TRUE(files.write(home / "file", "a longer content"));
  EXPECT_EQ(modeOf(home / "file"), ownFile);
  std::filesystem::create_hard_link(home / "file", home / "link");
  EXPECT_TRUE(files.write(home / "file", "short"));
  EXPECT_EQ(home.read("link"), "short");
  EXPECT_FALSE(files.write(home / "nowhere/file", "x"));
}

TEST_F(PosixFilesTest, ContentsAreComparedToTheLastByte) {
  const std::string large(200'000, 'x');
  home.write("a", large);
  home.write("b", large);
  home.write("c", large + "y");
  home.write("d", large.substr(1) + "y");
  EXPECT_TRUE(files.contentsEqual(home / "a", home / "b"));
  EXPECT_FALSE(files.contentsEqual(home / "a", home / "c"));
  EXPECT_FALSE(files.contentsEqual(home / "a", home / "d"));
  EXPECT_FALSE(files.contentsEqual(home / "a", home / "nowhere"));
  EXPECT_FALSE(files.contentsEqual(home / "nowhere", home / "nowhere"));
}

TEST_F(PosixFilesTest, ACopyHasThePermissionsOfItsOriginalAndReplacesNothing) {
  home.write("program", std::string(200'000, 'x'));
  std::filesystem::permissions(home / "program", perms::owner_all | perms::group_read);
  EXPECT_TRUE(files.copy(home / "program", home / "copy"));
  EXPECT_TRUE(files.contentsEqual(home / "program", home / "copy"));
  EXPECT_EQ(modeOf(home / "copy"), perms::owner_all | perms::group_read);
  EXPECT_FALSE(files.copy(home / "program", home / "copy"));
  EXPECT_FALSE(files.copy(home / "nowhere", home / "other"));
  EXPECT_FALSE(files.exists(home / "other"));
}

TEST_F(PosixFilesTest, RenamingReplacesAndRemovingRemoves) {
  home.write("a", "new");
  home.write("b", "old");
  EXPECT_TRUE(files.rename(home / "a", home / "b"));
  EXPECT_EQ(home.read("b"), "new");
  EXPECT_FALSE(files.rename(home / "a", home / "b"));
  EXPECT_TRUE(files.remove(home / "b"));
  EXPECT_FALSE(files.remove(home / "b"));
}

}  // namespace
}  // namespace tollvane
