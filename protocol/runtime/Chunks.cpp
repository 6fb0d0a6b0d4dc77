#include "protocol/runtime/Chunks.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <utility>

namespace tarnwell {

Chunks::Chunks(struct soap* soap, int (*refuse)(struct soap*, Wrong))
    : m_soap(soap), m_refuse(refuse), m_parseHead(soap->fparse), m_receive(soap->frecv) {
  userData(soap, UserData::Chunks) = this;
  soap->fparse = parseHead;
}

Chunks::~Chunks() {
  m_soap->fparse = m_parseHead;
  m_soap->frecv = m_receive;
}

/// Behind the header of a chunked message, the runtime gets joined chunks, and may read to the end.
int Chunks::parseHead(struct soap* soap) {
  Chunks& self = of(soap);
  const int error = self.m_parseHead(soap);
  if (error || (soap->imode & SOAP_IO) != SOAP_IO_CHUNK)
    return error;
  soap->imode &= ~SOAP_IO;
  soap->frecv = receive;
  soap->buflen = soap->bufidx + self.join(soap->buf + soap->bufidx, unread(soap).size());
  return soap->error = self.m_error;
}

std::size_t Chunks::receive(struct soap* soap, char* to, std::size_t room) {
  Chunks& self = of(soap);
  while (self.m_part != Part::End) {
    const std::size_t received = self.m_receive(soap, to, room);
    const std::size_t joined = self.join(to, received);
    if (joined || !received)
      return joined;
  }
  return 0;
}

/// Leaves of `size` bytes what stands in chunks; returns how many these are.
std::size_t Chunks::join(char* bytes, std::size_t size) {
  char* to = bytes;
  for (const char *at = bytes, *const end = bytes + size; at < end && m_part != Part::End;) {
    if (m_left == 0) {
      readFraming(*at++);
      continue;
    }
    const std::size_t count = std::min<ULONG64>(m_left, static_cast<std::size_t>(end - at));
    std::memmove(to, at, count);
    m_left -= count;
    to += count;
    at += count;
  }
  return static_cast<std::size_t>(to - bytes);
}

void Chunks::readFraming(char c) {
  constexpr ULONG64 largest = 0x7fffffff; // bytes of a chunk, as in the runtime
  const bool isBegun = m_part == Part::Size || m_part == Part::Extension;
  unsigned digit = 0;
  if ((m_part == Part::Start || m_part == Part::Size) && std::from_chars(&c, &c + 1, digit, 16).ec == std::errc()) {
    m_part = Part::Size;
    m_next = m_next * 16 + digit;
    if (m_next > (m_soap->recv_maxlength ? m_soap->recv_maxlength : largest))
      end(Wrong::Length);
  } else if (isBegun && c == '\n') {
    m_part = m_next ? Part::DataEnd : Part::End;
    m_left = std::exchange(m_next, 0);
  } else if (m_part == Part::Extension || (isBegun && (c == ';' || isBlank(c)))) {
    m_part = Part::Extension;
  } else if (m_part == Part::DataEnd && c == '\n') {
    m_part = Part::Start;
  } else if (m_part != Part::DataEnd || c != '\r') {
    end(Wrong::Framing);
  }
}

void Chunks::end(Wrong wrong) {
  m_part = Part::End;
  m_error = m_refuse ? m_refuse(m_soap, wrong) : SOAP_OK;
}

} // namespace tarnwell
