// Responses, fed whole and in pieces: what is beyond doubt is read, all else fails.
#include "host/http/response_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/cases.h"

namespace Corvane::Test {
namespace {

struct Read {
  bool done = false;  // before the connection ended
  Host::WireResult result;
};

Read Feed(const std::string& wire, std::size_t pieceBytes) {
  Host::ResponseReader reader(20);
  for (std::size_t at = 0; at < wire.size(); at += pieceBytes) {
    // A copy of its own: reading past a piece is a fault that the sanitizer sees.
    const std::string text = wire.substr(at, pieceBytes);
    const std::vector<char> piece(text.begin(), text.end());
    if (!reader.Feed({piece.data(), piece.size()})) break;
  }
  const bool done = reader.Done();
  reader.End();
  return {done, reader.TakeResult()};
}

TEST(ResponseReader, ReadsWhatIsBeyondDoubtAndNothingElse) {
  for (const Case& c : ReadCases("host/responses.txt")) {
    const std::string wire = Expanded(c.Text("wire"));
    const auto expected = static_cast<std::uint32_t>(c.Number("status"));
    const bool fails = expected > 1'000;
    for (const std::size_t pieceBytes : {std::max<std::size_t>(wire.size(), 1), std::size_t{1}}) {
      SCOPED_TRACE(c.Where() + " in pieces of " + std::to_string(pieceBytes));
      const Read read = Feed(wire, pieceBytes);
      EXPECT_EQ(read.done, c.Text("read") != "to the end");
      EXPECT_EQ(read.result.error, fails ? expected : 0)
          << testing::PrintToString(read.result.remark);
      EXPECT_EQ(read.result.remark.empty(), !fails);
      if (fails) continue;
      EXPECT_EQ(read.result.status, expected);
      EXPECT_EQ(read.result.body, c.Text("body"));
      EXPECT_EQ(read.result.reusable, c.Text("read").ends_with("reusable"));
    }
  }
}

TEST(ResponseReader, KeepsTheFieldsOfTheLastHeadAlone) {
  const Read read = Feed(
      "HTTP/1.1 100 \r\nA: old\r\n\r\nHTTP/1.1 200 OK\r\n"
      "B:  one \r\nb: two\r\nEmpty:\r\nContent-Length: 0\r\n\r\n",
      1);
  EXPECT_EQ(read.result.headers,
            (Host::BufferedResponse::Headers{
                {L"b", L"one, two"}, {L"empty", L""}, {L"content-length", L"0"}}));
}

}  // namespace
}  // namespace Corvane::Test
