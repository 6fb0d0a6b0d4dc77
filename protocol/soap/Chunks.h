// The chunks of an answer. One thread, as the context.
#pragma once

#include "protocol/runtime/Runtime.h"

#include <cstddef>

namespace tarnwell {

/// Joins the chunks of an answer (RFC 9112 section 7.1) in the place of the runtime, which takes a byte FF for the end,
/// and reads on behind a wrong size in what is left in its buffer: what it reads would depend on how the bytes arrive.
/// Here the answer ends at the first byte that is wrong.
class Chunks {
public:
  explicit Chunks(struct soap* soap);
  Chunks(const Chunks&) = delete;
  Chunks& operator=(const Chunks&) = delete;
  ~Chunks();

private:
  static Chunks& of(const struct soap* soap) { return *static_cast<Chunks*>(soap->data[1]); }
  static int parseHead(struct soap* soap);
  static std::size_t receive(struct soap* soap, char* to, std::size_t room);
  std::size_t join(char* bytes, std::size_t size);

  struct soap* const m_soap;
  int (*const m_parseHead)(struct soap*);
  std::size_t (*const m_receive)(struct soap*, char*, std::size_t);
  ULONG64 m_left = 0;      ///< bytes of the chunk
  ULONG64 m_next = 0;      ///< what is read of the next chunk's size
  bool m_hasDigit = false; ///< something is
  bool m_hasSize = false;  ///< all of it is; an extension may follow
  bool m_isEnd = false;
};

} // namespace tarnwell
