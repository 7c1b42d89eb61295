#include "platform/linux/system/qt_http.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTcpServer>
#include <QTcpSocket>

#include "tests/support/test_application.h"

namespace tollvane {
namespace {

using namespace std::chrono_literals;

// A server on this computer that answers every request with the same bytes, or never answers.
class Server {
 public:
  explicit Server(QByteArray answer, bool closes = true) {
    server_.listen(QHostAddress::LocalHost);
    QObject::connect(&server_, &QTcpServer::newConnection, [this, answer = std::move(answer), closes] {
      QTcpSocket* socket = server_.nextPendingConnection();
      QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket, answer, closes] {
        asked += socket->readAll();
        if (!asked.endsWith("\r\n\r\n")) return;
        socket->write(answer);
        if (closes) socket->disconnectFromHost();
      });
    });
  }
  std::string url(const std::string& host = "127.0.0.1") const {
    return "http://" + host + ":" + std::to_string(server_.serverPort()) + "/feed";
  }

  QByteArray asked;

 private:
  QTcpServer server_;
};

QByteArray answer(const QByteArray& status, const QByteArray& body) {
  return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

QByteArray redirection(const std::string& to) {
  return "HTTP/1.1 302 Found\r\nLocation: " + QByteArray::fromStdString(to) + "\r\nContent-Length: 0\r\n\r\n";
}

class QtHttpTest : public testing::Test {
 protected:
  using Answer = std::optional<HttpResponse>;

  // Sends the request and waits for the answer.
  Answer get(const HttpRequest& request) {
    std::optional<Answer> result;
    http.get(request, [&](Answer response) { result = std::move(response); });
    EXPECT_FALSE(result) << "the answer must come later, not at once";
    QElapsedTimer time;
    time.start();
    while (!result && time.elapsed() < 20'000) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    EXPECT_TRUE(result);
    return result.value_or(std::nullopt);
  }
  Answer get(const std::string& url, Duration timeout = 15s) { return get({.url = url, .timeout = timeout}); }

  test::TestApplication application;
  QtHttp http;
};

TEST_F(QtHttpTest, TheHeadersAreSentAndNoCacheMayAnswer) {
  Server server(answer("200 OK", ""));
  get({.url = server.url(), .headers = {{"Accept", "application/json"}}, .timeout = 15s});
  EXPECT_TRUE(server.asked.startsWith("GET /feed HTTP/1.1\r\n")) << server.asked.toStdString();
  EXPECT_TRUE(server.asked.toLower().contains("accept: application/json\r\n"));
  EXPECT_TRUE(server.asked.toLower().contains("cache-control: no-cache"));
}

TEST_F(QtHttpTest, AnErrorPageIsAnAnswer) {
  for (const QByteArray status : {"404 Not Found", "403 Forbidden", "500 Internal Server Error", "503 Busy"}) {
    Server server(answer(status, "no"));
    const auto response = get(server.url());
    ASSERT_TRUE(response) << status.toStdString();
    EXPECT_EQ(response->status, status.left(3).toInt());
  }
}

TEST_F(QtHttpTest, AServerThatKeepsSilentIsNotWaitedForLongerThanAllowed) {
  Server server("", false);
  EXPECT_FALSE(get(server.url(), 100ms));
}

TEST_F(QtHttpTest, AServerThatNeverFinishesIsNotWaitedForEither) {
  Server server("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nbegin", false);
  EXPECT_FALSE(get(server.url(), 200ms));
}

TEST_F(QtHttpTest, AnAnswerThatBreaksOffIsNoAnswer) {
  Server server("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nbegin");
  EXPECT_FALSE(get(server.url()));
}

TEST_F(QtHttpTest, AnAnswerThatIsTooLongIsNoAnswer) {
  Server fits(answer("200 OK", QByteArray(static_cast<qsizetype>(Http::maxBody), 'x')));
  EXPECT_TRUE(get(fits.url()));
  Server large(answer("200 OK", QByteArray(static_cast<qsizetype>(Http::maxBody) + 1, 'x')));
  EXPECT_FALSE(get(large.url()));
  Server endless("HTTP/1.1 200 OK\r\n\r\n" + QByteArray(8 << 20, 'x'));
  EXPECT_FALSE(get(endless.url()));
}

TEST_F(QtHttpTest, APackedAnswerIsNoAnswer) {
  Server server("HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 3\r\n\r\n\x1f\x8b\x08");
  EXPECT_FALSE(get(server.url()));
  EXPECT_TRUE(server.asked.toLower().contains("accept-encoding: identity\r\n"));
}

TEST_F(QtHttpTest, AMissingServerAndNonsenseGiveNoAnswer) {
  EXPECT_FALSE(get("http://127.0.0.1:1/"));
  Server server("nonsense\r\n\r\n");
  EXPECT_FALSE(get(server.url()));
}

TEST_F(QtHttpTest, OnlySafeAddressesAreAsked) {
  for (const char* url : {"http://example.org/", "ftp://127.0.0.1/", "file:///etc/passwd", "data:text/plain,x", "", "x",
                          "http://127.0.0.1.example.org/", "qrc:/x"})
    EXPECT_FALSE(get(url)) << url;
}

TEST_F(QtHttpTest, ARedirectionOnThisComputerIsFollowed) {
  Server target(answer("200 OK", "there"));
  Server server(redirection(target.url("localhost")));
  const auto response = get(server.url());
  ASSERT_TRUE(response);
  EXPECT_EQ(response->body, "there");
}

TEST_F(QtHttpTest, ARedirectionToAnUnsafeAddressGivesNoAnswer) {
  for (const char* url : {"http://example.org/", "file:///etc/passwd", "ftp://127.0.0.1/"}) {
    Server server(redirection(url));
    EXPECT_FALSE(get(server.url())) << url;
  }
}

TEST_F(QtHttpTest, ACircleOfRedirectionsEnds) {
  Server server(redirection("/feed"));
  EXPECT_FALSE(get(server.url()));
}

TEST_F(QtHttpTest, NothingIsCalledAfterItsEnd) {
  Server server(answer("200 OK", "x"));
  bool called = false;
  {
    QtHttp shortLived;
    shortLived.get({.url = server.url(), .timeout = 15s}, [&](Answer) { called = true; });
    shortLived.get({.url = "x", .timeout = 15s}, [&](Answer) { called = true; });
  }
  EXPECT_TRUE(get(server.url()));
  EXPECT_FALSE(called);
}

}  // namespace
}  // namespace tollvane
