// The bytes of downloaded blocks, each in a byte array that the host can have without a copy, and what records share.
// Used by TarnwellService alone; one thread, as the context.
#pragma once

#include "protocol/binding/BlockMemory.h"
#include "protocol/schema/SchemaTypes.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <string>
#include <unordered_map>

namespace tarnwell {

/// Owns the bytes of all blocks that a context reads until they are taken or cleared.
class DownloadedBlocks : public BlockMemory {
public:
  unsigned char* reserve(std::size_t capacity, std::size_t size) noexcept override;
  unsigned char* keep(std::size_t size, bool shrink) noexcept override;
  void discard() noexcept override { m_open = QByteArray(); }

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
  explicit AnswerValues(DownloadedBlocks& downloads) : m_downloads(downloads) {}

  /// Absent (null) as null. Throws std::bad_alloc.
  QString text(const std::wstring* text);
  /// As DownloadedBlocks::take(), but a copy is made once.
  QByteArray bytes(xsd__base64Binary& block);

private:
  DownloadedBlocks& m_downloads;
  std::unordered_map<const std::wstring*, QString> m_texts;
  std::unordered_map<const unsigned char*, QByteArray> m_copies; ///< by where the bytes of the block lie
};

} // namespace tarnwell
