// What a request puts on the wire: its URL, its head, its answer to a challenge.
#include "host/http/request_head.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "base/utf8.h"
#include "host/http/challenge.h"
#include "host/http/request_url.h"
#include "tests/support/cases.h"

namespace Corvane::Test {
namespace {

TEST(RequestUrl, LeadsNowhereElse) {
  using Function = std::string (*)(const Case&);
  const std::map<std::string, Function> functions = {
      {"target", [](const Case& c) { return Host::EncodeTarget(c.Text("text")); }},
      {"head",
       [](const Case& c) {
         const Host::UrlInHead url = Host::SplitUrl(c.Text("text"));
         return url.host + ' ' + url.target;
       }},
      {"host", [](const Case& c) { return Host::UrlHost(c.Wide("text")).value_or("none"); }},
      {"redirect", [](const Case& c) {
         return Host::RedirectWithinOrigin(c.Text("from"), c.Text("text")).value_or("none");
       }}};
  for (const Case& c : ReadCases("host/request_urls.txt")) {
    EXPECT_EQ(functions.at(c.Text("function"))(c), c.Text("result")) << c.Where();
  }
}

// The head, or why there is none.
std::string Head(const Case& c) {
  Host::RequestSettings settings;
  settings.verb = ToWide(c.Find("verb").value_or("GET"));
  settings.contentType = c.Wide("type");
  settings.userName = c.Wide("user");
  settings.password = c.Wide("password");
  const std::string body = c.Text("body");
  settings.body = body;
  for (const std::string& line : c.Parts("lines")) {
    const std::size_t colon = line.find(": ");
    settings.headers.emplace_back(ToWide(line.substr(0, colon)), ToWide(line.substr(colon + 2)));
  }
  Host::DeviceSettings device;
  if (c.Find("address")) device.userName = L"admin", device.password = L"secret";
  if (c.Find("tls only")) device.secretsOverTlsOnly = c.Text("tls only") == "yes";
  device.basicInClear = c.Find("basic in clear").has_value();

  Host::WireRequest request;
  request.url = c.Find("url").value_or("http://127.0.0.1:8080/x");
  const wchar_t* fault =
      Host::BuildWireRequest(settings, device, c.Find("way").has_value(), &request);
  std::string head;
  if (!fault && c.Text("way") == "streamed") {
    fault = Host::BuildStreamedHead(request, &head);
  } else if (!fault) {
    head =
        Host::BuildHead(request, Host::AnswerChallenge(c.Text("challenge"), request, false, "c"));
  }
  return fault ? ToUtf8(fault) : head;
}

TEST(RequestHead, SaysWhatTheSettingsSay) {
  for (const Case& c : ReadCases("host/request_heads.txt")) {
    EXPECT_EQ(Head(c), c.Text("head") + c.Text("fault")) << c.Where() << ' ' << c.Text("name");
  }
}

// By the examples of RFC 7616 and RFC 7617.
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
