#include "update/updater.h"

#include <utility>

namespace tollvane {
namespace {

using Seconds = std::chrono::duration<double>;

}  // namespace

Updater::Updater(Http& http, const Clock& clock, Prefs prefs, const Bundle& bundle)
    : http_(http), clock_(clock), prefs_(prefs), bundle_(bundle) {}

std::string Updater::current() const { return bundle_.infoString("CFBundleShortVersionString").value_or("0"); }

std::optional<Release> Updater::available() const {
  return latest && compareVersions(latest->version, current()) > 0 ? latest : std::nullopt;
}

Alert Updater::alert() const {
  if (!canAsk()) {
    return {"This version doesn't look for updates",
            "It was built without a website that it could ask. Tollvane " + current() + " stays as it is."};
  }
  if (const auto release = available()) {
    return {"Version " + release->version + " is available",
            "Choose \"Update available\" in the Tollvane menu to get it."};
  }
  if (latest) return {"You're up to date", "Tollvane " + current() + " is the newest version."};
  return {"Couldn't check for updates",
          "The website didn't answer. Check your internet connection and try again later."};
}

void Updater::check() {
  if (!canAsk() || std::exchange(asking_, true)) return;
  http_.get(
      {
          .url = sitePage(bundle_, "/tollvane/latest.json"),
          .headers = {{"Accept", "application/json"}},
          .timeout = patience,
      },
      alive_.guard([this](const std::optional<HttpResponse>& response) {
        asking_ = false;
        if (response && response->status == 200 && !response->body.empty()) answered(*response);
      }));
}

void Updater::answered(const HttpResponse& response) {
  latest = releaseFromFeed(response.body, sitePage(bundle_, "/tollvane/download"));
  prefs_.setUpdateLastCheck(Seconds(clock_.now().time_since_epoch()).count());
  if (onChange) onChange();
}

void Updater::checkIfDue() {
  const Seconds now = clock_.now().time_since_epoch();
  if (!latest || now - Seconds(prefs_.updateLastCheck()) > interval) check();
}

}  // namespace tollvane
