#include "tests/support/peers/nginx.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>

#include "tests/support/peers/loopback_server.h"

namespace Corvane::Test {
namespace {

constexpr int kStartTimeoutMs = 10'000;

// The socket takes connections before nginx runs, so only an answer tells; a process that ended has
// closed it. A TLS port answers this, too.
bool Answers(std::uint16_t port) {
  const int client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  constexpr std::string_view kRequest = "HEAD / HTTP/1.0\r\n\r\n";
  pollfd polled{client, POLLIN, 0};
  char byte = 0;
  const bool answered =
      connect(client, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0 &&
      send(client, kRequest.data(), kRequest.size(), MSG_NOSIGNAL) > 0 &&
      poll(&polled, 1, kStartTimeoutMs) > 0 && recv(client, &byte, 1, 0) == 1;
  close(client);
  return answered;
}

}  // namespace

Nginx::~Nginx() {
  if (m_process <= 0) return;
  kill(m_process, SIGTERM);
  waitpid(m_process, nullptr, 0);
}

bool Nginx::MakeCertificate(const std::string& name, const std::string& subjectAltName) const {
  const std::string command =
      "cd '" + m_folder.Path().string() +
      "' && exec openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 "
      "-subj /CN=device -addext subjectAltName=" +
      subjectAltName + " -keyout " + name + ".key -out " + name + ".pem 2>openssl.log";
  return std::system(command.c_str()) == 0;
}

bool Nginx::Start(std::string servers, std::size_t portCount) {
  // The listening sockets are made here and handed down, as nginx hands them to its own successor:
  // no other process can take a port in between.
  std::vector<int> sockets;
  std::string inherited;
  for (std::size_t i = 0; i < portCount; ++i) {
    m_ports.push_back(0);
    sockets.push_back(ListenOnLoopback(SOMAXCONN, &m_ports.back()));
    inherited += std::to_string(sockets.back()) + ';';
    const std::string mark = "@PORT" + std::to_string(i) + "@";
    for (std::size_t at; (at = servers.find(mark)) != std::string::npos;) {
      servers.replace(at, mark.size(), "127.0.0.1:" + std::to_string(m_ports.back()));
    }
  }
  // Without a master it cannot take over sockets; a root's workers would change user.
  std::string configuration = geteuid() == 0 ? "user root;\n" : "";
  configuration +=
      "daemon off;\nworker_processes 1;\npid nginx.pid;\nevents { worker_connections 64; }\n"
      "http {\naccess_log off;\nroot root;\n";
  for (const std::string kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
    configuration += kind + "_temp_path temp_" + kind + ";\n";
  }
  m_folder.Write("nginx.conf", configuration + servers + "}\n");
  std::filesystem::create_directories(m_folder.Path() / "root");
  // Servers are not in every user's PATH.
  const std::string command = "cd '" + m_folder.Path().string() +
                              "' && PATH=\"$PATH:/usr/sbin:/sbin\" && export NGINX='" + inherited +
                              "' && exec nginx -p ./ -c nginx.conf -e stderr >log 2>&1";
  const pid_t parent = getpid();
  m_process = fork();
  if (m_process == 0) {                // only what a signal handler may call
    prctl(PR_SET_PDEATHSIG, SIGTERM);  // which a master passes on to its workers
    if (getppid() != parent) _exit(1);
    for (const int socket : sockets) fcntl(socket, F_SETFD, 0);  // stays open
    execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
    _exit(127);
  }
  for (const int socket : sockets) close(socket);
  if (m_process > 0 && std::all_of(m_ports.begin(), m_ports.end(), Answers)) return true;
  std::ifstream log(m_folder.Path() / "log");
  m_failure = "nginx (Debian's package nginx-light) did not start: " +
              std::string(std::istreambuf_iterator<char>(log), {});
  return false;
}

}  // namespace Corvane::Test
