// Reads the document that a path or file: URL names.
#ifndef CORVANE_PLATFORM_LINUX_DOM_TREE_FILE_SOURCE_H_
#define CORVANE_PLATFORM_LINUX_DOM_TREE_FILE_SOURCE_H_

#include <memory>
#include <string_view>

#include "platform/linux/dom/tree/xml_reader.h"

namespace Corvane::Dom {

// `source` is a local path, absolute or relative, or a file: URL. The name is tried as it stands
// first, then with its %xx sequences resolved. Only regular files of at most kMaxDocumentBytes are
// read. Null and *failure filled in, without the path's content, when there is no such file, and as
// ReadBytes does.
std::unique_ptr<Tree> ReadSource(std::wstring_view source, LoadFailure* failure);

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_TREE_FILE_SOURCE_H_
