#include <system_error>

#include "host/recorded/final_path.h"

namespace Corvane::Host {

std::optional<std::filesystem::path> FinalPath(const std::filesystem::path& path) {
  std::error_code error;
  std::filesystem::path final = std::filesystem::canonical(path, error);
  if (error) return std::nullopt;
  return final;
}

}  // namespace Corvane::Host
