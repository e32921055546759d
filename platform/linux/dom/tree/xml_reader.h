// Reads a whole XML document into a tree.
#ifndef CORVANE_PLATFORM_LINUX_DOM_TREE_XML_READER_H_
#define CORVANE_PLATFORM_LINUX_DOM_TREE_XML_READER_H_

#include <memory>
#include <string>
#include <string_view>

#include "corvane/linux/base.h"
#include "platform/linux/dom/tree/tree.h"

namespace Corvane::Dom {

// Why a load failed. `code` is 0 when it did not.
struct LoadFailure {
  HRESULT code = S_OK;
  std::string reason;  // UTF-8
  LONG line = 0;       // from 1; 0 when it is not known
  LONG column = 0;     // in characters, from 1
};

// The tree, or null and *failure filled in. A DOCTYPE is a failure, and no entity but the five of
// XML is ever resolved. The first two ignore a declared encoding; a byte order mark at the
// beginning of wide text is left out.
std::unique_ptr<Tree> ReadUtf8(std::string_view text, LoadFailure* failure);
std::unique_ptr<Tree> ReadWide(std::wstring_view text, LoadFailure* failure);
// In UTF-16 when it begins with that byte order mark, else in the declared encoding: UTF-8,
// ISO-8859-1, US-ASCII, windows-1252 or GBK. UTF-16 needs its mark, and may only be declared as
// UTF-16 or UTF-8; the mark of UTF-8 changes nothing.
std::unique_ptr<Tree> ReadBytes(std::string_view bytes, LoadFailure* failure);

// As ReadBytes, from a file of at most kMaxDocumentBytes: `source` is a local path, absolute or
// relative, or a file: URL. The name is tried as it stands first, then with its %xx sequences
// resolved. *failure does not hold the path.
std::unique_ptr<Tree> ReadSource(std::wstring_view source, LoadFailure* failure);

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_TREE_XML_READER_H_
