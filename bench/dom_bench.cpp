// The DOM against libxml2 and pugixml, the same work for each: one page of about 40 KB with 400
// records, parsed and asked for the value of named records. The layer works through its COM
// surface, from a BSTR that is there already.
//
//   ParseAndSelectTwenty/corvane|libxml2|pugixml  parse, then 20 selections
//   //p:Item[dd:Name="itemN"]/dd:Value ParseAndSelectOne/...                         parse, then
//   one of them, from the middle ParseOnly/...                                 parse
#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <memory>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "corvane/platform.h"

namespace {

constexpr int kRecords = 400;
constexpr int kSelections = 20;

struct Question {
  std::string pattern;
  std::wstring widePattern;
  std::string answer;
  std::wstring wideAnswer;
};

std::wstring Widen(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

std::string Page() {
  std::string page =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<p:Page xmlns:p=\"urn:p\" "
      "xmlns:dd=\"urn:dd\">\n";
  for (int i = 0; i < kRecords; ++i) {
    const std::string number = std::to_string(i);
    page += "    <p:Item><dd:Name>item" + number +
            "</dd:Name><dd:Value>the current value of item " + number + "</dd:Value></p:Item>\n";
  }
  return page + "</p:Page>\n";
}

std::vector<Question> Questions(int count) {
  std::vector<Question> questions;
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string((2 * i + 1) * kRecords / (2 * count));
    const std::string pattern = "//p:Item[dd:Name=\"item" + number + "\"]/dd:Value";
    const std::string answer = "the current value of item " + number;
    questions.push_back({pattern, Widen(pattern), answer, Widen(answer)});
  }
  return questions;
}

void Report(benchmark::State& state, const std::string& page) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                          static_cast<std::int64_t>(page.size()));
}

struct BstrFree {
  void operator()(BSTR text) const { SysFreeString(text); }
};
using UniqueBstr = std::unique_ptr<wchar_t, BstrFree>;
UniqueBstr MakeBstr(const std::wstring& text) { return UniqueBstr(SysAllocString(text.c_str())); }

bool AskCorvane(IXMLDOMDocument* document, BSTR pattern, const std::wstring& answer) {
  IXMLDOMNode* node = nullptr;
  if (document->selectSingleNode(pattern, &node) != S_OK) return false;
  BSTR text = nullptr;
  const bool right = node->get_text(&text) == S_OK && answer == text;
  SysFreeString(text);
  node->Release();
  return right;
}

void Corvane(benchmark::State& state, int selections) {
  CoInitialize(nullptr);
  const std::string page = Page();
  const UniqueBstr xml = MakeBstr(Widen(page));
  const std::vector<Question> questions = Questions(selections);
  std::vector<UniqueBstr> patterns;
  for (const Question& question : questions) patterns.push_back(MakeBstr(question.widePattern));
  for (auto _ : state) {
    void* object = nullptr;
    if (CoCreateInstance(CLSID_DOMDocument30, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                         &object) != S_OK) {
      state.SkipWithError("no document");
      break;
    }
    auto* const document = static_cast<IXMLDOMDocument*>(object);
    VARIANT_BOOL loaded = VARIANT_FALSE;
    document->loadXML(xml.get(), &loaded);
    bool right = loaded == VARIANT_TRUE;
    for (std::size_t i = 0; i < questions.size(); ++i) {
      right = right && AskCorvane(document, patterns[i].get(), questions[i].wideAnswer);
    }
    document->Release();
    if (!right) {
      state.SkipWithError("wrong answer");
      break;
    }
  }
  CoUninitialize();
  Report(state, page);
}

bool AskLibxml2(xmlXPathContextPtr context, const Question& question) {
  xmlXPathObjectPtr found = xmlXPathEval(BAD_CAST question.pattern.c_str(), context);
  bool right = false;
  if (found != nullptr && found->nodesetval != nullptr && found->nodesetval->nodeNr == 1) {
    xmlChar* text = xmlNodeGetContent(found->nodesetval->nodeTab[0]);
    right = question.answer == reinterpret_cast<const char*>(text);
    xmlFree(text);
  }
  xmlXPathFreeObject(found);
  return right;
}

void Libxml2(benchmark::State& state, int selections) {
  const std::string page = Page();
  const std::vector<Question> questions = Questions(selections);
  for (auto _ : state) {
    xmlDocPtr document =
        xmlReadMemory(page.data(), static_cast<int>(page.size()), nullptr, nullptr, 0);
    bool right = document != nullptr;
    if (!questions.empty() && right) {
      xmlXPathContextPtr context = xmlXPathNewContext(document);
      xmlXPathRegisterNs(context, BAD_CAST "p", BAD_CAST "urn:p");
      xmlXPathRegisterNs(context, BAD_CAST "dd", BAD_CAST "urn:dd");
      for (const Question& question : questions) right = right && AskLibxml2(context, question);
      xmlXPathFreeContext(context);
    }
    xmlFreeDoc(document);
    if (!right) {
      state.SkipWithError("wrong answer");
      break;
    }
  }
  Report(state, page);
}

void Pugixml(benchmark::State& state, int selections) {
  const std::string page = Page();
  const std::vector<Question> questions = Questions(selections);
  for (auto _ : state) {
    pugi::xml_document document;
    bool right = document.load_buffer(page.data(), page.size());
    for (const Question& question : questions) {
      right = right &&
              question.answer == document.select_node(question.pattern.c_str()).node().text().get();
    }
    if (!right) {
      state.SkipWithError("wrong answer");
      break;
    }
  }
  Report(state, page);
}

BENCHMARK_CAPTURE(Corvane, ParseAndSelectTwenty, kSelections)->Name("ParseAndSelectTwenty/corvane");
BENCHMARK_CAPTURE(Libxml2, ParseAndSelectTwenty, kSelections)->Name("ParseAndSelectTwenty/libxml2");
BENCHMARK_CAPTURE(Pugixml, ParseAndSelectTwenty, kSelections)->Name("ParseAndSelectTwenty/pugixml");
BENCHMARK_CAPTURE(Corvane, ParseAndSelectOne, 1)->Name("ParseAndSelectOne/corvane");
BENCHMARK_CAPTURE(Libxml2, ParseAndSelectOne, 1)->Name("ParseAndSelectOne/libxml2");
BENCHMARK_CAPTURE(Pugixml, ParseAndSelectOne, 1)->Name("ParseAndSelectOne/pugixml");
BENCHMARK_CAPTURE(Corvane, ParseOnly, 0)->Name("ParseOnly/corvane");
BENCHMARK_CAPTURE(Libxml2, ParseOnly, 0)->Name("ParseOnly/libxml2");
BENCHMARK_CAPTURE(Pugixml, ParseOnly, 0)->Name("ParseOnly/pugixml");

}  // namespace

BENCHMARK_MAIN();
