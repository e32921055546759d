// The namespace prefixes in scope while a document is read, and the rules of Namespaces in XML 1.0
// for names.
#ifndef CORVANE_PLATFORM_LINUX_DOM_TREE_NAMESPACE_SCOPES_H_
#define CORVANE_PLATFORM_LINUX_DOM_TREE_NAMESPACE_SCOPES_H_

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/linux/dom/tree/name_table.h"
#include "platform/linux/dom/tree/tree.h"
#include "platform/linux/dom/tree/xml_names.h"

namespace Corvane::Dom {

// A name as written, taken apart. Worked out once for each distinct name.
struct QualifiedName {
  enum class Role : std::uint8_t {
    kUnknown,
    kMalformed,
    kPlain,
    kDefaultDeclaration,
    kPrefixDeclaration
  };
  Role role = Role::kUnknown;
  std::uint32_t prefix = kNoName;  // kNoName when there is none
  std::uint32_t local = kNoName;   // of a prefix declaration: the prefix that it declares
};

class NamespaceScopes {
 public:
  // Interns prefixes, local names and URIs in `names`, which must outlive this object.
  explicit NamespaceScopes(NameTable* names);

  // kMalformed: two colons, an empty half, or a half that does not start like a name.
  QualifiedName Split(std::uint32_t name);

  // Takes the declaration of `prefix` on `element`. False when Namespaces 1.0 forbids it: the
  // prefix xmlns, or one of the reserved URIs. An empty URI is taken: the prefix
  // may be used, and stands for no namespace.
  bool Declare(std::uint32_t prefix, std::string_view uri, NodeId element);
  static bool IsAllowedAsDefault(std::string_view uri) {
    return uri != kXmlNamespace && uri != kXmlnsNamespace;
  }
  // Takes back what `element` declared; elements are left in the reverse order of their
  // declarations.
  void Leave(NodeId element);

  // The number of the URI bound to `prefix`, kNoName when it is not in scope.
  std::uint32_t UriOf(std::uint32_t prefix) const {
    return prefix < m_bindings.size() ? m_bindings[prefix] : kNoName;
  }

 private:
  struct Undo {
    NodeId element;
    std::uint32_t prefix;
    std::uint32_t uri;
  };

  void Bind(std::uint32_t prefix, std::uint32_t uri);

  NameTable& m_names;
  std::uint32_t m_xml;
  std::uint32_t m_xmlns;
  std::vector<QualifiedName> m_split;     // by name
  std::vector<std::uint32_t> m_bindings;  // URI by prefix
  std::vector<Undo> m_undo;
};

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_TREE_NAMESPACE_SCOPES_H_
