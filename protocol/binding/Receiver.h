// Who receives what an answer brings while it is read: bytes of blocks, entries of lists. One thread, as the context.
#pragma once

#include "protocol/runtime/RuntimeInternals.h"

#include <cstddef>

namespace tarnwell {

struct Type;

/// One block at a time is open: its bytes are being read.
class Receiver {
public:
  Receiver() = default;
  Receiver(const Receiver&) = delete;
  Receiver& operator=(const Receiver&) = delete;
  virtual ~Receiver() = default;

  /// Gives the open block room for `capacity` bytes, or opens one; keeps the `size` bytes that were written. Returns
  /// where the bytes lie. Null: out of memory; the block is unchanged.
  virtual unsigned char* reserve(std::size_t capacity, std::size_t size) noexcept = 0;
  /// Closes the open block, which has `size` bytes, and keeps it; `shrink`: without the room that is left. Returns
  /// where the bytes lie from now on. Null: out of memory.
  virtual unsigned char* keep(std::size_t size, bool shrink) noexcept = 0;
  /// Frees the open block.
  virtual void discard() noexcept = 0;

  /// Offers an entry of a list as soon as it was read. True: it was taken, and the context deletes it with all that was
  /// read into it. May throw.
  virtual bool takeEntry(const Type& /*type*/, void* /*entry*/) { return false; }

  /// The answer has an id or a reference, also one to an attachment, so that several may lead to one value: from then
  /// on blocks are read into the context's own memory, and entries stay there.
  bool hasReferences = false;
};

/// Lets the context read for `receiver`; null: all stays in the context. Requires: `receiver` outlives the context's
/// use.
inline void setReceiver(struct soap* soap, Receiver* receiver) { userData(soap, UserData::Receiver) = receiver; }
inline Receiver* receiverOf(struct soap* soap) { return static_cast<Receiver*>(userData(soap, UserData::Receiver)); }

} // namespace tarnwell
