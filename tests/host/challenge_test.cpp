// Answers to challenges, by the examples of RFC 7616 and RFC 7617.
#include "host/http/challenge.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/cases.h"

namespace Corvane::Test {
namespace {

TEST(Challenge, IsAnsweredOnceAsTheStandardsShow) {
  for (const Case& c : ReadCases("host/challenges.txt")) {
    SCOPED_TRACE(c.Where() + " " + c.Text("name"));
    const std::string when = c.Text("when");
    Host::WireRequest request;
    request.verb = "GET";
    request.url = "http://www.example.org:80/dir/index.html";
    request.body = "body";
    if (when != "no credentials") {
      request.userName = when == "colon" ? "Mu:fasa" : "Mufasa";
      request.password = "Circle of Life";
    }
    request.allowsBasic = when != "no basic";
    EXPECT_EQ(Host::AnswerChallenge(c.Text("challenges"), request, when == "again",
                                    "f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ"),
              c.Text("answer"));
  }
  // Its own nonces are not repeated.
  Host::WireRequest request;
  request.userName = "anna";
  const std::string challenge = "Digest realm=r, nonce=n, qop=auth";
  EXPECT_NE(Host::AnswerChallenge(challenge, request, false),
            Host::AnswerChallenge(challenge, request, false));
}

}  // namespace
}  // namespace Corvane::Test
