// Receives what an answer brings while it arrives: the bytes of blocks, each in a byte array that the host can have
// without a copy, and the descriptions of a list; and what records share. Used by TarnwellService alone; one thread, as
// the context.
#pragma once

#include "protocol/binding/Receiver.h"
#include "protocol/schema/SchemaTypes.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <functional>
#include <string>
#include <unordered_map>

namespace tarnwell {

/// Owns the bytes of all blocks that a context reads until they are taken or cleared.
class Downloads : public Receiver {
public:
  unsigned char* reserve(std::size_t capacity, std::size_t size) noexcept override;
  unsigned char* keep(std::size_t size, bool shrink) noexcept override;
  void discard() noexcept override { m_open = QByteArray(); }
  bool takeEntry(const Type& type, void* entry) override;

  /// If set, takes the descriptions of lists. Blocks that it leaves in a description are freed with it.
  std::function<void(dsns__DesktopInfoClass&)> onDescription;

  /// The bytes of `block`, which is left empty: the array is their only owner. Copies, and leaves `block` as it is,
  /// only what does not lie here: an attachment, or a block that several references may lead to. Throws std::bad_alloc.
  QByteArray take(xsd__base64Binary& block);
  /// Frees what was not taken. Requires: the records that point to it are deleted.
  void clear();

private:
  QByteArray m_open;
  std::unordered_map<const unsigned char*, QByteArray> m_kept; ///< by where the bytes lie
};

/// The host's values of one answer. What several references lead to is converted once, and its records share it.
class AnswerValues {
public:
  explicit AnswerValues(Downloads& downloads) : m_downloads(downloads) {}

  /// Absent (null) as null. Throws std::bad_alloc.
  QString text(const std::wstring* text);
  /// As Downloads::take(), but a copy is made once.
  QByteArray bytes(xsd__base64Binary& block);

private:
  Downloads& m_downloads;
  std::unordered_map<const std::wstring*, QString> m_texts;
  std::unordered_map<const unsigned char*, QByteArray> m_copies; ///< by where the bytes of the block lie
};

} // namespace tarnwell
