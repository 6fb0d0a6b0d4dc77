// HTTP messages of the tests: replies to script, and requests taken apart.
#pragma once

#include <QtCore/QByteArray>
#include <string>

constexpr int patience = 300000; // milliseconds; nothing takes that long on a loaded machine either

/// How a service handles one connection.
struct Reply {
  std::string bytes;                     ///< the whole reply, header included
  std::size_t reads = std::string::npos; ///< bytes of the request that are read before the reply; npos: all of it
  bool stalls = false;                   ///< replies only when the service ends
};

/// A reply; `framing` is the header line that gives its length, `headers` are further lines, each with its line end.
inline Reply framed(const std::string& framing, const std::string& body, int status = 200,
                    const std::string& headers = {}) {
  const bool hasType = headers.find("Content-Type:") != std::string::npos;
  return {"HTTP/1.1 " + std::to_string(status) + " Scripted\r\n" + headers +
          (hasType ? "" : "Content-Type: application/soap+xml; charset=utf-8\r\n") + framing + "\r\n\r\n" + body};
}
/// A complete reply with Content-Length.
inline Reply reply(int status, const std::string& body, const std::string& headers = {}) {
  return framed("Content-Length: " + std::to_string(body.size()), body, status, headers);
}
/// The same with a length that is far too big.
inline Reply falseLength(const std::string& body) { return framed("Content-Length: 99999999999", body); }
/// A complete reply in HTTP chunks of `size` bytes.
inline Reply chunks(std::size_t size, int status, const std::string& body) {
  std::string bytes;
  for (std::size_t at = 0; at < body.size(); at += size) {
    const std::string chunk = body.substr(at, size);
    bytes += QByteArray::number(static_cast<int>(chunk.size()), 16).toStdString() + "\r\n" + chunk + "\r\n";
  }
  return framed("Transfer-Encoding: chunked", bytes + "0\r\n\r\n", status);
}
/// A reply whose body has an attachment: `bytes`, which `included` refers to (MTOM).
inline Reply withAttachment(const std::string& body, const std::string& bytes) {
  return reply(
      200,
      "--edge\r\nContent-Type: application/xop+xml; type=\"application/soap+xml\"\r\nContent-ID: <a@x>\r\n\r\n" + body +
          "\r\n--edge\r\nContent-Transfer-Encoding: binary\r\nContent-ID: <b@x>\r\n\r\n" + bytes + "\r\n--edge--\r\n",
      "Content-Type: multipart/related; boundary=\"edge\"; type=\"application/xop+xml\"; start=\"<a@x>\"\r\n");
}
inline const std::string included = "<xop:Include xmlns:xop='http://www.w3.org/2004/08/xop/include' href='cid:b@x'/>";
/// No reply: the connection is closed after `count` bytes of the request (npos: after all of it).
inline Reply hangUp(std::size_t count) { return {"", count, false}; }

struct Request {
  std::string head; ///< request line and header fields
  std::string body;

  static Request parsed(const std::string& message) {
    const std::size_t end = message.find("\r\n\r\n");
    return end == std::string::npos ? Request{message, {}} : Request{message.substr(0, end), message.substr(end + 4)};
  }
  /// The value of a header field, empty when absent.
  std::string header(const std::string& name) const {
    const std::string start = "\r\n" + name + ": ";
    const std::size_t at = head.find(start);
    const std::size_t value = at + start.size();
    return at == std::string::npos ? "" : head.substr(value, head.find("\r\n", value) - value);
  }
};
