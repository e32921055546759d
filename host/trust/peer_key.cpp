#include "host/trust/peer_key.h"

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <memory>

#include "host/common/freed_by.h"

namespace Corvane::Host {
namespace {

using Bio = std::unique_ptr<BIO, FreedBy<BIO_free>>;
using Certificate = std::unique_ptr<X509, FreedBy<X509_free>>;

// The first certificate is the peer's own; each of the rest signs the one before. Empty for none.
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

}  // namespace

std::string PeerKey(CURL* handle) {
  const std::string_view pem = PeerCertificate(handle);
  if (pem.empty()) return {};
  const Bio text(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
  const Certificate certificate(text ? PEM_read_bio_X509(text.get(), nullptr, nullptr, nullptr)
                                     : nullptr);
  if (!certificate) return {};
  unsigned char* der = nullptr;
  const int size = i2d_X509_PUBKEY(X509_get_X509_PUBKEY(certificate.get()), &der);
  if (size <= 0) return {};
  std::string hash(EVP_MAX_MD_SIZE, '\0');
  unsigned int hashBytes = 0;
  const int hashed =
      EVP_Digest(der, static_cast<std::size_t>(size), reinterpret_cast<unsigned char*>(hash.data()),
                 &hashBytes, EVP_sha256(), nullptr);
  OPENSSL_free(der);
  return hashed == 1 ? "sha256//" + Base64(hash.substr(0, hashBytes)) : std::string();
}

std::string Base64(std::string_view bytes) {
  std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');  // with the NUL that is written, too
  const int digits = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                                     reinterpret_cast<const unsigned char*>(bytes.data()),
                                     static_cast<int>(bytes.size()));
  text.resize(static_cast<std::size_t>(digits));
  return text;
}

}  // namespace Corvane::Host
