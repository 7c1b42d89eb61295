#include "support/web_address.h"

#include <gtest/gtest.h>

namespace tollvane {
namespace {

TEST(WebAddressTest, OnlyHttpsIsAskedExceptOnThisComputer) {
  EXPECT_TRUE(web::mayAsk("https", "tollvane.example"));
  EXPECT_FALSE(web::mayAsk("http", "tollvane.example"));
  for (const char* host : {"localhost", "127.0.0.1", "::1"}) EXPECT_TRUE(web::mayAsk("http", host)) << host;
  for (const char* scheme : {"file", "ftp", ""}) EXPECT_FALSE(web::mayAsk(scheme, "localhost")) << scheme;
}

TEST(WebAddressTest, NamesThatNeverExistAreNotAsked) {
  EXPECT_FALSE(web::mayAsk("https", "tollvane.invalid"));
  EXPECT_FALSE(web::mayAsk("https", ""));
}

TEST(WebAddressTest, ARedirectionThatWasNotFollowedIsNoAnswer) {
  for (const long status : {200L, 204L, 404L, 500L}) EXPECT_TRUE(web::isAnswer(status)) << status;
  for (const long status : {0L, 100L, 301L, 307L}) EXPECT_FALSE(web::isAnswer(status)) << status;
}

}  // namespace
}  // namespace tollvane
