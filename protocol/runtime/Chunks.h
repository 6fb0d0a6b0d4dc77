// The chunks of a message. One thread, as the context.
#pragma once

#include "protocol/runtime/RuntimeInternals.h"

#include <cstddef>

namespace tarnwell {

/// Joins the chunks of a message (RFC 9112 section 7.1) in the place of the runtime, which takes a byte FF for the end,
/// and reads on behind a wrong size in what is left in its buffer: what it reads would depend on how the bytes arrive.
/// Here the message ends at the first byte that is wrong, or that makes a chunk longer than what the context receives.
class Chunks {
public:
  enum class Wrong { Framing, Length };
  /// `refuse`, unless null, is told what is wrong, and returns the runtime's error code for it.
  explicit Chunks(struct soap* soap, int (*refuse)(struct soap* soap, Wrong wrong) = nullptr);
  Chunks(const Chunks&) = delete;
  Chunks& operator=(const Chunks&) = delete;
  ~Chunks();

private:
  enum class Part { DataEnd, Start, Size, Extension, End };

  static Chunks& of(struct soap* soap) { return *static_cast<Chunks*>(userData(soap, UserData::Chunks)); }
  static int parseHead(struct soap* soap);
  static std::size_t receive(struct soap* soap, char* to, std::size_t room);
  std::size_t join(char* bytes, std::size_t size);
  void readFraming(char c);
  void end(Wrong wrong);

  struct soap* const m_soap;
  int (*const m_refuse)(struct soap*, Wrong);
  int (*const m_parseHead)(struct soap*);
  std::size_t (*const m_receive)(struct soap*, char*, std::size_t);
  ULONG64 m_left = 0;        ///< bytes of the chunk
  ULONG64 m_next = 0;        ///< what is read of the next chunk's size
  Part m_part = Part::Start; ///< of the framing
  int m_error = SOAP_OK;
};

} // namespace tarnwell
