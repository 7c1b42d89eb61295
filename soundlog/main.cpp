// The entry point of TollvaneLog.
#include <fcntl.h>
#include <sys/signalfd.h>
#include <sysexits.h>

#include <csignal>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <variant>

#include "platform/linux/apps/applications.h"
#include "platform/linux/sandbox/sandbox.h"
#include "platform/posix/unique_fd.h"
#include "soundlog/arguments.h"
#include "soundlog/connection/addresses.h"
#include "soundlog/sound_log.h"

namespace tollvane::soundlog {
namespace {

struct LoopDeleter {
  void operator()(GMainLoop* loop) const { g_main_loop_unref(loop); }
};

// Looks up the user's applications. Created only when it is first needed, because it keeps all desktop entries in
// memory.
class DesktopApplications {
 public:
  std::optional<Identities::Application> of(Pid pid) const {
    const auto application = applications_.of(pid);
    if (!application) return std::nullopt;
    return Identities::Application{application->id, application->isRegular()};
  }

  std::string nameOf(std::string_view id) {
    entries_.refresh();
    const auto entry = entries_.withId(id);
    return entry ? entry->name : std::string();
  }

 private:
  ProcFs processes_;
  DesktopEntries entries_;
  NoX11Windows windows_;  // only ids of entries are needed, and windows do not tell them
  Applications applications_{processes_, entries_, windows_};
};

// Before the first byte of another program is read.
void giveUpRights([[maybe_unused]] const Environment& environment) {
#ifndef TOLLVANE_SANITIZED  // sanitizers look into processes and write reports
  enterSandbox(areLocal(environment) ? Sandbox::localListener : Sandbox::listener);
#endif
}

// The signals that ask the process to end, as a file descriptor, so that no library's thread receives them.
UniqueFd endingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&signals, signal);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
  return UniqueFd(signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC));
}

int run(const Stream& stream) {
  if (fcntl(STDOUT_FILENO, F_GETFD) < 0) {
    std::fputs("TollvaneLog: There is no standard output to write to.\n", stderr);
    return EX_IOERR;
  }
  const Environment environment = processEnvironment();
  giveUpRights(environment);
  const UniqueFd signals = endingSignals();
  const std::unique_ptr<GMainLoop, LoopDeleter> loop(g_main_loop_new(nullptr, FALSE));
  const auto end = [&loop] { g_main_loop_quit(loop.get()); };
  const Watch ending = watchDescriptor(signals.get(), G_IO_IN, [&end](GIOCondition) { end(); });
  const auto format = stream.style == Stream::Style::ndjson ? ndjsonLine : readableLine;
  std::optional<DesktopApplications> made;
  const auto applications = [&made]() -> DesktopApplications& { return made ? *made : made.emplace(); };
  SoundLog log(
      STDOUT_FILENO, format, environment, [&](Pid pid) { return applications().of(pid); },
      [&](std::string_view id) { return applications().nameOf(id); }, end);
  log.start();
  g_main_loop_run(loop.get());
  return EX_OK;
}

int print(std::FILE* file, std::string_view text, int code) {
  std::fwrite(text.data(), 1, text.size(), file);
  return std::fflush(file) == 0 ? code : EX_IOERR;
}

struct Perform {
  int operator()(const Stream& stream) const { return run(stream); }
  int operator()(const Help&) const { return print(stdout, usage(), EX_OK); }
  int operator()(const Version&) const { return print(stdout, "TollvaneLog " TOLLVANE_VERSION "\n", EX_OK); }
  int operator()(const Mistake& mistake) const { return print(stderr, mistake.sentence + '\n', EX_USAGE); }
};

}  // namespace
}  // namespace tollvane::soundlog

int main(int count, char** arguments) {
  using namespace tollvane::soundlog;
  const std::span<const char* const> given(arguments + (count > 0),
                                           static_cast<std::size_t>(count > 0 ? count - 1 : 0));
  return std::visit(Perform(), parseArguments(given));
}
