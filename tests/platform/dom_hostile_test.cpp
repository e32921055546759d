// Documents and patterns made to hurt: they fail or succeed soon, in bounded memory, without
// touching a file.
#include <sys/stat.h>

#include <ctime>
#include <random>

#include "base/utf8.h"
#include "tests/platform/dom_fixture.h"
#include "tests/support/cases.h"
#include "tests/support/temp_folder.h"

namespace Corvane::Test {
namespace {

// Of the processor, in seconds: long enough for a slow machine under sanitizers, far too short for
// anything quadratic here.
constexpr double kSoon = 60;

class DomHostileTest : public DomTest {
 protected:
  ~DomHostileTest() override {
    EXPECT_LT(static_cast<double>(std::clock() - m_start) / CLOCKS_PER_SEC, kSoon);
  }

 private:
  const std::clock_t m_start = std::clock();
};

TEST_F(DomHostileTest, BoundsDepth) {
  constexpr std::size_t kDeepest = Corvane::DomLimits::kMaxDepth;
  EXPECT_EQ(S_FALSE, Load(Repeat(L"<a>", 1'000'000)));
  EXPECT_EQ(S_FALSE, Load(Repeat(L"<a>", kDeepest + 1) + Repeat(L"</a>", kDeepest + 1)));
  ASSERT_EQ(S_OK, Load(Repeat(L"<a>", kDeepest) + L"x" + Repeat(L"</a>", kDeepest)));
  EXPECT_EQ(L"x", Texts(L"/a"));
  EXPECT_EQ(L"<none>", Texts(L"//b"));
}

TEST_F(DomHostileTest, BoundsTheCostOfSelections) {
  const std::wstring documents[] = {
      Repeat(L"<a>", 50'000) + L"<z/>" + Repeat(L"</a>", 50'000),
      L"<r>" + Repeat(L"<a/>", 3000) + L"</r>",
  };
  for (const Case& c : ReadCases("platform/dom_costs.txt")) {
    SCOPED_TRACE(c.Where());
    ASSERT_EQ(S_OK, Load(documents[c.Text("document") == "deep" ? 0 : 1]));
    EXPECT_EQ(c.Wide("first"), First(c.Wide("pattern")));
  }
}

TEST_F(DomHostileTest, TakesManyAttributes) {
  std::wstring xml = L"<r xmlns:p='u'";
  for (int i = 0; i < 200'000; ++i) {
    const std::wstring number = std::to_wstring(i);
    xml.append(L" p:a").append(number).append(L"='").append(number).append(L"'");
  }
  ASSERT_EQ(S_OK, Load(xml + L"/>"));
  EXPECT_EQ(L"199999", Texts(L"r/@p:a199999"));
  EXPECT_EQ(S_FALSE, Load(xml + L" xmlns:q='u' q:a7=''/>"));
}

TEST_F(DomHostileTest, TakesManyPrefixes) {
  constexpr int kMany = 20'000;
  const auto name = [](int i) { return L"p" + std::to_wstring(i); };
  std::wstring xml;
  for (int i = 0; i < kMany; ++i) xml += L"<" + name(i) + L":a xmlns:" + name(i) + L"='u'>";
  for (int i = kMany; i-- > 0;) xml += L"</" + name(i) + L":a>";
  ASSERT_EQ(S_OK, Load(xml));
}

TEST_F(DomHostileTest, BoundsTheNumberOfNodes) {
  constexpr std::size_t kMany = Corvane::DomLimits::kMaxNodes;
  EXPECT_EQ(S_FALSE, Load(L"<r>" + Repeat(L"<a/>", kMany) + L"</r>"));
  ASSERT_EQ(S_OK, Load(L"<r>" + Repeat(L"<a/>", kMany - 3) + L"<b/></r>"));
  EXPECT_EQ(L"", Texts(L"//b"));
  EXPECT_EQ(L"", Texts(L"r/b[end()]"));
}

TEST_F(DomHostileTest, BoundsTheSize) {
  constexpr std::size_t kLargest = Corvane::DomLimits::kMaxDocumentBytes;
  constexpr std::size_t kMarkup = 10;  // <r a=''/> and a character
  EXPECT_EQ(S_FALSE, Load(L"<r a='" + Repeat(L"x", kLargest) + L"'/>"));
  ASSERT_EQ(S_OK, Load(L"<r a='" + Repeat(L"x", kLargest - kMarkup) + L"'/>"));
  EXPECT_EQ(kLargest - kMarkup, First(L"r/@a").size());
}

TEST_F(DomHostileTest, FollowsNoEntity) {
  const TempFolder folder;
  const std::wstring url = L"'file://" + folder.Write("canary.xml", "<secret/>").wstring() + L"'";
  for (const std::wstring& xml : {L"<!DOCTYPE r [<!ENTITY x SYSTEM " + url + L">]><r>&x;</r>",
                                  L"<!DOCTYPE r SYSTEM " + url + L"><r/>",
                                  L"<!DOCTYPE r [<!ENTITY % x SYSTEM " + url + L"> %x;]><r/>"}) {
    EXPECT_EQ(S_FALSE, Load(xml)) << ToUtf8(xml);
    EXPECT_EQ(L"<none>", Texts(L"//*"));
  }
}

TEST_F(DomHostileTest, ReadsOnlyRegularFiles) {
  const TempFolder folder;
  const std::filesystem::path pipe = folder.Path() / "pipe";
  ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
  for (const std::wstring& file :
       {pipe.wstring(), std::wstring(L"/dev/zero"), std::wstring(L"/dev")}) {
    EXPECT_EQ(S_FALSE, LoadFile(file));
  }
}

TEST_F(DomHostileTest, RefusesWhatIsNoCharacter) {
  for (const std::uint32_t c : {0xD800u, 0xDFFFu, 0x110000u, 0x6D783F3Cu, 0xFFFFFFFFu}) {
    const std::wstring text(1, static_cast<wchar_t>(c));
    EXPECT_EQ(S_FALSE, Load(L"<r>" + text + L"</r>")) << c;
    EXPECT_EQ(L"<refused>", Texts(L"r[.='" + text + L"']")) << c;
  }
}

TEST_F(DomHostileTest, BoundsPatterns) {
  ASSERT_EQ(S_OK, Load(L"<a><a/></a>"));
  EXPECT_EQ(L"<refused>", Texts(Repeat(L"(", 100'000)));
  EXPECT_EQ(L"<refused>", Texts(Repeat(L"$not$ ", 10'000) + L"a"));
  EXPECT_EQ(L"<refused>", Texts(Repeat(L"a/", 50'000) + L"a"));
  EXPECT_EQ(L"<none>", Texts(Repeat(L"a/", 30'000) + L"a"));
  EXPECT_EQ(L",", Texts(Repeat(L"//a/..", 5'000)));
  EXPECT_EQ(L"", Texts(Repeat(L"(", 190) + L"a" + Repeat(L")", 190)));
  EXPECT_EQ(L"<none>", Texts(Repeat(L"a[", 190) + L"a" + Repeat(L"]", 190)));
  EXPECT_EQ(L"", Texts(L"a[" + Repeat(L"b or ", 10'000) + L"a]"));
  for (int i = 0; i < 1000; ++i)
    Texts(L"a[b='" + std::to_wstring(i) + L"']");  // more than are kept
}

// The search for the first node takes short cuts that the one for all nodes does not: they must
// agree, as Texts checks.
TEST_F(DomHostileTest, FindsTheFirstOfAllOnRandomDocuments) {
  std::mt19937 random(20240229);
  const auto pick = [&](auto&... choices) {
    const wchar_t* const all[] = {choices...};
    return std::wstring(all[random() % sizeof...(choices)]);
  };
  const auto step = [&] {
    return pick(L"/", L"/", L"//") +
           pick(L"a", L"b", L"*", L".", L"..", L"@k", L"(a|b)", L"(b/..|a)", L"text()", L"node()") +
           pick(L"", L"", L"", L"[0]", L"[1]", L"[end()]", L"[b]", L"[.//a]", L"[@k='1']",
                L"[a='x']", L"[not(..)]", L"[ancestor(b)]");
  };
  for (int round = 0; round < 300; ++round) {
    std::wstring xml = L"<a>", open = L"a";
    for (int i = 0; i < 40 || !open.empty(); ++i) {
      if (i < 40 && random() % 2 == 0) {
        open.push_back(random() % 2 == 0 ? L'a' : L'b');
        xml += L'<' + open.substr(open.size() - 1) + pick(L"", L" k='1'", L" k='2'") + L'>' +
               pick(L"", L"", L"x", L"y");
      } else if (i >= 40 || open.size() > 1) {
        xml += L"</" + open.substr(open.size() - 1) + L'>';
        open.pop_back();
      }
    }
    SCOPED_TRACE(ToUtf8(xml));
    ASSERT_EQ(S_OK, Load(xml));
    for (int i = 0; i < 20; ++i) {
      std::wstring pattern;
      for (std::uint32_t steps = 1 + random() % 4; steps > 0; --steps) pattern += step();
      ASSERT_NE(L"<refused>", Texts(pattern)) << ToUtf8(pattern);
      ASSERT_FALSE(HasFailure()) << ToUtf8(pattern);
    }
  }
}

}  // namespace
}  // namespace Corvane::Test
