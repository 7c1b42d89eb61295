// Questions to a web site through Qt's network library, which is not put to work before the first.
// Main thread only; needs a QCoreApplication.
#pragma once

#include <QObject>

#include "platform/http.h"

namespace tollvane {

class QtHttp : public Http {
 public:
  void get(const HttpRequest& request, std::function<void(std::optional<HttpResponse>)> completion) override;

 private:
  QObject questions_;  // owns those that wait for an answer, which end with it in silence
};

}  // namespace tollvane
