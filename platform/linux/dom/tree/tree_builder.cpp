#include "platform/linux/dom/tree/tree_builder.h"

#include <algorithm>

#include "corvane/linux/dom.h"

namespace Corvane::Dom {
namespace {

constexpr std::size_t kBytesPerNode = 16;  // a guess that spares most documents a second allocation
constexpr std::size_t kMaxReservedNodes = 65'536;

bool IsVersionOne(std::string_view version) {
  return version.size() > 2 && version.starts_with("1.") &&
         version.find_first_not_of("0123456789", 2) == std::string_view::npos;
}

}  // namespace

TreeBuilder::TreeBuilder(std::size_t documentBytes)
    : m_tree(std::make_unique<Tree>()),
      m_scopes(&m_tree->m_names),
      m_xmlSpace(m_tree->m_names.Intern("xml:space")) {
  const std::size_t nodes = std::min(documentBytes / kBytesPerNode + 2, kMaxReservedNodes);
  m_tree->m_tags.reserve(nodes);
  m_tree->m_nodes.reserve(nodes);
  m_tree->m_values.reserve(documentBytes / 2);
}

void TreeBuilder::Refuse(const char* reason) {
  if (m_refusal == nullptr) m_refusal = reason;
}

NodeId TreeBuilder::Append(NodeKind kind, std::uint32_t name) {
  const NodeId node = m_tree->Count();
  if (node >= Corvane::DomLimits::kMaxNodes) Refuse("The document has too many nodes.");
  m_tree->m_tags.push_back(MakeTag(kind, name));
  m_tree->m_nodes.push_back({m_current, node + 1, 0, 0, 0});
  return node;
}

NodeId TreeBuilder::AppendValue(NodeKind kind, std::uint32_t name, std::string_view value) {
  const NodeId node = Append(kind, name);
  m_tree->m_nodes[node].offset = static_cast<std::uint32_t>(m_tree->m_values.size());
  m_tree->m_nodes[node].length = static_cast<std::uint32_t>(value.size());
  m_tree->m_values.append(value);
  return node;
}

void TreeBuilder::Declaration(const char* version, const char* encoding, int standalone) {
  if (version == nullptr || !IsVersionOne(version))
    return Refuse("The XML version is not supported.");
  std::vector<std::pair<const char*, const char*>> attributes{{"version", version}};
  if (encoding != nullptr) attributes.emplace_back("encoding", encoding);
  if (standalone >= 0) attributes.emplace_back("standalone", standalone == 1 ? "yes" : "no");

  std::string text;
  for (const auto& [name, value] : attributes) {
    if (!text.empty()) text += ' ';
    text.append(name).append("=\"").append(value).append("\"");
  }
  NameTable& names = m_tree->m_names;
  const NodeId declaration = AppendValue(NodeKind::kInstruction, names.Intern("xml"), text);
  m_current = declaration;
  for (const auto& [name, value] : attributes) {
    AppendValue(NodeKind::kDeclarationAttribute, names.Intern(name), value);
  }
  m_current = 0;
  m_tree->m_nodes[declaration].bits |= static_cast<std::uint32_t>(attributes.size())
                                       << Tree::kFlagBits;
  m_tree->m_nodes[declaration].end = m_tree->Count();
  m_textStart = m_tree->m_values.size();
}

void TreeBuilder::StartElement(const char* name, const char** attributes) {
  FlushText();
  if (++m_depth > Corvane::DomLimits::kMaxDepth)
    return Refuse("The elements are nested too deeply.");
  const std::uint32_t id = m_tree->m_names.Intern(name);
  const QualifiedName split = m_scopes.Split(id);
  const NodeId element = Append(NodeKind::kElement, id);
  m_tree->m_nodes[element].bits = m_tree->m_nodes[m_current].bits & Tree::kPreserveSpace;
  m_current = element;
  if (attributes[0] != nullptr) AddAttributes(element, attributes);
  if (split.role == QualifiedName::Role::kMalformed)
    return Refuse("An element's name is malformed.");
  if (!IsBound(split)) Refuse("An element uses an undeclared namespace prefix.");
  m_textStart = m_tree->m_values.size();
}

bool TreeBuilder::IsBound(const QualifiedName& name) const {
  return name.prefix == kNoName || m_scopes.UriOf(name.prefix) != kNoName;
}

void TreeBuilder::AddAttributes(NodeId element, const char** attributes) {
  using Role = QualifiedName::Role;
  std::uint32_t count = 0;
  bool prefixed = false;
  for (; attributes[0] != nullptr && m_refusal == nullptr; attributes += 2, ++count) {
    const std::uint32_t name = m_tree->m_names.Intern(attributes[0]);
    const std::string_view value(attributes[1]);
    AppendValue(NodeKind::kAttribute, name, value);
    const QualifiedName split = m_scopes.Split(name);
    if (split.role == Role::kMalformed) Refuse("An attribute's name is malformed.");
    if (split.role == Role::kPrefixDeclaration && !m_scopes.Declare(split.local, value, element)) {
      Refuse("A namespace declaration is not allowed.");
    }
    if (split.role == Role::kDefaultDeclaration && !NamespaceScopes::IsAllowedAsDefault(value)) {
      Refuse("A namespace declaration is not allowed.");
    }
    if (split.role == Role::kPlain && split.prefix != kNoName) prefixed = true;
    if (name == m_xmlSpace && value == "preserve")
      m_tree->m_nodes[element].bits |= Tree::kPreserveSpace;
    if (name == m_xmlSpace && value == "default")
      m_tree->m_nodes[element].bits &= ~std::uint32_t{Tree::kPreserveSpace};
  }
  m_tree->m_nodes[element].bits |= count << Tree::kFlagBits;
  if (prefixed) CheckPrefixes(element, count);
}

// Namespaces 1.0, sections 5 and 6.3: after all declarations of the element are known.
void TreeBuilder::CheckPrefixes(NodeId element, std::uint32_t count) {
  m_expanded.clear();
  for (NodeId attribute = element + 1; attribute <= element + count; ++attribute) {
    const QualifiedName split = m_scopes.Split(m_tree->Tag(attribute) >> kTagKindBits);
    if (split.role != QualifiedName::Role::kPlain || split.prefix == kNoName) continue;
    if (!IsBound(split)) return Refuse("An attribute uses an undeclared namespace prefix.");
    m_expanded.emplace_back(m_scopes.UriOf(split.prefix), split.local);
  }
  std::sort(m_expanded.begin(), m_expanded.end());
  if (std::adjacent_find(m_expanded.begin(), m_expanded.end()) != m_expanded.end()) {
    Refuse("An attribute appears twice in its namespace.");
  }
}

void TreeBuilder::EndElement() {
  FlushText();
  m_scopes.Leave(m_current);
  m_tree->m_nodes[m_current].end = m_tree->Count();
  m_current = m_tree->m_nodes[m_current].parent;
  --m_depth;
  if (m_current == 0) m_tree->m_nodes[0].end = m_tree->Count();
}

void TreeBuilder::Text(std::string_view text) { m_tree->m_values.append(text); }

void TreeBuilder::FlushText() {
  std::string& values = m_tree->m_values;
  if (values.size() == m_textStart) return;
  const bool blank = std::all_of(values.begin() + static_cast<std::ptrdiff_t>(m_textStart),
                                 values.end(), IsXmlSpace);
  if (blank && !m_tree->PreservesSpace(m_current)) {
    values.resize(m_textStart);
    m_droppedSpace = true;
    return;
  }
  AppendText(NodeKind::kText);
}

void TreeBuilder::AppendText(NodeKind kind) {
  const NodeId text = Append(kind, 0);
  Tree::Node& node = m_tree->m_nodes[text];
  node.offset = static_cast<std::uint32_t>(m_textStart);
  node.length = static_cast<std::uint32_t>(m_tree->m_values.size() - m_textStart);
  if (node.length > 0 && m_droppedSpace) {
    node.bits |= Tree::kAfterDroppedSpace;
    m_droppedSpace = false;
  }
  m_tree->m_textNodes.push_back(text);
  m_textStart = m_tree->m_values.size();
}

void TreeBuilder::StartCdata() { FlushText(); }

void TreeBuilder::EndCdata() { AppendText(NodeKind::kCdata); }

void TreeBuilder::Comment(std::string_view text) {
  FlushText();
  AppendValue(NodeKind::kComment, 0, text);
  m_textStart = m_tree->m_values.size();
  if (m_current == 0) m_tree->m_nodes[0].end = m_tree->Count();
}

void TreeBuilder::Instruction(const char* target, std::string_view text) {
  FlushText();
  AppendValue(NodeKind::kInstruction, m_tree->m_names.Intern(target), text);
  m_textStart = m_tree->m_values.size();
  if (m_current == 0) m_tree->m_nodes[0].end = m_tree->Count();
}

}  // namespace Corvane::Dom
