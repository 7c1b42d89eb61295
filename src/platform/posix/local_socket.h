// Unix-domain stream sockets, as Tollvane and its bridges speak over them. Nothing here blocks, no signal is raised,
// and no descriptor is handed on to a program that is started. One thread an object.
//
//   LocalListener listener = LocalListener::at("/home/user/bridge.sock");   // Tollvane
//   LocalStream bridge = listener.accept();
//   LocalStream application = LocalStream::to("/home/user/bridge.sock");    // a bridge
//
// Source: unix(7).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/posix/unique_fd.h"

namespace tollvane {

// What every system can hold as the path of a socket, which is less than some could.
inline constexpr std::size_t longestSocketPath = 103;

// The path at which a socket really stands if it is to stand at `path`: cut if it is too long, by both ends alike.
std::string fittingSocketPath(std::string path);

// Whether a listener is there, even if its queue of callers is full.
bool isAnswered(const std::string& path);

// Whether the program at the other end of a socket is this user's; absent if the system does not tell.
std::optional<bool> peerIsOwnUsers(int socket);

// One end of a connection. Empty if it is not connected.
class LocalStream {
 public:
  LocalStream() = default;
  explicit LocalStream(UniqueFd socket);

  // Connects to this path; empty if nobody listens there, if another user does, or if the listener's queue of callers
  // is full.
  static LocalStream to(const std::string& path);

  explicit operator bool() const { return static_cast<bool>(socket_); }

  // To be watched for input, and polled. Stays this object's.
  int descriptor() const { return socket_.get(); }

  enum class Reading { some, nothingYet, ended };

  // Reads what there is, at most `size` bytes; `bytes` is the part of `buffer` that was filled.
  Reading read(char* buffer, std::size_t size, std::string_view& bytes) const;

  // Sends as much of `bytes` as there is room for, and tells how much that was; absent if the other end is gone.
  std::optional<std::size_t> send(std::string_view bytes) const;

  // Ends the connection for both ends. The descriptor stays open, and readable, until this object is gone.
  void shutDown() const;

  void close() { socket_.reset(); }

 private:
  UniqueFd socket_;
};

// The end at which others call. Its file is open to its user only, at no moment to others.
class LocalListener {
 public:
  LocalListener() = default;
  LocalListener(LocalListener&& other) noexcept = default;
  LocalListener& operator=(LocalListener&& other) noexcept;
  ~LocalListener() { close(); }

  // Listens at this path. What stands there is removed first, also the socket of another listener.
  static LocalListener at(const std::string& path);

  explicit operator bool() const { return static_cast<bool>(socket_); }
  int descriptor() const { return socket_.get(); }

  enum class Accepting {
    done,      // see `stream`; empty if the caller was another user, or has gone again
    exhausted  // this process or the system has no descriptor left: the caller still waits
  };
  struct Accepted {
    Accepting result = Accepting::done;
    LocalStream stream = {};
  };
  Accepted accept() const;

  enum class Standing {
    own,      // the file at the path is this listener's: programs that connect come here
    missing,  // no file is there
    replaced  // another file is there
  };
  Standing standing() const;

  // Removes the file too, unless another one stands at its path by now.
  void close();

 private:
  struct File {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    bool operator==(const File&) const = default;
  };
  static std::optional<File> fileAt(const std::string& path);

  UniqueFd socket_;
  std::string path_;
  File file_;
};

}  // namespace tollvane
