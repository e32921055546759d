// The DOM against libxml2 and pugixml, the same work for each: one page of about 40 KB with 400
// records, parsed and asked for the value of named records. The layer works through its COM
// surface, from a BSTR that is there already.
//
//   ParseAndSelectTwenty/corvane|libxml2|pugixml  parse, then 20 selections
//                                                 //p:Item[dd:Name="itemN"]/dd:Value
//   ParseAndSelectOne/...                         parse, then one of them, from the middle
//   ParseOnly/...                                 parse
#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <pugixml.hpp>
#include <string>
#include <vector>

#include "corvane/handles.h"

namespace {

using Corvane::RefPtr;
using Corvane::UniqueBstr;

constexpr int kRecords = 400;

UniqueBstr Widen(const std::string& ascii) {
  return UniqueBstr::Make(std::wstring(ascii.begin(), ascii.end()));
}

struct Question {
  std::string pattern;
  std::string answer;
  UniqueBstr widePattern = Widen(pattern);
  UniqueBstr wideAnswer = Widen(answer);
};

std::string MakePage() {
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

std::vector<Question> MakeQuestions(int count) {
  std::vector<Question> questions;
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string((2 * i + 1) * kRecords / (2 * count));
    questions.push_back({"//p:Item[dd:Name=\"item" + number + "\"]/dd:Value",
                         "the current value of item " + number});
  }
  return questions;
}

// `ask` parses the page, asks, and says whether every answer was right.
template <typename Ask>
void Measure(benchmark::State& state, int selections, const std::string& page, Ask ask) {
  const std::vector<Question> questions = MakeQuestions(selections);
  for (auto _ : state) {
    if (!ask(questions)) {
      state.SkipWithError("wrong answer");
      break;
    }
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(page.size()));
}

bool AskCorvane(IXMLDOMDocument& document, const Question& question) {
  RefPtr<IXMLDOMNode> node;
  UniqueBstr text;
  return document.selectSingleNode(question.widePattern.Get(), node.Receive()) == S_OK &&
         node->get_text(text.Receive()) == S_OK && text.View() == question.wideAnswer.View();
}

void MeasureCorvane(benchmark::State& state, int selections) {
  CoInitialize(nullptr);
  const std::string page = MakePage();
  const UniqueBstr xml = Widen(page);
  Measure(state, selections, page, [&xml](const std::vector<Question>& questions) {
    RefPtr<IXMLDOMDocument> document;
    if (CoCreateInstance(CLSID_DOMDocument30, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                         document.ReceiveVoid()) != S_OK) {
      return false;
    }
    VARIANT_BOOL loaded = VARIANT_FALSE;
    document->loadXML(xml.Get(), &loaded);
    bool right = loaded == VARIANT_TRUE;
    for (const Question& question : questions) {
      right = right && AskCorvane(*document.Get(), question);
    }
    return right;
  });
  CoUninitialize();
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

void MeasureLibxml2(benchmark::State& state, int selections) {
  const std::string page = MakePage();
  Measure(state, selections, page, [&page](const std::vector<Question>& questions) {
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
    return right;
  });
}

void MeasurePugixml(benchmark::State& state, int selections) {
  const std::string page = MakePage();
  Measure(state, selections, page, [&page](const std::vector<Question>& questions) {
    pugi::xml_document document;
    bool right = document.load_buffer(page.data(), page.size());
    for (const Question& question : questions) {
      right = right &&
              question.answer == document.select_node(question.pattern.c_str()).node().text().get();
    }
    return right;
  });
}

}  // namespace

int main(int argc, char** argv) {
  for (const auto& [name, selections] :
       {std::pair{"ParseAndSelectTwenty", 20}, {"ParseAndSelectOne", 1}, {"ParseOnly", 0}}) {
    for (const auto& [library, measure] : {std::pair{"/corvane", &MeasureCorvane},
                                           {"/libxml2", &MeasureLibxml2},
                                           {"/pugixml", &MeasurePugixml}}) {
      benchmark::RegisterBenchmark((std::string(name) + library).c_str(), measure, selections);
    }
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
