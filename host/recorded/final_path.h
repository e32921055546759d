// Where a path really leads.
#ifndef CORVANE_HOST_RECORDED_FINAL_PATH_H_
#define CORVANE_HOST_RECORDED_FINAL_PATH_H_

#include <filesystem>
#include <optional>

namespace Corvane::Host {

// The absolute path of an existing file or folder, with every link followed; none when there is no
// such file. Two final paths that share their first elements lie in one folder.
std::optional<std::filesystem::path> FinalPath(const std::filesystem::path& path);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_RECORDED_FINAL_PATH_H_
