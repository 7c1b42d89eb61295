#include "platform/linux/kernel/program_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tollvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(ProgramLine, InterpretersAreKnownInEveryVersion) {
  for (const char* name : {"python3", "/usr/bin/python3.11", "perl", "/usr/bin/perl5.36-x86_64-linux-gnu", "sh", "bash",
                           "dash", "node", "nodejs", "java", "ruby3.1", "gjs", "gjs-console", "mono-sgen", "lua5.4",
                           "wine64-preloader", "php8.2", "electron22"})
    EXPECT_TRUE(isInterpreter(name)) << name;
  for (const char* name : {"", "firefox", "/usr/lib/chromium/chromium", "pythonista", "bashful", "nodemon", "7z",
                           "idle-python3.11", "javaws"})
    EXPECT_FALSE(isInterpreter(name)) << name;
}

TEST(ProgramLine, ScriptsAreFoundBehindOptions) {
  struct Row {
    const char* interpreter;
    std::vector<std::string> arguments;
    std::optional<std::string> script;
  };
  const Row rows[] = {
      {"python3.11", {"python3"}, std::nullopt},
      {"python3.11", {}, std::nullopt},
      {"python3.11", {"python3", "a.py"}, "a.py"},
      {"python3.11", {"python3", "-u", "-W", "ignore", "/x/a.py", "-c"}, "/x/a.py"},
      {"python3.11", {"python3", "-Wignore", "/x/a.py"}, "/x/a.py"},
      {"python3.11", {"python3", "-c", "import x", "a.py"}, std::nullopt},
      {"python3.11", {"python3", "-uc", "import x"}, std::nullopt},
      {"python3.11", {"python3", "-m", "tuner.gui", "--x"}, "tuner.gui"},
      {"python3.11", {"python3", "-mtuner"}, "tuner"},
      {"python3.11", {"python3", "-m"}, std::nullopt},
      {"python3.11", {"python3", "-", "a.py"}, std::nullopt},
      {"python3.11", {"python3", "--", "-odd.py"}, "-odd.py"},
      {"dash", {"sh", "-c", "pw-play x"}, std::nullopt},
      {"dash", {"sh", "-e", "/usr/bin/chromium", "%U"}, "/usr/bin/chromium"},
      {"bash", {"bash", "-o", "pipefail", "x.sh"}, "x.sh"},
      {"bash", {"-bash"}, std::nullopt},
      {"bash", {"bash", "--rcfile", "/etc/rc", "x.sh"}, "x.sh"},
      {"perl", {"perl", "-w", "-I", "lib", "x.pl"}, "x.pl"},
      {"perl", {"perl", "-e", "print"}, std::nullopt},
      {"node", {"node", "--require", "hook.js", "main.js"}, "main.js"},
      {"node", {"node", "--eval", "1"}, std::nullopt},
      {"java", {"java", "-Xmx1g", "-jar", "/opt/x/x.jar"}, "/opt/x/x.jar"},
      {"java", {"java", "-cp", "a.jar:b.jar", "-Dx=y", "com.example.Main"}, "com.example.Main"},
      {"mono-sgen", {"/usr/bin/mono-sgen", "--debug", "/usr/lib/banshee/Banshee.exe"}, "/usr/lib/banshee/Banshee.exe"},
      {"gjs-console", {"/usr/bin/gjs", "-I", "/x", "/usr/bin/recorder"}, "/usr/bin/recorder"},
      {"wine64-preloader", {"C:\\Program Files\\Example\\Example.EXE", "/s"}, "c:/program files/example/example.exe"},
      {"wine", {"wine", "start", "x"}, std::nullopt},
      {"firefox", {"firefox", "page.html"}, std::nullopt},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(scriptOf(row.interpreter, row.arguments), row.script)
        << row.interpreter << ' ' << ::testing::PrintToString(row.arguments);
  }
}

TEST(ProgramLine, WordsInFrontOfTheProgramAreDropped) {
  EXPECT_THAT(withoutPrefixes({"env", "A=b", "C=", "prog", "x=y"}), ElementsAre("prog", "x=y"));
  EXPECT_THAT(withoutPrefixes({"/usr/bin/env", "-u", "HOME", "-i", "A=b", "prog"}), ElementsAre("prog"));
  EXPECT_THAT(withoutPrefixes({"nohup", "env", "A=b", "prog"}), ElementsAre("prog"));
  EXPECT_THAT(withoutPrefixes({"prog", "env"}), ElementsAre("prog", "env"));
  EXPECT_THAT(withoutPrefixes({"env", "-u"}), IsEmpty());
  EXPECT_THAT(withoutPrefixes({}), IsEmpty());
}

TEST(ProgramLine, SharedDirectoriesAreDistinguished) {
  for (const char* shared : {"", "/", "/bin", "/usr/bin", "/usr/local/bin", "/usr/sbin", "/usr/games", "/usr/lib",
                             "/usr/lib64", "/usr/libexec", "/usr/lib/x86_64-linux-gnu", "/home/me/.local/bin",
                             "/home/me/bin", "/snap/bin", "/opt", "/tmp", "/usr/share"})
    EXPECT_TRUE(isSharedDirectory(shared)) << shared;
  for (const char* own : {"/usr/lib/chromium", "/opt/google/chrome", "/opt/idea/bin", "/usr/share/code/bin",
                          "/usr/lib/libreoffice/program", "/home/me/tor-browser/Browser"})
    EXPECT_FALSE(isSharedDirectory(own)) << own;
}

TEST(ProgramLine, PathsAreSplit) {
  EXPECT_EQ(lastComponent("/usr/bin/foo"), "foo");
  EXPECT_EQ(lastComponent("foo"), "foo");
  EXPECT_EQ(lastComponent("/usr/bin/"), "");
  EXPECT_EQ(directoryOf("/usr/bin/foo"), "/usr/bin");
  EXPECT_EQ(directoryOf("/foo"), "/");
  EXPECT_EQ(directoryOf("foo"), "");
  EXPECT_EQ(withoutScriptEnding("foo.py"), "foo");
  EXPECT_EQ(withoutScriptEnding(".py"), ".py");
  EXPECT_EQ(withoutScriptEnding("org.example.Player"), "org.example.Player");
}

}  // namespace
}  // namespace tollvane
