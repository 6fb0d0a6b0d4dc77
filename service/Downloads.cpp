#include "service/Downloads.h"

#include "service/Conversions.h"

#include <exception>
#include <utility>

namespace tarnwell {

unsigned char* Downloads::reserve(std::size_t capacity, std::size_t size) noexcept try {
  m_open.resize(static_cast<int>(size)); // never more than was reserved before
  m_open.reserve(static_cast<int>(capacity));
  return reinterpret_cast<unsigned char*>(m_open.data());
} catch (const std::exception&) {
  return nullptr;
}

unsigned char* Downloads::keep(std::size_t size, bool shrink) noexcept try {
  m_open.resize(static_cast<int>(size));
  if (shrink)
    m_open.squeeze();
  auto* const bytes = reinterpret_cast<unsigned char*>(m_open.data());
  m_kept[bytes].swap(m_open);
  return bytes;
} catch (const std::exception&) {
  return nullptr;
}

bool Downloads::takeEntry(const Type& type, void* entry) {
  if (!onDescription || type.number != dsns__DesktopInfoClass::number)
    return false;
  onDescription(*static_cast<dsns__DesktopInfoClass*>(entry));
  m_kept.clear(); // what it has left there: all records before it were taken, too
  return true;
}

QByteArray Downloads::take(xsd__base64Binary& block) {
  if (!block.__ptr)
    return QByteArray(); // also of a size that says otherwise
  const auto kept = m_kept.find(block.__ptr);
  if (kept == m_kept.end())
    return QByteArray(reinterpret_cast<const char*>(block.__ptr), block.__size);
  QByteArray bytes = std::move(kept->second);
  m_kept.erase(kept);
  block.__ptr = nullptr;
  block.__size = 0;
  return bytes;
}

void Downloads::clear() {
  m_kept = {}; // clear() would keep room for as many again
  hasReferences = false;
}

QString AnswerValues::text(const std::wstring* text) {
  if (!text || !m_downloads.hasReferences)
    return fromWide(text);
  const auto [known, isNew] = m_texts.try_emplace(text);
  if (isNew)
    known->second = fromWide(text);
  return known->second;
}

QByteArray AnswerValues::bytes(xsd__base64Binary& block) {
  if (const auto known = m_copies.find(block.__ptr); known != m_copies.end())
    return known->second;
  QByteArray bytes = m_downloads.take(block);
  if (block.__ptr) // a copy: other records may have the same block
    m_copies[block.__ptr] = bytes;
  return bytes;
}

} // namespace tarnwell
