// The data-map specification, read from its file.
#ifndef CORVANE_TOOLS_MAP_SPECIFICATION_H_
#define CORVANE_TOOLS_MAP_SPECIFICATION_H_

#include <string>
#include <vector>

#include "corvane/data_map_spec.h"
#include "corvane/handles.h"

namespace Corvane::Tool {

// One element under the root, in document order; what is no data map of a known kind has the type
// unknown.
struct DataMap {
  int number;            // from 1
  std::wstring element;  // its name as written
  RefPtr<DataMapSpec> spec;
};

// At least one data map. The calling thread must hold COM. Throws Failure with kBadUsage, in one
// line that names the file, and line and column (from 1) where the parser tells them.
std::vector<DataMap> LoadSpecification(const std::string& path);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_MAP_SPECIFICATION_H_
