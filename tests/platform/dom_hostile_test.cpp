// Documents and patterns made to hurt: they fail or succeed soon, in bounded memory, without
// touching a file.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <random>

#include "tests/platform/dom_fixture.h"
#include "tests/support/temp_folder.h"

namespace Corvane::Test {
namespace {

// Long enough for a slow and busy machine under sanitizers, far too short for anything quadratic
// here.
constexpr auto kSoon = std::chrono::seconds(120);

class DomHostileTest : public DomTest {
 protected:
  ~DomHostileTest() override { EXPECT_LT(std::chrono::steady_clock::now() - m_start, kSoon); }

  // As Select, without asking for all nodes too.
  std::wstring SelectFirst(std::wstring_view pattern) {
    Com<IXMLDOMNode> node;
    const HRESULT result = m_document->selectSingleNode(Text(pattern).Get(), node.Receive());
    return node ? TextOf(node.Get()) : result == E_FAIL ? L"<refused>" : L"<none>";
  }

 private:
  const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

TEST_F(DomHostileTest, BoundsDepth) {
  constexpr std::size_t kDeepest = Corvane::DomLimits::kMaxDepth;
  EXPECT_EQ(S_FALSE, Load(Repeat(L"<a>", 1'000'000)));
  EXPECT_EQ(S_FALSE, Load(Repeat(L"<a>", kDeepest + 1) + Repeat(L"</a>", kDeepest + 1)));
  ASSERT_EQ(S_OK, Load(Repeat(L"<a>", kDeepest) + L"x" + Repeat(L"</a>", kDeepest)));
  EXPECT_EQ(L"x", Select(L"/a"));
  EXPECT_EQ(L"<none>", Select(L"//b"));
}

TEST_F(DomHostileTest, BoundsTheCostOfSelectionsOnDeepDocuments) {
  ASSERT_EQ(S_OK, Load(Repeat(L"<a>", 50'000) + L"<z/>" + Repeat(L"</a>", 50'000)));
  const struct {
    const wchar_t* pattern;
    const wchar_t* text;
  } kRows[] = {
      {L"//a//a//a//a/z", L""},         {L"//a[a]//a[a]/z", L"<none>"},
      {L"//.[a='x']/z", L"<none>"},     {L"//.[z]//z", L""},
      {L"//a[0]//a[0]//a[0]/z", L""},   {L"//*[end()]//*[end()]/z", L""},
      {L"//z[ancestor(q)]", L"<none>"}, {L"//a/../../..//a/z", L""},
      {L"//a[.//b]", L"<none>"},        {L"//a[.//comment()]", L"<refused>"},
  };
  for (const auto& row : kRows)
    EXPECT_EQ(row.text, SelectFirst(row.pattern)) << Narrow(row.pattern);
}

TEST_F(DomHostileTest, BoundsNestedSearches) {
  ASSERT_EQ(S_OK, Load(L"<r>" + Repeat(L"<a/>", 3000) + L"</r>"));
  EXPECT_EQ(L"<refused>", SelectFirst(L"//.[//.[//.[//comment()]]]"));
  EXPECT_EQ(L"<refused>", SelectFirst(L"//a[../a[../a[../b]]]"));
}

TEST_F(DomHostileTest, TakesManyAttributes) {
  std::wstring xml = L"<r xmlns:p='u'";
  for (int i = 0; i < 200'000; ++i)
    xml += L" p:a" + std::to_wstring(i) + L"='" + std::to_wstring(i) + L"'";
  ASSERT_EQ(S_OK, Load(xml + L"/>"));
  EXPECT_EQ(L"199999", Select(L"r/@p:a199999"));
  EXPECT_EQ(S_FALSE, Load(xml + L" xmlns:q='u' q:a7=''/>"));
}

TEST_F(DomHostileTest, TakesManyPrefixes) {
  std::wstring xml = L"<r>";
  for (int i = 0; i < 20'000; ++i)
    xml += L"<p" + std::to_wstring(i) + L":a xmlns:p" + std::to_wstring(i) + L"='u'>";
  for (int i = 20'000; i-- > 0;) xml += L"</p" + std::to_wstring(i) + L":a>";
  ASSERT_EQ(S_OK, Load(xml + L"</r>"));
}

TEST_F(DomHostileTest, BoundsTheNumberOfNodes) {
  constexpr std::size_t kMany = Corvane::DomLimits::kMaxNodes;
  EXPECT_EQ(S_FALSE, Load(L"<r>" + Repeat(L"<a/>", kMany) + L"</r>"));
  ASSERT_EQ(S_OK, Load(L"<r>" + Repeat(L"<a/>", kMany - 3) + L"<b/></r>"));
  EXPECT_EQ(L"", Select(L"//b"));
  EXPECT_EQ(L"", Select(L"r/b[end()]"));
}

TEST_F(DomHostileTest, BoundsTheSize) {
  constexpr std::size_t kLargest = Corvane::DomLimits::kMaxDocumentBytes;
  constexpr std::size_t kMarkup = 10;  // <r a=''/> and a character
  EXPECT_EQ(S_FALSE, Load(L"<r a='" + Repeat(L"x", kLargest) + L"'/>"));
  ASSERT_EQ(S_OK, Load(L"<r a='" + Repeat(L"x", kLargest - kMarkup) + L"'/>"));
  EXPECT_EQ(kLargest - kMarkup, Select(L"r/@a").size());
}

TEST_F(DomHostileTest, FollowsNoEntity) {
  const TempFolder folder;
  const std::filesystem::path canary = folder.Write("canary.xml", "<secret/>");
  const std::wstring url = L"file://" + canary.wstring();
  const struct {
    const char* name;
    std::wstring xml;
  } kRows[] = {
      {"external entity", L"<!DOCTYPE r [<!ENTITY x SYSTEM '" + url + L"'>]><r>&x;</r>"},
      {"external subset", L"<!DOCTYPE r SYSTEM '" + url + L"'><r/>"},
      {"parameter entity", L"<!DOCTYPE r [<!ENTITY % x SYSTEM '" + url + L"'> %x;]><r/>"},
      {"expansion in depth",
       L"<!DOCTYPE r [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;'><!ENTITY c "
       L"'&b;&b;&b;&b;&b;&b;&b;&b;'><!ENTITY d '&c;&c;&c;&c;&c;&c;&c;&c;'>]><r>&d;</r>"},
      {"expansion in an attribute", L"<!DOCTYPE r [<!ENTITY a 'a'>]><r a='&a;'/>"},
      {"default attribute", L"<!DOCTYPE r [<!ATTLIST r a CDATA 'x'>]><r/>"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(S_FALSE, Load(row.xml)) << row.name;
    EXPECT_EQ(L"<none>", Select(L"//*")) << row.name;
  }
}

TEST_F(DomHostileTest, ReadsOnlyRegularFiles) {
  const TempFolder folder;
  const std::filesystem::path pipe = folder.Path() / "pipe";
  ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
  EXPECT_EQ(S_FALSE, LoadFile(pipe.wstring()));
  EXPECT_EQ(S_FALSE, LoadFile(L"/dev/zero"));
  EXPECT_EQ(S_FALSE, LoadFile(L"/dev"));
}

TEST_F(DomHostileTest, RefusesWhatIsNoCharacter) {
  for (const std::uint32_t c : {0xD800u, 0xDFFFu, 0x110000u, 0x6D783F3Cu, 0xFFFFFFFFu}) {
    EXPECT_EQ(S_FALSE, Load(L"<r>" + std::wstring(1, static_cast<wchar_t>(c)) + L"</r>")) << c;
    EXPECT_EQ(L"<refused>", Select(L"r[.='" + std::wstring(1, static_cast<wchar_t>(c)) + L"']"))
        << c;
  }
}

TEST_F(DomHostileTest, BoundsPatterns) {
  ASSERT_EQ(S_OK, Load(L"<a><a/></a>"));
  EXPECT_EQ(L"<refused>", Select(Repeat(L"(", 100'000)));
  EXPECT_EQ(L"<refused>", Select(Repeat(L"$not$ ", 10'000) + L"a"));
  EXPECT_EQ(L"<refused>", Select(Repeat(L"a/", 50'000) + L"a"));
  EXPECT_EQ(L"<none>", Select(Repeat(L"a/", 30'000) + L"a"));
  EXPECT_EQ(L"", Select(Repeat(L"//a/..", 5'000)));
  EXPECT_EQ(L"", Select(Repeat(L"(", 190) + L"a" + Repeat(L")", 190)));
  EXPECT_EQ(L"<none>", Select(Repeat(L"a[", 190) + L"a" + Repeat(L"]", 190)));
  EXPECT_EQ(L"", Select(L"a[" + Repeat(L"b or ", 10'000) + L"a]"));
  for (int i = 0; i < 1000; ++i)
    Select(L"a[b='" + std::to_wstring(i) + L"']");  // more than are kept
}

// The search for the first node takes short cuts that the one for all nodes does not: they must
// agree.
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
    std::wstring xml = L"<a>";
    std::wstring open = L"a";
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
    ASSERT_EQ(S_OK, Load(xml)) << Narrow(xml);
    for (int i = 0; i < 20; ++i) {
      std::wstring pattern;
      for (std::uint32_t steps = 1 + random() % 4; steps > 0; --steps) pattern += step();
      Com<IXMLDOMNode> first;
      Com<IXMLDOMNode> same;
      Com<IXMLDOMNodeList> all;
      const Text text(pattern);
      const HRESULT found = m_document->selectSingleNode(text.Get(), first.Receive());
      ASSERT_EQ(S_OK, m_document->selectNodes(text.Get(), all.Receive())) << Narrow(pattern);
      ASSERT_EQ(found, all->get_item(0, same.Receive()))
          << Narrow(pattern) << " on " << Narrow(xml);
      if (!first) continue;
      ASSERT_EQ(TextOf(first.Get()) + NameOf(first.Get()), TextOf(same.Get()) + NameOf(same.Get()))
          << Narrow(pattern) << " on " << Narrow(xml);
    }
  }
}

}  // namespace
}  // namespace Corvane::Test
