#include <algorithm>
#include <cwchar>
#include <limits>
#include <string_view>

#include "base/decimal.h"
#include "base/letter_case.h"
#include "platform/linux/net/wininet.h"

namespace Corvane::Net {
namespace {

struct Scheme {
  std::wstring_view name;
  INTERNET_SCHEME scheme;
  INTERNET_PORT port;  // 0: not known
};

constexpr Scheme kSchemes[] = {{L"http", INTERNET_SCHEME_HTTP, 80},
                               {L"https", INTERNET_SCHEME_HTTPS, 443},
                               {L"ftp", INTERNET_SCHEME_FTP, 21},
                               {L"file", INTERNET_SCHEME_FILE, 0}};

constexpr Scheme kUnknownScheme = {L"", INTERNET_SCHEME_UNKNOWN, 0};

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

bool IsSchemeCharacter(wchar_t c) {
  const wchar_t lower = LowerAscii(c);
  return (lower >= L'a' && lower <= L'z') || IsDigit(c) || c == L'+' || c == L'-' || c == L'.';
}

const Scheme& FindScheme(std::wstring_view name) {
  for (const Scheme& scheme : kSchemes) {
    if (EqualsIgnoreAsciiCase(name, scheme.name)) return scheme;
  }
  return kUnknownScheme;
}

// Each part is a piece of the URL; one that it does not have, has no place either (data() is null).
struct Parts {
  std::wstring_view scheme;
  std::wstring_view host;
  std::wstring_view path;
  INTERNET_SCHEME kind = INTERNET_SCHEME_UNKNOWN;
  INTERNET_PORT port = 0;
};

// An empty port leaves *port alone.
bool ParsePort(std::wstring_view text, INTERNET_PORT* port) {
  if (text.empty()) return true;
  const auto value = ParseDigits(text, std::numeric_limits<INTERNET_PORT>::max());
  *port = static_cast<INTERNET_PORT>(value.value_or(0));
  return value.has_value();
}

// RFC 3986, section 3.2: [user information@]host[:port].
bool ParseAuthority(std::wstring_view authority, Parts* parts) {
  const std::size_t at = authority.find(L'@');
  if (at != std::wstring_view::npos) authority.remove_prefix(at + 1);
  std::size_t hostChars = authority.find(L':');
  if (authority.starts_with(L'[')) {
    const std::size_t close = authority.find(L']');
    if (close == std::wstring_view::npos) return false;
    hostChars = close + 1;
  }
  parts->host = authority.substr(0, hostChars);
  authority.remove_prefix(parts->host.size());
  if (authority.empty()) return true;
  return authority.front() == L':' && ParsePort(authority.substr(1), &parts->port);
}

DWORD ParseUrlParts(std::wstring_view url, Parts* parts) {
  const auto schemeEnd = std::find_if_not(url.begin(), url.end(), IsSchemeCharacter);
  if (schemeEnd == url.begin() || schemeEnd == url.end() || *schemeEnd != L':') {
    return ERROR_INTERNET_UNRECOGNIZED_SCHEME;
  }
  parts->scheme = url.substr(0, static_cast<std::size_t>(schemeEnd - url.begin()));
  const Scheme& scheme = FindScheme(parts->scheme);
  parts->kind = scheme.scheme;
  std::wstring_view rest = url.substr(parts->scheme.size() + 1);
  if (rest.starts_with(L"//")) {
    rest.remove_prefix(2);
    if (scheme.scheme != INTERNET_SCHEME_FILE) {
      parts->port = scheme.port;
      const std::wstring_view authority = rest.substr(0, rest.find_first_of(L"/?#"));
      if (!ParseAuthority(authority, parts)) return ERROR_INTERNET_INVALID_URL;
      rest.remove_prefix(authority.size());
    }
  }
  parts->path = rest.substr(0, rest.find(L'\n'));
  return ERROR_SUCCESS;
}

// Windows' structure gives away writable pointers into the URL.
void FillUrlPart(std::wstring_view part, wchar_t** place, DWORD* length) {
  if (*length == 0) return;
  *place = const_cast<wchar_t*>(part.data());
  *length = static_cast<DWORD>(part.size());
}

bool WantsMore(const URL_COMPONENTSW& c) {
  const bool buffer = (c.lpszScheme != nullptr && c.dwSchemeLength != 0) ||
                      (c.lpszHostName != nullptr && c.dwHostNameLength != 0) ||
                      (c.lpszUrlPath != nullptr && c.dwUrlPathLength != 0);
  return buffer || c.dwUserNameLength != 0 || c.dwPasswordLength != 0 || c.dwExtraInfoLength != 0;
}

DWORD CrackUrl(const wchar_t* url, DWORD urlChars, DWORD flags, URL_COMPONENTSW* components) {
  if (url == nullptr || *url == L'\0' || flags != 0 || components == nullptr ||
      components->dwStructSize != sizeof(URL_COMPONENTSW)) {
    return ERROR_INVALID_PARAMETER;
  }
  if (WantsMore(*components)) return ERROR_NOT_SUPPORTED;
  Parts parts;
  const std::wstring_view text(url, urlChars == 0 ? std::wcslen(url) : wcsnlen(url, urlChars));
  const DWORD code = ParseUrlParts(text, &parts);
  if (code != ERROR_SUCCESS) return code;
  FillUrlPart(parts.scheme, &components->lpszScheme, &components->dwSchemeLength);
  components->nScheme = parts.kind;
  FillUrlPart(parts.host, &components->lpszHostName, &components->dwHostNameLength);
  components->nPort = parts.port;
  FillUrlPart(parts.path, &components->lpszUrlPath, &components->dwUrlPathLength);
  return ERROR_SUCCESS;
}

}  // namespace
}  // namespace Corvane::Net

extern "C" {

BOOL WINAPI InternetCrackUrlW(const wchar_t* url, DWORD urlChars, DWORD flags,
                              URL_COMPONENTSW* components) {
  const DWORD code = Corvane::Net::CrackUrl(url, urlChars, flags, components);
  if (code == ERROR_SUCCESS) return TRUE;
  SetLastError(code);
  return FALSE;
}

}  // extern "C"
