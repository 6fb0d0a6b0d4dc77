#include "protocol/soap/Chunks.h"

#include "protocol/runtime/RuntimeInternals.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace tarnwell {

Chunks::Chunks(struct soap* soap) : m_soap(soap), m_parseHead(soap->fparse), m_receive(soap->frecv) {
  soap->data[1] = this;
  soap->fparse = parseHead;
}

Chunks::~Chunks() {
  m_soap->fparse = m_parseHead;
  m_soap->frecv = m_receive;
}

/// Behind the header of a chunked answer, the runtime gets joined chunks, and may read to the end.
int Chunks::parseHead(struct soap* soap) {
  Chunks& self = of(soap);
  const int error = self.m_parseHead(soap);
  if (error || (soap->imode & SOAP_IO) != SOAP_IO_CHUNK)
    return error;
  soap->imode &= ~SOAP_IO;
  soap->frecv = receive;
  soap->buflen = soap->bufidx + self.join(soap->buf + soap->bufidx, unread(soap).size());
  return SOAP_OK;
}

std::size_t Chunks::receive(struct soap* soap, char* to, std::size_t room) {
  Chunks& self = of(soap);
  while (!self.m_isEnd) {
    const std::size_t received = self.m_receive(soap, to, room);
    const std::size_t joined = self.join(to, received);
    if (joined || !received)
      return joined;
  }
  return 0;
}

/// Leaves of `size` bytes what stands in chunks; returns how many these are.
std::size_t Chunks::join(char* bytes, std::size_t size) {
  constexpr ULONG64 largest = 0x7fffffff; // bytes of a chunk, as in the runtime
  char* to = bytes;
  for (const char *at = bytes, *const end = bytes + size; at < end && !m_isEnd;) {
    if (m_left) {
      const std::size_t count = std::min<ULONG64>(m_left, static_cast<std::size_t>(end - at));
      std::memmove(to, at, count);
      m_left -= count;
      to += count;
      at += count;
      continue;
    }
    const char c = *at++;
    unsigned digit = 0;
    if (!m_hasSize && std::from_chars(&c, &c + 1, digit, 16).ec == std::errc()) {
      m_next = m_next * 16 + digit;
      m_hasDigit = true;
      m_isEnd = m_next > largest;
    } else if (m_hasDigit) {
      m_hasSize = c != '\n';
      if (m_hasSize)
        continue;
      m_left = m_next;
      m_isEnd = m_left == 0;
      m_next = 0;
      m_hasDigit = false;
    } else {
      m_isEnd = !isBlank(c); // a line end follows each chunk
    }
  }
  return static_cast<std::size_t>(to - bytes);
}

} // namespace tarnwell
