// One question to a web site. Main thread only.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "platform/clock.h"

namespace tollvane {

struct HttpRequest {
  std::string url;
  std::map<std::string, std::string> headers = {};
  Duration timeout{};
};

struct HttpResponse {
  int status = 0;
  std::string body;
};

class Http {
 public:
  // More than anybody has to say to Tollvane. A longer answer counts as none.
  static constexpr std::size_t maxBody = 1 << 20;

  virtual ~Http() = default;

  // A GET that ignores local caches. Only https, or http to this very computer, also when redirected. `completion` is
  // called once, later, on the main thread; absent when no answer came in time.
  virtual void get(const HttpRequest& request, std::function<void(std::optional<HttpResponse>)> completion) = 0;
};

}  // namespace tollvane
