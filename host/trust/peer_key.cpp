#include "host/trust/peer_key.h"

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <array>
#include <memory>
#include <string_view>

namespace Corvane::Host {
namespace {

using Bio = std::unique_ptr<BIO, CurlDeleter<BIO_free>>;
using Certificate = std::unique_ptr<X509, CurlDeleter<X509_free>>;

constexpr std::size_t kHashBytes = 32;

// The first certificate is the peer's own; the rest vouch for it. Empty for none.
std::string_view PeerCertificate(CURL* handle) {
  constexpr std::string_view kName = "Cert:";
  curl_certinfo* chain = nullptr;
  if (curl_easy_getinfo(handle, CURLINFO_CERTINFO, &chain) != CURLE_OK || !chain ||
      chain->num_of_certs < 1) {
    return {};
  }
  for (const curl_slist* field = chain->certinfo[0]; field; field = field->next) {
    const std::string_view text(field->data);
    if (text.starts_with(kName)) return text.substr(kName.size());
  }
  return {};
}

std::string HashOfKey(X509* certificate) {
  unsigned char* der = nullptr;
  const int size = i2d_X509_PUBKEY(X509_get_X509_PUBKEY(certificate), &der);
  if (size <= 0) return {};
  std::array<unsigned char, kHashBytes> hash{};
  const int hashed =
      EVP_Digest(der, static_cast<std::size_t>(size), hash.data(), nullptr, EVP_sha256(), nullptr);
  OPENSSL_free(der);
  if (hashed != 1) return {};
  std::array<unsigned char, (kHashBytes + 2) / 3 * 4 + 1> text{};
  const int digits = EVP_EncodeBlock(text.data(), hash.data(), static_cast<int>(hash.size()));
  return "sha256//" + std::string(text.begin(), text.begin() + digits);
}

}  // namespace

std::string PeerKey(CURL* handle) {
  const std::string_view pem = PeerCertificate(handle);
  if (pem.empty()) return {};
  const Bio text(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
  const Certificate certificate(text ? PEM_read_bio_X509(text.get(), nullptr, nullptr, nullptr)
                                     : nullptr);
  return certificate ? HashOfKey(certificate.get()) : std::string();
}

}  // namespace Corvane::Host
