// A connection to the X server that DISPLAY names, for questions with a limit of time. A server that does not answer
// makes the whole round of questions end, not only one of them. One thread at a time.
#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <climits>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/process_table.h"

namespace tollvane {

class X11Connection {
 public:
  template <typename Reply>
  struct Free {
    void operator()(Reply* memory) const { std::free(memory); }
  };
  template <typename Reply>
  using Owned = std::unique_ptr<Reply, Free<Reply>>;

  X11Connection() : connection_(xcb_connect(nullptr, &screen_)) {}
  ~X11Connection() { xcb_disconnect(connection_); }
  X11Connection(const X11Connection&) = delete;
  X11Connection& operator=(const X11Connection&) = delete;

  xcb_connection_t* get() const { return connection_; }
  bool isAlive() const { return xcb_connection_has_error(connection_) == 0; }
  int screenNumber() const { return screen_; }
  xcb_window_t root() const;  // XCB_NONE when there is no such screen

  // Questions asked from now on are given up together when this has passed.
  void beginQuestions(std::chrono::milliseconds patience);
  bool timedOut() const { return timedOut_; }

  // Null on an error, too: a window may vanish between two questions.
  template <typename Reply>
  Owned<Reply> take(unsigned sequence) {
    return Owned<Reply>(static_cast<Reply*>(takeAny(sequence)));
  }

  // The next event; null when none came in time.
  Owned<xcb_generic_event_t> waitForEvent();

  // XCB_NONE where the server did not answer.
  std::vector<xcb_atom_t> atoms(const std::vector<std::string_view>& names);

  xcb_get_property_cookie_t property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type, std::uint32_t words) const {
    return xcb_get_property(connection_, 0, window, name, type, 0, words);
  }

  // Empty when the property is missing or of another size.
  template <typename Value>
  std::vector<Value> values(xcb_get_property_cookie_t cookie) {
    const auto reply = take<xcb_get_property_reply_t>(cookie.sequence);
    return reply ? valuesOf<Value>(*reply) : std::vector<Value>();
  }

  template <typename Value>
  static std::vector<Value> valuesOf(const xcb_get_property_reply_t& reply) {
    if (reply.format != sizeof(Value) * CHAR_BIT) return {};
    const auto* first = static_cast<const Value*>(xcb_get_property_value(&reply));
    return {first, first + static_cast<std::size_t>(xcb_get_property_value_length(&reply)) / sizeof(Value)};
  }

 private:
  void* takeAny(unsigned sequence);
  bool waitForInput();

  int screen_ = 0;
  xcb_connection_t* connection_;  // never null, even when connecting failed
  std::chrono::steady_clock::time_point deadline_;
  bool timedOut_ = false;
};

// What a window says about its owner, asked all at once; the answer is taken later.
struct X11Owner {
  struct Questions {
    xcb_get_property_cookie_t pid, machine, windowClass;
  };

  Pid pid = 0;  // 0: it does not say, or is of another computer
  std::string instance, windowClass;

  static Questions ask(const X11Connection& connection, xcb_window_t window, xcb_atom_t netWmPid);
  static X11Owner answer(X11Connection& connection, const Questions& questions);
};

}  // namespace tollvane
