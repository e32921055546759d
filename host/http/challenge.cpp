#include "host/http/challenge.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <algorithm>
#include <array>
#include <map>
#include <utility>
#include <vector>

#include "base/letter_case.h"
#include "base/utf8.h"
#include "host/http/request_url.h"
#include "host/trust/peer_key.h"

namespace Corvane::Host {
namespace {

struct Challenge {
  std::string scheme;                             // in lower case, as are
  std::map<std::string, std::string> parameters;  // the names of these

  std::string operator[](const char* name) const {
    const auto parameter = parameters.find(name);
    return parameter == parameters.end() ? std::string() : parameter->second;
  }
};

std::string_view TakeUntil(std::string_view* text, const char* ends) {
  const std::string_view taken = text->substr(0, text->find_first_of(ends));
  text->remove_prefix(taken.size());
  return taken;
}

void SkipSeparators(std::string_view* text, const char* what) {
  text->remove_prefix(std::min(text->find_first_not_of(what), text->size()));
}

// A quoted-string (RFC 9110, 5.6.4) without its quotes; an open one ends with the text.
std::string TakeQuoted(std::string_view* text) {
  std::string value;
  text->remove_prefix(1);
  while (!text->empty()) {
    char c = text->front();
    text->remove_prefix(1);
    if (c == '"') break;
    if (c == '\\' && !text->empty()) {
      c = text->front();
      text->remove_prefix(1);
    }
    value += c;
  }
  return value;
}

// RFC 9110, 11.3 and 11.6.1. The "=" distinguishes a parameter from a scheme.
std::vector<Challenge> ParseChallenge(std::string_view text) {
  std::vector<Challenge> challenges;
  for (SkipSeparators(&text, " \t,"); !text.empty(); SkipSeparators(&text, " \t,")) {
    std::string token = LowerAscii(TakeUntil(&text, " \t,=\""));
    SkipSeparators(&text, " \t");
    if (!text.starts_with('=')) {
      if (token.empty()) break;
      challenges.push_back({std::move(token), {}});
      continue;
    }
    text.remove_prefix(1);
    SkipSeparators(&text, " \t");
    std::string value =
        text.starts_with('"') ? TakeQuoted(&text) : std::string(TakeUntil(&text, " \t,"));
    if (!challenges.empty()) challenges.back().parameters.emplace(token, std::move(value));
  }
  return challenges;
}

bool ListsQop(const std::string& list, std::string_view wanted) {
  for (std::string_view rest = list; !rest.empty(); SkipSeparators(&rest, " \t,")) {
    if (LowerAscii(TakeUntil(&rest, " \t,")) == wanted) return true;
  }
  return false;
}

std::string DigestHex(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += {kDigits[byte >> 4], kDigits[byte & 0xF]};
  }
  return text;
}

std::string QuotedForDigest(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

// RFC 7616, 3.3, without "-sess".
const EVP_MD* DigestHashNamed(std::string_view name) {
  if (name.empty() || name == "md5") return EVP_md5();
  if (name == "sha-256") return EVP_sha256();
  return name == "sha-512-256" ? EVP_sha512_256() : nullptr;
}

class Digest {
 public:
  explicit Digest(const Challenge& challenge) : m_challenge(challenge) {
    std::string name = LowerAscii(challenge["algorithm"]);
    m_session = name.ends_with("-sess");
    if (m_session) name.resize(name.size() - 5);
    m_hash = DigestHashNamed(name);
  }

  bool IsKnown() const {
    const std::string qop = m_challenge["qop"];
    return m_hash && m_challenge.parameters.contains("nonce") &&
           (qop.empty() || ListsQop(qop, "auth") || ListsQop(qop, "auth-int"));
  }

  // RFC 7616, 3.4.
  std::string Answer(const WireRequest& request, const std::string& clientNonce) const {
    const std::string target = SplitUrl(request.url).target;
    const std::string realm = m_challenge["realm"];
    const std::string nonce = m_challenge["nonce"];
    const std::string algorithm = m_challenge["algorithm"];
    std::string qop = m_challenge["qop"];
    if (!qop.empty()) qop = ListsQop(qop, "auth") ? "auth" : "auth-int";
    const bool hidesName = LowerAscii(m_challenge["userhash"]) == "true";

    std::string secret = Hash(request.userName + ':' + realm + ':' + request.password);
    if (m_session) secret = Hash(secret + ':' + nonce + ':' + clientNonce);
    std::string message = request.verb + ':' + target;
    if (qop == "auth-int") message += ':' + Hash(request.body);
    const std::string middle = qop.empty() ? "" : "00000001:" + clientNonce + ':' + qop + ':';
    const std::string response = Hash(secret + ':' + nonce + ':' + middle + Hash(message));

    std::string answer =
        "Digest username=" +
        QuotedForDigest(hidesName ? Hash(request.userName + ':' + realm) : request.userName) +
        ", realm=" + QuotedForDigest(realm) + ", nonce=" + QuotedForDigest(nonce) +
        ", uri=" + QuotedForDigest(target);
    if (!qop.empty() || m_session) answer += ", cnonce=" + QuotedForDigest(clientNonce);
    if (!qop.empty()) answer += ", nc=00000001, qop=" + qop;
    answer += ", response=" + QuotedForDigest(response);
    if (m_challenge.parameters.contains("opaque")) {
      answer += ", opaque=" + QuotedForDigest(m_challenge["opaque"]);
    }
    if (!algorithm.empty()) answer += ", algorithm=" + algorithm;
    return hidesName ? answer + ", userhash=true" : answer;
  }

 private:
  std::string Hash(std::string_view text) const {
    std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
    unsigned int size = 0;
    EVP_Digest(text.data(), text.size(), bytes.data(), &size, m_hash, nullptr);
    return DigestHex({reinterpret_cast<const char*>(bytes.data()), size});
  }

  const Challenge& m_challenge;
  bool m_session = false;
  const EVP_MD* m_hash = nullptr;
};

}  // namespace

std::string AnswerChallenge(std::string_view challenges, const WireRequest& request, bool again) {
  std::string nonce(16, '\0');
  if (RAND_bytes(reinterpret_cast<unsigned char*>(nonce.data()), static_cast<int>(nonce.size())) !=
      1) {
    return {};
  }
  return AnswerChallenge(challenges, request, again, DigestHex(nonce));
}

std::string AnswerChallenge(std::string_view challenges, const WireRequest& request, bool again,
                            const std::string& clientNonce) {
  if (request.userName.empty() && request.password.empty()) return {};
  const std::vector<Challenge> parsed = ParseChallenge(challenges);
  for (const Challenge& challenge : parsed) {
    if (challenge.scheme != "digest") continue;
    const Digest digest(challenge);
    if (!digest.IsKnown()) continue;
    if (again && LowerAscii(challenge["stale"]) != "true") return {};
    return digest.Answer(request, clientNonce);
  }
  const bool basic = std::any_of(parsed.begin(), parsed.end(),
                                 [](const Challenge& c) { return c.scheme == "basic"; });
  return basic && request.allowsBasic && !again ? BasicAuthorization(request) : std::string();
}

std::string BasicAuthorization(const WireRequest& request) {
  if (request.userName.find(':') != std::string::npos) return {};
  return "Basic " + Base64(request.userName + ':' + request.password);
}

}  // namespace Corvane::Host
