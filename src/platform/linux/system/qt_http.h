// Questions to a web site through Qt's network library, which is not loaded into the process's work before the first.
// Main thread only; needs a QCoreApplication.
#pragma once

#include <memory>

#include "platform/http.h"

class QNetworkAccessManager;

namespace tollvane {

class QtHttp : public Http {
 public:
  QtHttp();
  ~QtHttp() override;

  void get(const HttpRequest& request, std::function<void(std::optional<HttpResponse>)> completion) override;

 private:
  std::unique_ptr<QNetworkAccessManager> network_;
};

}  // namespace tollvane
