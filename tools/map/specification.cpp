#include "tools/map/specification.h"

#include <filesystem>
#include <string_view>
#include <system_error>

#include "base/utf8_path.h"
#include "tools/map/dom.h"
#include "tools/output/failure.h"
#include "tools/output/text.h"

namespace Corvane::Tool {
namespace {

[[noreturn]] void ThrowUnreadable(const std::string& path, const std::string& text) {
  throw Failure(kBadUsage, EscapeText(path) + ": " + text);
}

// The DOM tells no more of a file that it cannot open than of one that is no XML.
void RequireFileWithContent(const std::string& path) {
  const std::filesystem::path file = PathFromUtf8(path);
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(file, error);
  if (!std::filesystem::exists(status)) ThrowUnreadable(path, "no such file");
  if (std::filesystem::is_directory(status)) ThrowUnreadable(path, "is a folder");
  if (std::filesystem::is_regular_file(status) && std::filesystem::file_size(file, error) == 0) {
    ThrowUnreadable(path, "the file is empty");
  }
}

// ":3:14: problem" of the document's last load.
std::string DescribeParseError(IXMLDOMDocument* document) {
  std::string place;
  std::string problem = "cannot be read as XML";
  RefPtr<IXMLDOMParseError> error;
  if (SUCCEEDED(document->get_parseError(error.Receive())) && error) {
    LONG line = 0;
    LONG column = 0;
    if (SUCCEEDED(error->get_line(&line)) && SUCCEEDED(error->get_linepos(&column)) && line > 0) {
      place = ":" + std::to_string(line) + ":" + std::to_string(column);
    }
    UniqueBstr text;
    if (SUCCEEDED(error->get_reason(text.Receive()))) {
      std::wstring_view view = text.View();
      while (!view.empty() && (view.back() == L'\r' || view.back() == L'\n')) view.remove_suffix(1);
      if (!view.empty()) problem += ": " + EscapeText(view);
    }
  }
  return place + ": " + problem;
}

RefPtr<IXMLDOMDocument> LoadDocument(const std::string& path) {
  RequireFileWithContent(path);
  RefPtr<IXMLDOMDocument> document = CreateDocument();
  document->put_async(VARIANT_FALSE);
  // Absolute: a relative name could be taken for a URL.
  std::error_code error;
  const std::filesystem::path file = std::filesystem::absolute(PathFromUtf8(path), error);
  const UniqueVariant source(WideFromPath(file));
  VARIANT_BOOL loaded = VARIANT_FALSE;
  const HRESULT result = document->load(source.Get(), &loaded);
  if (result != S_OK || loaded != VARIANT_TRUE) {
    throw Failure(kBadUsage, EscapeText(path) + DescribeParseError(document.Get()));
  }
  return document;
}

DataMap ReadDataMap(IXMLDOMNode* element, int number) {
  DataMap map{number, {}, RefPtr<DataMapSpec>(DataMapSpec::CreateDataMapSpec(element))};
  if (!map.spec) throw std::bad_alloc();
  UniqueBstr name;
  if (SUCCEEDED(element->get_nodeName(name.Receive()))) map.element = name.View();
  return map;
}

}  // namespace

std::vector<DataMap> LoadSpecification(const std::string& path) {
  const RefPtr<IXMLDOMDocument> document = LoadDocument(path);
  RefPtr<IXMLDOMNode> root;
  document->selectSingleNode(UniqueBstr::Make(L"DataMaps").Get(), root.Receive());
  if (!root) ThrowUnreadable(path, "the root element is not DataMaps");

  std::vector<DataMap> maps;
  RefPtr<IXMLDOMNode> child;
  root->get_firstChild(child.Receive());
  while (child) {
    DOMNodeType type = NODE_INVALID;
    child->get_nodeType(&type);
    if (type == NODE_ELEMENT) {
      maps.push_back(ReadDataMap(child.Get(), static_cast<int>(maps.size()) + 1));
    }
    RefPtr<IXMLDOMNode> next;
    child->get_nextSibling(next.Receive());
    child = std::move(next);
  }
  return maps;
}

}  // namespace Corvane::Tool
