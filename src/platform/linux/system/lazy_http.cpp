#include "platform/linux/system/lazy_http.h"

#include <dlfcn.h>

#include <QTimer>
#include <QUrl>
#include <cstdio>
#include <utility>

#include "support/web_address.h"

namespace tollvane {

void LazyHttp::get(const HttpRequest& request, std::function<void(std::optional<HttpResponse>)> completion) {
  // A copy of Tollvane whose site does not exist asks for it all the same, and needs no library to be told so.
  const QUrl url(QString::fromStdString(request.url));
  Http* const http = web::mayAsk(url.scheme().toStdString(), url.host().toStdString()) ? loaded() : nullptr;
  if (http) return http->get(request, std::move(completion));
  QTimer::singleShot(0, &refused_, [completion = std::move(completion)] { completion(std::nullopt); });
}

Http* LazyHttp::loaded() {
  if (http_ || module_.empty()) return http_.get();
  using Make = Http* (*)();
  void* const handle = dlopen(module_.c_str(), RTLD_NOW | RTLD_LOCAL);
  const auto make = handle ? reinterpret_cast<Make>(dlsym(handle, "tollvaneMakeHttp")) : nullptr;
  if (make) http_.reset(make());
  if (!make) std::fprintf(stderr, "Tollvane: No site can be asked: %s\n", dlerror());
  module_.clear();
  return http_.get();
}

}  // namespace tollvane
