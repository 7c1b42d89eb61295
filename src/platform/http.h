// Requests to a web site. Main thread only.
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
  // Tollvane needs no longer answer than this. A longer one counts as no answer.
  static constexpr std::size_t maxBody = 1 << 20;

  virtual ~Http() = default;

  // Sends a GET request that ignores local caches. Only https is allowed, or http to this computer itself, also after a
  // redirection. `completion` is called once, later, on the main thread; its argument is absent if no answer came in
  // time.
  virtual void get(const HttpRequest& request, std::function<void(std::optional<HttpResponse>)> completion) = 0;
};

}  // namespace tollvane
