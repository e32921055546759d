// Secrets in a file, which never stand on a command line: other users can see those.
#ifndef CORVANE_TOOLS_OPTIONS_SECRET_FILE_H_
#define CORVANE_TOOLS_OPTIONS_SECRET_FILE_H_

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Corvane::Tool {

// Lines "WORD = TEXT" in UTF-8, of the words given, each at most once; blanks around a text do not
// belong to it; empty lines and lines that begin with # say nothing. Throws Failure with kBadUsage,
// which tells `option`, the line, and nothing of what stands there: for a file that others may read
// or write, one that is too long, an unknown or repeated word, a missing text.
std::map<std::string_view, std::wstring> ReadSecretFile(const std::string& option,
                                                        const std::string& path,
                                                        const std::vector<std::string_view>& words);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OPTIONS_SECRET_FILE_H_
