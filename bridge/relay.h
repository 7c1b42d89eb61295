// Translates messages between the browser and the application; it has no file descriptors itself. One thread.
//
//   relay.fromBrowser(bytes);      // takes frames; each complete one becomes a line in toApplication
//   relay.fromApplication(bytes);  // takes lines; each complete one becomes a frame in toBrowser
//   relay.connected(); ... relay.disconnected();
//
// Each line to the application and each frame to the browser is exactly one JSON object: Firefox disconnects at
// anything else. A message that is malformed or too long is dropped, and the next one is read as usual. Messages from
// the browser are dropped while there is no application, except for the extension's last "hello": the relay keeps it
// and sends it at every connection. The extension is told when the application comes and goes.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "bridge/frames.h"
#include "platform/posix/outbox.h"
#include "support/line_buffer.h"

namespace tollvane::bridge {

class Relay {
 public:
  // A longer "hello" is passed on, but not remembered.
  static constexpr std::size_t longestHello = 64 * 1024;

  // `introduction`: the first line to every application, without its line feed. `browser`: names the browser's process
  // for the extension; empty if unknown. Only letters, digits and '-'.
  explicit Relay(std::string introduction, std::string browser = "");

  void fromBrowser(std::string_view bytes);
  void fromApplication(std::string_view bytes);

  void connected();

  // Drops what waits for the application and the unfinished line from it, so that the next application does not
  // continue the lines of the last one.
  void disconnected();

  // Tells the extension whether there is an application, if it does not know yet. A change that was undone before this
  // is called is not told.
  void announce();

  // Whether the application has sent a valid message since it was connected.
  bool answered() const { return answered_; }

  Outbox toApplication;
  Outbox toBrowser;

 private:
  void passOn(std::string message);

  std::string introduction_;
  std::string browser_;
  std::string hello_;  // empty if there was none yet
  bool connected_ = false;
  std::optional<bool> announced_;  // what the extension was told last about `connected_`
  bool answered_ = false;
  FrameReader frames_;
  LineBuffer lines_;
};

}  // namespace tollvane::bridge
