#include "platform/linux/dom/tree/namespace_scopes.h"

#include "base/utf8.h"

namespace Corvane::Dom {
namespace {

bool StartsLikeName(std::string_view part) {
  std::size_t behind = 0;
  return !part.empty() && IsNameStart(NextCodePoint(part, &behind));
}

}  // namespace

NamespaceScopes::NamespaceScopes(NameTable* names)
    : m_names(*names), m_xml(names->Intern("xml")), m_xmlns(names->Intern("xmlns")) {
  Bind(m_xml, m_names.Intern(kXmlNamespace));
}

QualifiedName NamespaceScopes::Split(std::uint32_t name) {
  using Role = QualifiedName::Role;
  if (name < m_split.size() && m_split[name].role != Role::kUnknown) return m_split[name];

  const std::string_view text = m_names.Get(name);
  const std::size_t colon = text.find(':');
  QualifiedName split{Role::kPlain, kNoName, name};
  if (colon == std::string_view::npos) {
    if (name == m_xmlns) split.role = Role::kDefaultDeclaration;
  } else {
    // Interning may move the pool under `text`.
    const std::string prefix(text.substr(0, colon));
    const std::string local(text.substr(colon + 1));
    if (!StartsLikeName(prefix) || !StartsLikeName(local) || local.find(':') != std::string::npos) {
      split.role = Role::kMalformed;
    } else {
      split.prefix = m_names.Intern(prefix);
      split.local = m_names.Intern(local);
      if (split.prefix == m_xmlns) split.role = Role::kPrefixDeclaration;
    }
  }
  if (name >= m_split.size()) m_split.resize(m_names.Count());
  m_split[name] = split;
  return split;
}

bool NamespaceScopes::Declare(std::uint32_t prefix, std::string_view uri, NodeId element) {
  if (prefix == m_xml) return uri == kXmlNamespace;
  if (prefix == m_xmlns || uri == kXmlNamespace || uri == kXmlnsNamespace) return false;
  m_undo.push_back({element, prefix, UriOf(prefix)});
  Bind(prefix, m_names.Intern(uri));
  return true;
}

void NamespaceScopes::Leave(NodeId element) {
  for (; !m_undo.empty() && m_undo.back().element == element; m_undo.pop_back()) {
    m_bindings[m_undo.back().prefix] = m_undo.back().uri;
  }
}

void NamespaceScopes::Bind(std::uint32_t prefix, std::uint32_t uri) {
  if (prefix >= m_bindings.size()) m_bindings.resize(m_names.Count(), kNoName);
  m_bindings[prefix] = uri;
}

}  // namespace Corvane::Dom
