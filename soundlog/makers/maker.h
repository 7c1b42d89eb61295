// Who makes a sound: what is remembered of a process when it connects to the sound server, because it may be gone by
// the time its sound is written down, and its number may then be another's. One thread. Reads /proc only while
// remembering or crediting.
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

// One process for ever: a number may be given to another, but not together with the start time.
struct ProcessKey {
  Pid pid = 0;
  std::uint64_t startTime = 0;
  bool operator==(const ProcessKey&) const = default;
};

// What a client of a sound server is known by.
struct ClientClaims {
  std::optional<Pid> checkedPid = {};   // told by the kernel
  std::optional<Pid> declaredPid = {};  // told by the client itself: believed only when `binary` agrees
  std::string binary = {};              // the client's program, by its own word
  std::string name = {};                // the client's name, by its own word
  std::string sandboxId = {};           // of the application whose sandbox it is in, told by the server
  bool operator==(const ClientClaims&) const = default;
};

struct Maker {
  std::vector<ProcessKey> chain;  // the process, then its ancestors up to the first; empty: process not known
  std::string name;
  std::string cgroup;
  bool runByDunst = false;  // started by a script of the notification service dunst, which forks them off

  bool known() const { return !chain.empty(); }
  const ProcessKey& process() const { return chain.front(); }
};

class Makers {
 public:
  // What the desktop calls the application with this id; empty when it knows none.
  using NameOfApplication = std::function<std::string(std::string_view id)>;

  explicit Makers(const ProcFs& processes, NameOfApplication nameOfApplication = {})
      : processes_(processes), nameOfApplication_(std::move(nameOfApplication)) {}

  Maker remember(const ClientClaims& claims) const;

  // The process to credit now: the maker itself if it lives, else its nearest ancestor that still does; 0 when none.
  Pid creditedPid(const Maker& maker) const;

  std::optional<ProcessKey> key(Pid pid) const;

 private:
  std::optional<Pid> believedPid(const ClientClaims& claims) const;
  std::string nameByClaims(const ClientClaims& claims) const;

  const ProcFs& processes_;
  NameOfApplication nameOfApplication_;
};

}  // namespace tollvane::soundlog
