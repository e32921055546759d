// Answers to challenges, by the examples of RFC 7616 and RFC 7617.
#include "host/http/challenge.h"

#include <gtest/gtest.h>

#include <string>

namespace Corvane::Test {
namespace {

const std::string kRealm = "Digest realm=\"http-auth@example.org\", ";
const std::string kNonce = "nonce=\"7ypf/xlj9XXwfDPEoM4URrv/xwf94BcCAzFZH4GiTo0v\"";
const std::string kRest =
    ", qop=\"auth, auth-int\", opaque=\"FQhe/qaU925kfnzjCev0ciny7QMkPqMAFRtzCUYo5tdS\"";
const std::string kMd5 = kRealm + "algorithm=MD5, " + kNonce + kRest;
const std::string kSha = kRealm + "algorithm=SHA-256, " + kNonce + kRest;
const std::string kOld = "Digest realm=\"r\", nonce=\"n\"";  // RFC 2069

Host::WireRequest Request() {
  Host::WireRequest request;
  request.verb = "GET";
  request.url = "http://www.example.org:80/dir/index.html";
  request.userName = "Mufasa";
  request.password = "Circle of Life";
  return request;
}

std::string Answer(const std::string& challenges, const Host::WireRequest& request,
                   bool again = false) {
  return Host::AnswerChallenge(challenges, request, again,
                               "f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ");
}

TEST(Challenge, IsAnsweredAsTheStandardsShow) {
  const std::string kMd5Response = "response=\"8ca523f5e9506fed4657c9700eebdbec\"";
  const std::string kShaResponse =
      "response=\"753927fa0e85d155564e2e272a28d1802ca10daf4496794697cf8db5856cb6c1\"";
  const struct {
    const char* name;
    std::string challenges, part;
    bool again = false;
  } kCases[] = {
      {"MD5", kMd5, kMd5Response},
      {"SHA-256", kSha, kShaResponse},
      {"the first that is known",
       "Negotiate abc==, Digest algorithm=odd, nonce=x, " + kSha + ", " + kMd5, kShaResponse},
      {"Digest before Basic", "Basic realm=\"a, Digest \\\"b\\\"\", " + kMd5, kMd5Response},
      {"without qop", kOld, "uri=\"/dir/index.html\", response=\""},
      {"a nonce that is stale", kMd5 + ", stale=TRUE", kMd5Response, true},
      {"Basic", "basic", "Basic TXVmYXNhOkNpcmNsZSBvZiBMaWZl"},
  };
  for (const auto& row : kCases) {
    const std::string answer = Answer(row.challenges, Request(), row.again);
    EXPECT_NE(answer.find(row.part), answer.npos) << row.name << ": " << answer;
  }
  EXPECT_EQ(Answer(kMd5, Request()),
            "Digest username=\"Mufasa\", realm=\"http-auth@example.org\", "
            "nonce=\"7ypf/xlj9XXwfDPEoM4URrv/xwf94BcCAzFZH4GiTo0v\", uri=\"/dir/index.html\", "
            "cnonce=\"f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ\", nc=00000001, qop=auth, " +
                kMd5Response +
                ", opaque=\"FQhe/qaU925kfnzjCev0ciny7QMkPqMAFRtzCUYo5tdS\", algorithm=MD5");
}

TEST(Challenge, IsNotAnsweredInVain) {
  const struct {
    const char* name;
    std::string challenges;
    bool again = false;
  } kCases[] = {
      {"none", ""},
      {"unknown scheme", "Bearer realm=\"r\""},
      {"unknown hash", kRealm + "algorithm=MD6, " + kNonce},
      {"no nonce", "Digest realm=\"r\""},
      {"unknown protection", kOld + ", qop=\"odd\""},
      {"refused", kMd5, true},
      {"refused, Basic", "Basic realm=\"r\"", true},
      {"an open quote", "Digest realm=\"r, nonce=n"},
      {"no scheme", "\"\", ="},
  };
  for (const auto& row : kCases) {
    EXPECT_EQ(Answer(row.challenges, Request(), row.again), "") << row.name;
  }
  Host::WireRequest request = Request();
  request.allowsBasic = false;
  EXPECT_EQ(Answer("Basic", request), "");
  request = Request();
  request.userName = request.password = "";
  EXPECT_EQ(Answer(kMd5 + ", Basic", request), "");
}

}  // namespace
}  // namespace Corvane::Test
