// A large document, printed in pieces, and the file that a printer keeps of it.
#ifndef CORVANE_TESTS_IPP_STREAMED_DOCUMENT_H_
#define CORVANE_TESTS_IPP_STREAMED_DOCUMENT_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "corvane/ipp_provider.h"

namespace Corvane::Test {

// The same bytes at every run, without a pattern that a lost or doubled piece could hide in.
inline std::string RandomDocument(std::size_t size) {
  std::string document(size, '\0');
  std::mt19937_64 random(size);
  for (std::size_t i = 0; i < size; i += sizeof(std::uint64_t)) {
    const std::uint64_t bits = random();
    std::memcpy(document.data() + i, &bits, std::min(sizeof(bits), size - i));
  }
  return document;
}

// 1 byte for the first 2 KB, then 4 KB, 1 MB, 1 byte and what is no power of two, in turn.
inline std::vector<std::string_view> MixedPieces(std::string_view document) {
  constexpr std::size_t kSingleBytes = 2048;
  constexpr std::array<std::size_t, 4> kSizes = {4096, 1 << 20, 1, 65'537};
  std::vector<std::string_view> pieces;
  while (!document.empty()) {
    const std::size_t i = pieces.size();
    pieces.push_back(document.substr(0, i < kSingleBytes ? 1 : kSizes[i % kSizes.size()]));
    document.remove_prefix(pieces.back().size());
  }
  return pieces;
}

// The result of the first call that is not 0, or of the last.
inline HRESULT PrintPieces(IPPProvider* provider, IPPRequestBase* request,
                           IPPResponseBase* response, std::string_view document) {
  HRESULT result = S_OK;
  bool hasBegun = false;
  for (const std::string_view piece : MixedPieces(document)) {
    const auto length = static_cast<std::int32_t>(piece.size());
    result = std::exchange(hasBegun, true)
                 ? provider->PrintJobWrite(request, response, piece.data(), length)
                 : provider->PrintJob(request, response, piece.data(), length, true);
    if (result != S_OK) return result;
  }
  return provider->PrintJobWrite(request, response, nullptr, 0);
}

// What an ippeveprinter keeps of documents; beside them lies what its command wrote (.prn).
inline std::vector<std::filesystem::path> DocumentsIn(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".dat") files.push_back(entry.path());
  }
  return files;
}

inline bool Holds(const std::filesystem::path& file, std::string_view document) {
  std::string content(std::filesystem::file_size(file), '\0');
  std::ifstream(file, std::ios::binary)
      .read(content.data(), static_cast<std::streamsize>(content.size()));
  return content == document;
}

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_IPP_STREAMED_DOCUMENT_H_
