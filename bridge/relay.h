// What happens to each message between the browser and the application, without any descriptor. One thread.
//
//   relay.fromBrowser(bytes);      // frames; whole ones go as lines into toApplication
//   relay.fromApplication(bytes);  // lines; whole ones go as frames into toBrowser
//   relay.connected(); ... relay.disconnected();
//
// Towards the application a line is always one JSON object. Towards the browser, too: Firefox disconnects at anything
// else. What is malformed or too long is dropped, and the next message is read as usual. Messages from the browser are
// dropped while there is no application, but for the extension's last "hello", with which it is introduced again at
// every connection.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "bridge/frames.h"
#include "bridge/outbox.h"
#include "support/line_buffer.h"

namespace tollvane::bridge {

class Relay {
 public:
  // A longer "hello" is passed on, but not remembered.
  static constexpr std::size_t longestHello = 64 * 1024;

  // `introduction`: the line, without its end, that every application hears first.
  explicit Relay(std::string introduction);

  void fromBrowser(std::string_view bytes);
  void fromApplication(std::string_view bytes);

  void connected();

  // A line that was begun is never ended by another application, in neither direction.
  void disconnected();

  // Whether this application has said anything that was passed on.
  bool answered() const { return answered_; }

  Outbox toApplication;
  Outbox toBrowser;

 private:
  void passOn(std::string message);

  std::string introduction_;
  std::string hello_;  // empty: none yet
  bool connected_ = false;
  bool answered_ = false;
  FrameReader frames_;
  LineBuffer lines_;
};

}  // namespace tollvane::bridge
