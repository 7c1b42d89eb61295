// Requests to a web site through Qt's network library, which is not used before the first request. Main thread only;
// needs a QCoreApplication.
#pragma once

#include <QObject>

#include "platform/http.h"

namespace tollvane {

class QtHttp : public Http {
 public:
  void get(const HttpRequest& request, std::function<void(std::optional<HttpResponse>)> completion) override;

 private:
  QObject questions_;  // owns the requests that wait for an answer; they silently end with it
};

}  // namespace tollvane

// The module's only entry point, see LazyHttp.
extern "C" __attribute__((visibility("default"))) tollvane::Http* tollvaneMakeHttp();
