// Who makes a sound. A process is remembered when it connects to the sound server: when its sound is written down, the
// process may be gone, and its number may belong to another one. One thread. Reads /proc only in the functions of
// Makers.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/kernel/proc_fs.h"
#include "platform/process_table.h"

namespace tollvane::soundlog {

// Identifies one process for good: process numbers are used again, but not with the same start time.
struct ProcessKey {
  Pid pid = 0;
  std::uint64_t startTime = 0;
  bool operator==(const ProcessKey&) const = default;
};

// What is known about a client of a sound server.
struct ClientClaims {
  std::optional<Pid> checkedPid = {};   // as the kernel says
  std::optional<Pid> declaredPid = {};  // as the client says; believed only if `binary` agrees
  std::string binary = {};              // the client's program, as the client says
  std::string name = {};                // the client's name, as the client says
  std::string sandboxId = {};           // id of the application whose sandbox the client is in, as the server says
  bool operator==(const ClientClaims&) const = default;
};

// What a notification says of its application, as the service tells the script that it starts for it.
struct NotificationWords {
  std::string applicationName = {};
  std::string desktopEntry = {};
  bool operator==(const NotificationWords&) const = default;
};

// What a process has to do with speech-dispatcher, the service that speaks for other programs. It starts a module for
// each way to speak, and any of them may open streams, or start a player that does.
enum class Speech {
  none,
  speaker,  // the service, one of its modules, or a player that one of them has started
  mute,     // the module that cannot speak; a player that it starts says that there is no other
};

struct Maker {
  std::vector<ProcessKey> chain;  // the process, then its ancestors except process 1; empty if the process is unknown
  std::string name;
  std::string cgroup;
  std::string script = {};  // name of the script that started the process; empty if none did
  // Set if a notification service's script started the process. The services detach their scripts, so the ancestors do
  // not tell.
  std::optional<NotificationWords> playsFor = {};
  Speech speech = Speech::none;

  bool known() const { return !chain.empty(); }
  const ProcessKey& process() const { return chain.front(); }
};

class Makers {
 public:
  // The desktop's name for the application with this id; empty if it knows none.
  using NameOfApplication = std::function<std::string(std::string_view id)>;

  explicit Makers(const ProcFs& processes, NameOfApplication nameOfApplication = {})
      : processes_(processes), nameOfApplication_(std::move(nameOfApplication)) {}

  Maker remember(const ClientClaims& claims) const;

  // Those of the maker and its ancestors that still run, the nearest first, and no more than a reader looks at. The
  // first one is to be credited.
  std::vector<Pid> stillRunning(const Maker& maker) const;

  std::optional<ProcessKey> key(Pid pid) const;

 private:
  std::optional<Pid> believedPid(const ClientClaims& claims) const;
  std::string nameByClaims(const ClientClaims& claims) const;
  std::string scriptBehind(const std::vector<ProcessKey>& chain) const;

  const ProcFs& processes_;
  NameOfApplication nameOfApplication_;
};

}  // namespace tollvane::soundlog
