#include "platform/linux/system/qt_http.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>
#include <utility>

#include "support/web_address.h"

namespace tollvane {
namespace {

using Completion = std::function<void(std::optional<HttpResponse>)>;

bool isAllowed(const QUrl& url) {
  return url.isValid() && web::mayAsk(url.scheme().toStdString(), url.host().toStdString());
}

QNetworkRequest networkRequest(const HttpRequest& request, const QUrl& url) {
  QNetworkRequest network(url);
  network.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
  network.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
  network.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
  network.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
  // Each redirection is checked here, because the library's own policies would allow one to plain http.
  network.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::UserVerifiedRedirectPolicy);
  network.setMaximumRedirectsAllowed(10);
  // Tollvane's answers are small. Unpacking would let a small answer become a large one, and would not tell one that
  // broke off from a whole one.
  network.setRawHeader("Accept-Encoding", "identity");
  for (const auto& [name, value] : request.headers)
    network.setRawHeader(QByteArray::fromStdString(name), QByteArray::fromStdString(value));
  return network;
}

// Whether the server refused, with an answer that is as complete as any other.
bool isRefusal(QNetworkReply::NetworkError error) {
  return (error >= QNetworkReply::ContentAccessDenied && error <= QNetworkReply::UnknownContentError) ||
         (error >= QNetworkReply::InternalServerError && error <= QNetworkReply::UnknownServerError);
}

std::optional<HttpResponse> responseOf(QNetworkReply& reply) {
  // An answer that broke off is no answer, and neither is a redirection that was not followed.
  if (reply.error() != QNetworkReply::NoError && !isRefusal(reply.error())) return std::nullopt;
  const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
  if (!web::isAnswer(status)) return std::nullopt;
  const QByteArray encoding = reply.rawHeader("Content-Encoding").toLower();
  if (!encoding.isEmpty() && encoding != "identity") return std::nullopt;
  // A reply may be complete before its length has been checked.
  if (reply.bytesAvailable() > static_cast<qint64>(Http::maxBody)) return std::nullopt;
  return HttpResponse{status, reply.readAll().toStdString()};
}

}  // namespace

void QtHttp::get(const HttpRequest& request, Completion completion) {
  const QUrl url(QString::fromStdString(request.url), QUrl::StrictMode);
  if (!isAllowed(url)) {
    QTimer::singleShot(0, &questions_, [completion = std::move(completion)] { completion(std::nullopt); });
    return;
  }
  // Made for each request: there is at most one an hour, and nothing stays in memory in between.
  auto* network = new QNetworkAccessManager(&questions_);
  QNetworkReply* reply = network->get(networkRequest(request, url));
  // The limit is for the whole answer; the library's own time-out begins anew with each byte.
  const auto patience = std::chrono::duration_cast<std::chrono::milliseconds>(request.timeout);
  QTimer::singleShot(patience, reply, &QNetworkReply::abort);
  QObject::connect(reply, &QNetworkReply::redirected, reply, [reply](const QUrl& target) {
    if (isAllowed(reply->url().resolved(target))) {
      Q_EMIT reply->redirectAllowed();
    } else {
      reply->abort();
    }
  });
  QObject::connect(reply, &QNetworkReply::downloadProgress, reply, [reply](qint64 received, qint64) {
    if (received > static_cast<qint64>(maxBody)) reply->abort();
  });
  QObject::connect(reply, &QNetworkReply::finished, network, [reply, network, completion = std::move(completion)] {
    network->deleteLater();  // this deletes the reply too
    completion(responseOf(*reply));
  });
}

}  // namespace tollvane

tollvane::Http* tollvaneMakeHttp() { return new tollvane::QtHttp(); }
