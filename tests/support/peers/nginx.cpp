#include "tests/support/peers/nginx.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "tests/support/peers/loopback_server.h"

namespace Corvane::Test {

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
  const std::vector<std::string> command = {"nginx",      "-p", "./",    "-c",
                                            "nginx.conf", "-e", "stderr"};
  m_process.emplace(command, ProcessOptions{.folder = m_folder.Path(),
                                            .environment = {"NGINX=" + inherited},
                                            .descriptors = sockets});
  for (const int socket : sockets) close(socket);
  // The sockets take connections before it runs, so only an answer tells; also of a TLS port.
  if (std::all_of(m_ports.begin(), m_ports.end(), AnswersHttp)) return true;
  m_failure = "nginx (Debian's package nginx-light) did not start: " + m_process->Error();
  return false;
}

}  // namespace Corvane::Test
