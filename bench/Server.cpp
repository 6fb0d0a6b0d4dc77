// The bench server on 127.0.0.1: reads a request by its Content-Length, discards the body in the kernel, and answers
// with bytes that it prepared once, so that its own work hardly counts in a measurement. It serves one connection at a
// time and prints its port. The path of the request selects the answer:
//   /login        a successful login
//   /list/N/T     N maps, each with a thumbnail of T bytes (0: none)
//   /get/M        a map of M MiB
//   /save         a successful save
#include "Deployment.h"

#include <QtCore/QByteArray>

#include <arpa/inet.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <netinet/tcp.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr char loginSuccess[] = "<DesktopLoginResponseObject><DesktopLoginValue>Success</DesktopLoginValue>"
                                "</DesktopLoginResponseObject>";
constexpr char accessSuccess[] = "<DesktopMapAccess>Success</DesktopMapAccess>";

/// Element `name` with `size` random bytes in base64, the same in every run.
std::string block(const char* name, int size, unsigned seed) {
  QByteArray bytes(size, 0);
  unsigned state = seed * 2654435761U + 1;
  for (char& byte : bytes) {
    state = state * 1664525U + 1013904223U;
    byte = static_cast<char>(state >> 24);
  }
  return std::string("<") + name + ">" + bytes.toBase64().toStdString() + "</" + name + ">";
}

/// The child elements of map number `index`, with `blocks` at their place in wire order.
std::string description(unsigned index, const std::string& blocks) {
  char head[512];
  snprintf(head, sizeof head,
           "<MapName>Map %u \u00e5\u00e4\u00f6 &amp; notes</MapName><MapId>%08x-44f1-410a-ab9a-f9b5446f13ee</MapId>"
           "<Author>anna.lind</Author><LastModified>2012-03-%02uT05:06:07Z</LastModified>"
           "<Created>2011-01-02T03:04:05Z</Created>"
           "<Description>Goals and open points of project %u, second revision</Description>",
           index, 0x67c8770bU + index, index % 28 + 1, index);
  return head + blocks +
         "<AllowInclusion>false</AllowInclusion><Version>3.5</Version>"
         "<Format_IsTwlx>true</Format_IsTwlx>";
}

std::string answer(const std::string& operation, const std::string& result) {
  const std::string envelope = "<?xml version=\"1.0\" encoding=\"utf-8\"?>"
                               "<soap:Envelope xmlns:soap=\"http://www.w3.org/2003/05/soap-envelope\""
                               " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
                               " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\"><soap:Body><" +
                               operation + "Response xmlns=\"" TARNWELL_SERVICE_NAMESPACE "\"><" + operation +
                               "Result>" + result + "</" + operation + "Result></" + operation +
                               "Response></soap:Body></soap:Envelope>";
  return "HTTP/1.1 200 OK\r\nContent-Type: application/soap+xml; charset=utf-8\r\nContent-Length: " +
         std::to_string(envelope.size()) + "\r\nConnection: close\r\n\r\n" + envelope;
}

std::string listAnswer(unsigned count, int thumbnailSize) {
  std::string maps;
  for (unsigned index = 0; index < count; ++index) {
    const std::string thumbnail = thumbnailSize ? block("Thumbnail", thumbnailSize, index) : "";
    maps += "<DesktopInfoClass>" + description(index, thumbnail + "<IsPublished>true</IsPublished>") +
            "</DesktopInfoClass>";
  }
  return answer("GetMapsList_NEW_DESKTOP",
                "<DesktopInfoObjectList>" + maps + "</DesktopInfoObjectList>" + loginSuccess);
}

std::string makeReply(const std::string& path) {
  unsigned count = 0;
  int size = 0;
  if (sscanf(path.c_str(), "/list/%u/%d", &count, &size) == 2)
    return listAnswer(count, size);
  if (sscanf(path.c_str(), "/get/%d", &size) == 1) {
    const std::string blocks = "<IsPublished>true</IsPublished>" + block("MapContent", size << 20, 7);
    return answer("GetMapContent_NEW_DESKTOP", std::string(accessSuccess) + loginSuccess + "<DesktopInfo>" +
                                                   description(1, blocks) + "</DesktopInfo>");
  }
  if (path == "/save")
    return answer("SaveMap_NEW_DESKTOP", std::string(accessSuccess) + loginSuccess + "<DesktopInfoClass>" +
                                             description(2, "<IsPublished>true</IsPublished>") + "</DesktopInfoClass>");
  return answer("Login", "<DesktopLoginValue>Success</DesktopLoginValue>");
}

/// Reads one request. Returns its path, empty when the peer closed early.
std::string receiveRequest(int connection) {
  constexpr std::size_t limit = 65536;
  std::string head;
  std::size_t end = std::string::npos;
  while (end == std::string::npos && head.size() < limit) {
    char piece[4096];
    const ssize_t got = recv(connection, piece, sizeof piece, 0);
    if (got <= 0)
      return {};
    head.append(piece, static_cast<std::size_t>(got));
    end = head.find("\r\n\r\n");
  }
  const char* length = strcasestr(head.c_str(), "\r\nContent-Length:");
  if (end == std::string::npos || !length || head.compare(0, 5, "POST ") != 0)
    return {};
  long long left = atoll(length + strlen("\r\nContent-Length:")) - static_cast<long long>(head.size() - end - 4);
  while (left > 0) {
    const auto piece = static_cast<std::size_t>(left < (1 << 20) ? left : 1 << 20);
    const ssize_t got = recv(connection, nullptr, piece, MSG_TRUNC); // counts the bytes, copies none
    if (got <= 0)
      return {};
    left -= got;
  }
  return head.substr(5, head.find(' ', 5) - 5);
}

void sendAll(int connection, const std::string& bytes) {
  for (std::size_t sent = 0; sent < bytes.size();) {
    const ssize_t took = send(connection, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (took <= 0)
      return;
    sent += static_cast<std::size_t>(took);
  }
}

void serve(int connection) {
  static std::map<std::string, std::string> replies;
  const std::string path = receiveRequest(connection);
  std::string& reply = replies[path];
  if (reply.empty())
    reply = makeReply(path);
  if (!path.empty())
    sendAll(connection, reply);
  shutdown(connection, SHUT_WR);
  // Waits until the peer has closed too: a reset would discard bytes that have not arrived yet.
  char rest[4096];
  while (recv(connection, rest, sizeof rest, 0) > 0) {
  }
}

} // namespace

int main() {
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  if (bind(listener, reinterpret_cast<sockaddr*>(&address), size) || listen(listener, 64) ||
      getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size)) {
    perror("benchserver");
    return 1;
  }
  printf("%d\n", ntohs(address.sin_port));
  fflush(stdout);
  for (;;) {
    const int connection = accept(listener, nullptr, nullptr);
    if (connection < 0)
      continue;
    const int on = 1;
    setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    serve(connection);
    close(connection);
  }
}
