// SNMP agents that a test scripts, and their messages of versions 1 and 2c (RFC 1157, RFC 3416) in
// BER (Linux).
#ifndef CORVANE_TESTS_SUPPORT_PEERS_SCRIPTED_AGENT_H_
#define CORVANE_TESTS_SUPPORT_PEERS_SCRIPTED_AGENT_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace Corvane::Test {

inline std::string Ber(int tag, const std::string& content) {
  std::string encoded(1, static_cast<char>(tag));
  if (content.size() >= 0x80) {
    encoded += '\x82';
    encoded += static_cast<char>(content.size() >> 8);
  }
  return encoded + static_cast<char>(content.size() & 0xFF) + content;
}

// The first element of `input`, which it is cut off from: its tag and content.
inline std::pair<int, std::string> NextBer(std::string_view* input) {
  const auto byte = [input](std::size_t i) {
    return std::size_t{static_cast<unsigned char>(input->at(i))};
  };
  std::size_t start = 2;
  std::size_t size = byte(1);
  if (size >= 0x80) {
    start += size & 0x7F;
    size = 0;
    for (std::size_t i = 2; i < start; ++i) size = (size << 8) | byte(i);
  }
  std::pair<int, std::string> element(static_cast<int>(byte(0)), input->substr(start, size));
  input->remove_prefix(start + size);
  return element;
}

struct AgentRequest {
  AgentRequest(const std::string& message) {
    std::string_view rest = message;
    const std::string content = NextBer(&rest).second;
    rest = content;
    version = NextBer(&rest).second;
    community = NextBer(&rest).second;
    const std::string pdu = NextBer(&rest).second;
    rest = pdu;
    id = NextBer(&rest).second;
    NextBer(&rest);
    NextBer(&rest);
    const std::string list = NextBer(&rest).second;
    for (rest = list; !rest.empty();) {
      const std::string variable = NextBer(&rest).second;
      std::string_view pair = variable;
      names.push_back(NextBer(&pair).second);
    }
  }

  // Other names than were asked for: with another last arc, or with one arc more.
  AgentRequest& Rename(char lastArc) {
    for (std::string& name : names) name.back() = lastArc;
    return *this;
  }
  AgentRequest& Extend() {
    for (std::string& name : names) name += '\x01';
    return *this;
  }

  // With values of their own tag and length, each behind the name of the same place.
  std::string Answer(const std::vector<std::string>& values, int status = 0) const {
    std::string list;
    for (std::size_t i = 0; i < values.size(); ++i) {
      list += Ber(0x30, Ber(0x06, names.at(i % names.size())) + values[i]);
    }
    const auto number = [](int content) {
      return Ber(0x02, std::string(1, static_cast<char>(content)));
    };
    return Ber(0x30, Ber(0x02, version) + Ber(0x04, community) +
                         Ber(0xA2, Ber(0x02, id) + number(status) + number(0) + Ber(0x30, list)));
  }
  // For each name the text of its last arc, "7".
  std::string AnswerLastArcs() const {
    std::vector<std::string> values;
    for (const std::string& name : names) {
      values.push_back(Ber(0x04, std::to_string(static_cast<unsigned char>(name.back()))));
    }
    return Answer(values);
  }

  std::string version, community, id;
  std::vector<std::string> names;
};

struct Datagram {
  Datagram(std::string content, bool elsewhere = false)
      : bytes(std::move(content)), fromElsewhere(elsewhere) {}
  std::string bytes;
  bool fromElsewhere;  // from a port that the client never sent to
};
using Datagrams = std::vector<Datagram>;

// Answers what clients send to a loopback port by a script, on a thread of its own.
class ScriptedAgent {
 public:
  explicit ScriptedAgent(std::function<Datagrams(const std::string& bytes)> answer);
  ScriptedAgent(const ScriptedAgent&) = delete;
  ScriptedAgent& operator=(const ScriptedAgent&) = delete;
  ~ScriptedAgent();

  std::uint16_t Port() const { return m_port; }
  // Datagrams that clients sent so far.
  int Requests() const { return m_requests; }

 private:
  void Run();

  const std::function<Datagrams(const std::string&)> m_answer;
  std::uint16_t m_port = 0;
  const int m_socket;
  std::atomic<int> m_requests{0};
  std::thread m_thread;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_PEERS_SCRIPTED_AGENT_H_
