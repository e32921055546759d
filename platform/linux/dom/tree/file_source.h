// Reads the file that a path or file: URL names.
#ifndef CORVANE_PLATFORM_LINUX_DOM_TREE_FILE_SOURCE_H_
#define CORVANE_PLATFORM_LINUX_DOM_TREE_FILE_SOURCE_H_

#include <string>
#include <string_view>

namespace Corvane::Dom {

// `source`, in UTF-8, is a local path, absolute or relative, or a file: URL. The name is tried as
// it stands first, then with its %xx sequences resolved. Only regular files of at most
// kMaxDocumentBytes are read. On failure false, and *reason says why, without the path's content.
bool ReadFile(std::string_view source, std::string* bytes, std::string* reason);

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_TREE_FILE_SOURCE_H_
