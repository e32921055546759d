#include "tests/support/nginx.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>

#include "tests/support/loopback_server.h"

namespace Corvane::Test {
namespace {

using namespace std::string_literals;

namespace fs = std::filesystem;

constexpr int kStartTimeoutMs = 10'000;

std::string ReadFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// In the child between fork and exec: only what a signal handler may call. The program's output
// goes to the file `log`.
pid_t Spawn(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
            const std::vector<int>& sockets, const fs::path& log) {
  std::vector<char*> argv;
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  std::vector<char*> envp;
  for (const std::string& variable : environment) {
    envp.push_back(const_cast<char*>(variable.c_str()));
  }
  envp.push_back(nullptr);
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child != 0) return child;
  prctl(PR_SET_PDEATHSIG, SIGTERM);  // which a master passes on to its workers
  if (getppid() != parent) _exit(1);
  const int output = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  for (const int socket : sockets) fcntl(socket, F_SETFD, 0);  // stays open
  environ = envp.data();                                       // whose PATH is searched, too
  execvp(argv[0], argv.data());
  _exit(127);
}

// A program of the system's, also where the folder of servers is not in the user's PATH.
std::vector<std::string> Environment() {
  const char* const path = std::getenv("PATH");
  return {std::string("PATH=") + (path ? path : "/usr/bin:/bin") + ":/usr/sbin:/sbin", "LC_ALL=C"};
}

}  // namespace

Nginx::~Nginx() { Stop(); }

void Nginx::Stop() {
  if (m_process <= 0) return;
  kill(m_process, SIGTERM);
  waitpid(m_process, nullptr, 0);
  m_process = -1;
}

bool Nginx::MakeCertificate(const std::string& name, const std::string& subjectAltName) const {
  const std::string stem = (m_folder.Path() / name).string();
  const pid_t process =
      Spawn({"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
             "-nodes", "-days", "2", "-subj", "/CN=device", "-addext",
             "subjectAltName=" + subjectAltName, "-keyout", stem + ".key", "-out", stem + ".pem"},
            Environment(), {}, m_folder.Path() / "openssl.log");
  int status = -1;
  return process > 0 && waitpid(process, &status, 0) == process && status == 0;
}

bool Nginx::Start(std::string servers, std::size_t portCount) {
  // The listening sockets are made here and handed down, as nginx hands them to its own successor:
  // no other process can take a port in between.
  std::vector<int> sockets;
  std::string inherited = "NGINX=";
  for (std::size_t i = 0; i < portCount; ++i) {
    std::uint16_t port = 0;
    sockets.push_back(ListenOnLoopback(SOMAXCONN, &port));
    m_ports.push_back(port);
    inherited += std::to_string(sockets.back()) + ';';
    const std::string mark = "@PORT" + std::to_string(i) + "@";
    for (std::size_t at; (at = servers.find(mark)) != std::string::npos;) {
      servers.replace(at, mark.size(), "127.0.0.1:" + std::to_string(port));
    }
  }
  std::string temporaries;
  for (const char* const kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
    temporaries += std::string(kind) + "_temp_path temp_" + kind + ";\n";
  }
  m_folder.Write(
      "nginx.conf",
      // Without a master it cannot take over sockets; a root's workers would change user.
      (geteuid() == 0 ? "user root;\n"s : ""s) +
          "daemon off;\nworker_processes 1;\npid nginx.pid;\nerror_log error.log;\n"
          "events { worker_connections 64; }\nhttp {\naccess_log off;\nroot root;\n" +
          temporaries + servers + "}\n");
  std::filesystem::create_directories(m_folder.Path() / "root");
  const std::string folder = m_folder.Path().string() + '/';
  std::vector<std::string> environment = Environment();
  environment.push_back(inherited);
  m_process = Spawn({"nginx", "-p", folder, "-c", "nginx.conf", "-e", "error.log"}, environment,
                    sockets, m_folder.Path() / "output.log");
  for (const int socket : sockets) close(socket);
  if (WaitUntilReady()) return true;
  m_failure = "nginx (Debian's package nginx-light) did not start: " +
              ReadFile(m_folder.Path() / "output.log") + ReadFile(m_folder.Path() / "error.log");
  Stop();
  return false;
}

bool Nginx::WaitUntilReady() {
  if (m_process <= 0) return false;
  for (const std::uint16_t port : m_ports) {
    if (!Answers(port)) return false;
  }
  return true;
}

// The socket takes connections before nginx runs, so only an answer tells; a process that ended has
// closed it. A TLS port answers this, too.
bool Nginx::Answers(std::uint16_t port) const {
  const int client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  constexpr std::string_view kRequest = "HEAD / HTTP/1.0\r\n\r\n";
  bool answered = false;
  if (connect(client, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0 &&
      send(client, kRequest.data(), kRequest.size(), MSG_NOSIGNAL) > 0) {
    pollfd polled{client, POLLIN, 0};
    char byte = 0;
    answered = poll(&polled, 1, kStartTimeoutMs) > 0 && recv(client, &byte, 1, 0) == 1;
  }
  close(client);
  return answered;
}

}  // namespace Corvane::Test
