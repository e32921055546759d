// Responses, fed whole and byte by byte: what is beyond doubt is read, all else fails.
#include "host/http/response_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "corvane/error_codes.h"

namespace Corvane::Test {
namespace {

using namespace std::string_literals;
using Host::ResponseReader;
using Host::WireResult;

constexpr std::size_t kMaxBody = 20;
const std::string kOk = "HTTP/1.1 200 OK\r\n";
const std::string kChunked = kOk + "Transfer-Encoding: chunked\r\n\r\n";

std::string WithLength(const std::string& length, const std::string& body) {
  return kOk + "Content-Length: " + length + "\r\n\r\n" + body;
}

struct Read {
  bool done = false;  // before the connection ended
  WireResult result;
};

Read Feed(const std::string& wire, std::size_t pieceBytes) {
  ResponseReader reader(kMaxBody);
  for (std::size_t at = 0; at < wire.size(); at += pieceBytes) {
    // A copy of its own: reading past a piece is a fault that the sanitizer sees.
    const std::vector<char> piece(
        wire.begin() + static_cast<std::ptrdiff_t>(at),
        wire.begin() + static_cast<std::ptrdiff_t>(std::min(at + pieceBytes, wire.size())));
    if (!reader.Feed({piece.data(), piece.size()})) break;
  }
  const bool done = reader.Done();
  reader.End();
  return {done, reader.TakeResult()};
}

TEST(ResponseReader, ReadsEveryFraming) {
  const std::tuple<const char*, std::string, std::uint32_t, std::string, bool> kCases[] = {
      {"length", WithLength("4", "body"), 200, "body", true},
      {"length 0", WithLength("0", ""), 200, "", true},
      {"leading zeros", WithLength("004", "body"), 200, "body", true},
      {"one length twice", WithLength("1\r\nContent-Length: 1", "x"), 200, "x", true},
      {"bytes behind the end", WithLength("1", "xyz"), 200, "x", true},
      {"the longest body", WithLength("20", std::string(20, 'x')), 200, std::string(20, 'x'), true},
      {"NUL bytes", WithLength("3", "a\0b"s), 200, "a\0b"s, true},
      {"chunks", kChunked + "3\r\nabc\r\nA\r\n0123456789\r\n0\r\n\r\n", 200, "abc0123456789", true},
      {"line ends in a chunk", kChunked + "4\r\n\r\n\r\n\r\n0\r\n\r\n", 200, "\r\n\r\n", true},
      {"chunk extensions", kChunked + "1 ;a=\"b\"\r\nx\r\n001  \r\ny\r\n0;c\r\n\r\n", 200, "xy",
       true},
      {"trailers", kChunked + "1\r\nx\r\n0\r\nContent-Length: 9\r\nA: b\r\n\r\n", 200, "x", true},
      {"the coding in capitals", kOk + "transfer-encoding:CHUNKED\r\n\r\n0\r\n\r\n", 200, "", true},
      {"end of the connection", kOk + "\r\nbody", 200, "body", false},
      {"HTTP/1.0", "HTTP/1.0 200 OK\r\n\r\nbody", 200, "body", false},
      {"interim responses",
       "HTTP/1.1 100 \r\n\r\nHTTP/1.1 103 Hints\r\nA: b\r\n\r\n" + WithLength("1", "x"), 200, "x",
       true},
      {"no body by its status", "HTTP/1.1 204 None\r\n\r\nmore", 204, "", true},
      {"a length that is not its own", "HTTP/1.1 304 Same\r\nContent-Length: 9\r\n\r\n", 304, "",
       true},
      {"no reason", "HTTP/1.1 413\r\nContent-Length: 0\r\n\r\n", 413, "", true},
      {"bare line feeds", "HTTP/1.1 401 No\nContent-Length: 1\n\nx", 401, "x", true},
      {"identity", WithLength("1\r\nContent-Encoding: identity", "x"), 200, "x", true}};
  for (const auto& [name, wire, status, body, done] : kCases) {
    for (const std::size_t pieceBytes : {wire.size(), std::size_t{1}, std::size_t{3}}) {
      SCOPED_TRACE(name + ", in pieces of "s + std::to_string(pieceBytes));
      const Read read = Feed(wire, pieceBytes);
      EXPECT_EQ(read.result.error, 0U) << testing::PrintToString(read.result.remark);
      EXPECT_EQ(read.result.status, status);
      EXPECT_EQ(read.result.body, body);
      EXPECT_EQ(read.done, done);
    }
  }
}

TEST(ResponseReader, KeepsTheFieldsOfTheLastHeadAlone) {
  const Read read = Feed("HTTP/1.1 100 \r\nA: old\r\n\r\n" + kOk +
                             "B:  one \r\nb: two\r\nEmpty:\r\nContent-Length: 0\r\n\r\n",
                         1);
  EXPECT_EQ(read.result.headers,
            (Host::BufferedResponse::Headers{
                {L"b", L"one, two"}, {L"empty", L""}, {L"content-length", L"0"}}));
}

TEST(ResponseReader, FailsAtOnceOnWhatIsInDoubt) {
  const std::string kLine(Host::kMaxHeaderBytes, 'x');
  std::string manyLines;
  while (manyLines.size() <= Host::kMaxHeaderBytes) manyLines += "Name: value\r\n";
  std::string manyHeads;
  while (manyHeads.size() <= Host::kMaxHeaderBytes) manyHeads += "HTTP/1.1 100 \r\n\r\n";
  std::string manyExtensions = kChunked;
  for (int i = 0; i < 20; ++i) manyExtensions += "1;" + std::string(4096, 'x') + "\r\nx\r\n";

  std::vector<std::pair<std::string, std::uint32_t>> cases = {
      {"HTTP/1.1 200 " + kLine, kErrorHeaderTooLarge},
      {kOk + "A: " + kLine, kErrorHeaderTooLarge},
      {kOk + manyLines, kErrorHeaderTooLarge},
      {manyHeads, kErrorHeaderTooLarge},
      {kChunked + "0\r\n" + manyLines, kErrorHeaderTooLarge},
      {manyExtensions, kErrorHeaderTooLarge},
      {kChunked + "1;" + kLine, kErrorHeaderTooLarge},
      {WithLength("21", ""), kErrorResponseTooLarge},
      {WithLength("99999999999999999999999", ""), kErrorResponseTooLarge},
      {kOk + "\r\n" + std::string(21, 'x'), kErrorResponseTooLarge},
      {kChunked + "15\r\n", kErrorResponseTooLarge},
      {kChunked + "A\r\n0123456789\r\nB\r\n", kErrorResponseTooLarge},
      {kChunked + "FFFFFFFFFFFFFFFF\r\n", kErrorResponseTooLarge}};
  const std::string kMalformed[] = {
      "\r\n" + kOk,
      "S",
      "HTTP/2",
      "HTTP/1.x 200 OK\r\n",
      "HTTP/1.1200 OK\r\n",
      "HTTP/1.1  200 OK\r\n",
      "HTTP/1.1 20\r\n",
      "HTTP/1.1 099 Low\r\n",
      "HTTP/1.1 2000 High\r\n",
      "HTTP/1.1 200\tOK\r\n",
      "HTTP/1.1 101 Switching\r\n\r\n",
      WithLength("1\r\nContent-Length: 2", ""),
      WithLength("1, 1", ""),
      WithLength("", ""),
      WithLength("-1", ""),
      WithLength("+1", ""),
      WithLength("1x", ""),
      WithLength("0x1", ""),
      WithLength("1\r\nTransfer-Encoding: chunked", ""),
      "HTTP/1.0 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n",
      kOk + "Transfer-Encoding: gzip\r\n\r\n",
      kOk + "Transfer-Encoding: gzip, chunked\r\n\r\n",
      kOk + "Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n\r\n",
      kOk + "Transfer-Encoding:\r\n\r\n",
      WithLength("1\r\nContent-Encoding: gzip", "x"),
      kOk + "A: b\r\n folded: c\r\n",
      kOk + " A: b\r\n",
      kOk + "Content-Length : 1\r\n",
      kOk + ": b\r\n",
      kOk + "no field\r\n",
      kOk + "HTTP/1.1 200 OK\r\n",
      kOk + "A: b\0c\r\n"s,
      kOk + "A: b\rC: d\r\n",
      kOk + "A: b\r\r\n",
      kChunked + "\r\n",
      kChunked + "zz\r\n",
      kChunked + "-1\r\n",
      kChunked + "0x1\r\n",
      kChunked + " 1\r\n",
      kChunked + "1 1\r\n",
      kChunked + "1\n",
      kChunked + "00000000000000001\r\n",
      kChunked + "FFFFFFFFFFFFFFFFF\r\n",
      kChunked + "1\r\nxy",
      kChunked + "1\r\nx\n"};
  for (const std::string& wire : kMalformed) cases.emplace_back(wire, kErrorInvalidResponse);

  for (const auto& [wire, error] : cases) {
    for (const std::size_t pieceBytes : {wire.size(), std::size_t{1}}) {
      SCOPED_TRACE(testing::PrintToString(wire.substr(0, 120)) + " in pieces of " +
                   std::to_string(pieceBytes));
      const Read read = Feed(wire, pieceBytes);
      EXPECT_TRUE(read.done);
      EXPECT_EQ(read.result.error, error) << testing::PrintToString(read.result.remark);
      EXPECT_NE(read.result.remark, L"");
    }
  }
}

TEST(ResponseReader, MissesWhatTheConnectionDidNotBring) {
  for (const std::string& wire :
       {""s, "HTT"s, kOk, kOk + "Conte", WithLength("9", "half"), "HTTP/1.1 100 \r\n\r\n"s,
        kChunked, kChunked + "3\r\nab", kChunked + "1\r\nx\r\n", kChunked + "1\r\nx\r\n0\r\n"}) {
    SCOPED_TRACE(wire);
    const Read read = Feed(wire, 1);
    EXPECT_FALSE(read.done);
    EXPECT_EQ(read.result.error, kErrorConnection);
  }
}

}  // namespace
}  // namespace Corvane::Test
