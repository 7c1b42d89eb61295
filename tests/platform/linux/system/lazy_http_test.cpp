#include "platform/linux/system/lazy_http.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <fstream>
#include <iterator>

#include "tests/support/test_application.h"

namespace tollvane {
namespace {

using namespace std::chrono_literals;

const std::filesystem::path module = std::filesystem::path(TOLLVANE_BUNDLE) / "TollvaneWeb.so";

bool isLoaded() {
  std::ifstream maps("/proc/self/maps");
  return std::string(std::istreambuf_iterator<char>(maps), {}).find("/TollvaneWeb.so") != std::string::npos;
}

class LazyHttpTest : public testing::Test {
 protected:
  // Whether a request is answered; fails the test if its end is not reported.
  bool isAnswered(LazyHttp& http, const std::string& url) {
    std::optional<bool> answered;
    http.get({.url = url, .timeout = 15s},
             [&](const std::optional<HttpResponse>& response) { answered = response.has_value(); });
    EXPECT_FALSE(answered) << "the answer must come later, not at once";
    QElapsedTimer time;
    time.start();
    while (!answered && time.elapsed() < 20'000) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    EXPECT_TRUE(answered);
    return answered.value_or(false);
  }

  test::TestApplication application;
};

TEST_F(LazyHttpTest, AnAddressThatIsNotAskedNeedsNoModule) {
  LazyHttp http(module);
  EXPECT_FALSE(isLoaded());
  EXPECT_FALSE(isAnswered(http, "https://tollvane.invalid/feed"));
  EXPECT_FALSE(isAnswered(http, "ftp://127.0.0.1/feed"));
  EXPECT_FALSE(isLoaded());
  EXPECT_FALSE(isAnswered(http, "http://127.0.0.1:9/feed"));
  EXPECT_TRUE(isLoaded());
}

TEST_F(LazyHttpTest, WithoutItsModuleNoRequestIsAnswered) {
  LazyHttp http(module.parent_path() / "none.so");
  EXPECT_FALSE(isAnswered(http, "http://127.0.0.1:9/"));
  EXPECT_FALSE(isAnswered(http, "http://127.0.0.1:9/"));
}

}  // namespace
}  // namespace tollvane
