// The web, loaded at the first request: Qt's network library and what it needs stay out of a Tollvane that asks no
// site. Main thread only; needs a QCoreApplication.
#pragma once

#include <QObject>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "platform/http.h"

namespace tollvane {

class LazyHttp : public Http {
 public:
  // `module`: the file of the module; it is never unloaded. Without it, or a library that it needs, no request is
  // answered.
  explicit LazyHttp(std::filesystem::path module) : module_(std::move(module)) {}

  void get(const HttpRequest& request, std::function<void(std::optional<HttpResponse>)> completion) override;

 private:
  Http* loaded();

  std::filesystem::path module_;
  std::unique_ptr<Http> http_;
  QObject refused_;  // owns the answers to requests that are not sent
};

}  // namespace tollvane
