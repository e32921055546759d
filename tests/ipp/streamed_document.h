// A large document, printed in pieces, and the file that a printer keeps of it.
#ifndef CORVANE_TESTS_IPP_STREAMED_DOCUMENT_H_
#define CORVANE_TESTS_IPP_STREAMED_DOCUMENT_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
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
  const std::vector<std::string_view> pieces = MixedPieces(document);
  const auto length = [](std::string_view piece) {
    return static_cast<std::int32_t>(piece.size());
  };
  HRESULT result = provider->PrintJob(request, response, pieces[0].data(), length(pieces[0]), true);
  for (std::size_t i = 1; i < pieces.size() && result == 0; ++i) {
    result = provider->PrintJobWrite(request, response, pieces[i].data(), length(pieces[i]));
  }
  return result == 0 ? provider->PrintJobWrite(request, response, nullptr, 0) : result;
}

// What an ippeveprinter keeps of documents; beside them lies what its command wrote (.prn).
inline std::vector<std::filesystem::path> DocumentsIn(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".dat") files.push_back(entry.path());
  }
  return files;
}

// Byte by byte; tells the first difference.
inline ::testing::AssertionResult Holds(const std::filesystem::path& file,
                                        std::string_view document) {
  std::ifstream stream(file, std::ios::binary);
  std::vector<char> block(std::size_t{1} << 20);
  std::size_t position = 0;
  while (stream.read(block.data(), static_cast<std::streamsize>(block.size())),
         stream.gcount() > 0) {
    const std::string_view read(block.data(), static_cast<std::size_t>(stream.gcount()));
    const std::string_view expected = document.substr(position, read.size());
    if (read != expected) {
      const auto difference = std::mismatch(expected.begin(), expected.end(), read.begin());
      return ::testing::AssertionFailure()
             << file << " differs at byte "
             << position + static_cast<std::size_t>(difference.first - expected.begin());
    }
    position += read.size();
  }
  if (position == document.size()) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << file << " has " << position << " bytes of " << document.size();
}

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_IPP_STREAMED_DOCUMENT_H_
