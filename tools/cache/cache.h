// The cache of a run: values come from it, and go back when the session ends.
#ifndef CORVANE_TOOLS_CACHE_CACHE_H_
#define CORVANE_TOOLS_CACHE_CACHE_H_

#include <string>

#include "corvane/cache_provider.h"
#include "corvane/handles.h"
#include "tools/options/cache_location.h"

namespace Corvane::Tool {

// Must outlive the session that uses it.
class Cache {
 public:
  // Opens the printer, and tries whether the store can be read and written, for the library tells
  // neither: the key of a registry cache is made when it is missing. Throws Failure with kBadUsage
  // for a printer that cannot be opened.
  explicit Cache(const CacheLocation& location);

  ICacheProvider* Provider() const { return m_provider.Get(); }
  // Why values cannot be read or kept, escaped, in one line; empty when they can. The provider may
  // be used all the same.
  const std::string& Problem() const { return m_problem; }

 private:
  void UseRegistry(const CacheLocation& location);
  void UsePrinter(const CacheLocation& location);

  UniquePrinter m_printer;  // outlives the provider
  RefPtr<ICacheProvider> m_provider;
  std::string m_problem;
};

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_CACHE_CACHE_H_
