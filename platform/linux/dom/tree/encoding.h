// Texts that leave the tree, and the encodings of documents.
#ifndef CORVANE_PLATFORM_LINUX_DOM_TREE_ENCODING_H_
#define CORVANE_PLATFORM_LINUX_DOM_TREE_ENCODING_H_

#include <string>
#include <string_view>

#include "corvane/linux/automation.h"

namespace Corvane::Dom {

// A BSTR of valid UTF-8, which the caller frees; never null. Throws std::bad_alloc.
BSTR Utf8ToBstr(std::string_view utf8);

// Appends text for comparisons that ignore case to *out.
void AppendFolded(std::string_view utf8, std::string* out);

// The code points of the bytes 0x80 to 0xFF in windows-1252. Its five unassigned bytes are control
// characters, as on Windows.
char32_t Windows1252(unsigned char byte);

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_TREE_ENCODING_H_
