#include "service/Conversions.h"

#include "protocol/runtime/RuntimeInternals.h"

#include <QtCore/QTimeZone>

#include <algorithm>
#include <limits>
#include <new>

namespace tarnwell {
namespace {

static_assert(sizeof(wchar_t) == 4, "the protocol's texts hold one code point per unit");

/// UTF-16 units that a QString holds: half of an int's range of bytes, with room for its header.
constexpr std::size_t longestText = 1073741000;

#if QT_VERSION < QT_VERSION_CHECK(6, 5, 0)
constexpr auto inUtc = Qt::UTC;
#else // later releases warn of Qt::UTC
constexpr auto inUtc = QTimeZone::UTC;
#endif

/// Arrays of Qt 6 hold more bytes than a block: throws std::bad_alloc for these.
void refuseOversize(const QByteArray& bytes) {
  if (static_cast<std::size_t>(bytes.size()) > largestBlock)
    throw std::bad_alloc();
}

} // namespace

std::wstring toWide(const QString& text) {
  if (static_cast<std::size_t>(text.size()) > longestText) // as Qt 6 can hold
    throw std::bad_alloc();
  return text.toStdWString();
}

QString fromWide(std::wstring_view text) {
  if (text.size() > longestText)
    throw std::bad_alloc();
  wchar_t allBits = 0;
  for (const wchar_t unit : text)
    allBits |= unit;
  const bool startsWithMark = !text.empty() && text.front() == QChar::ByteOrderMark;
  const int size = static_cast<int>(text.size());
  if (startsWithMark || static_cast<unsigned>(allBits) > 0xFFFF) {
    if (text.size() > longestText / 2) // Qt makes room for two units each
      throw std::bad_alloc();
    return QString::fromWCharArray(text.data(), size);
  }
  // One unit each: Qt's conversion, some fifty instructions a character, does no more than this.
  QString result(size, Qt::Uninitialized);
  std::transform(text.begin(), text.end(), result.begin(), [](wchar_t unit) { return QChar(unit); });
  return result;
}

std::time_t toSeconds(const QDateTime& date) {
  constexpr qint64 noSeconds = std::numeric_limits<quint32>::max();
  // Converted before it is tested: a local time that a clock change skips is invalid before Qt 6.7, its digits as UTC
  // are not.
  const QDateTime utc = date.toUTC();
  const qint64 seconds = utc.isValid() ? utc.toSecsSinceEpoch() : noSeconds;
  return seconds >= 0 && seconds < noSeconds ? seconds : noSeconds;
}

QDateTime fromSeconds(std::time_t seconds) {
  return QDateTime::fromSecsSinceEpoch(static_cast<quint32>(seconds), inUtc);
}

void lendBytes(const QByteArray& bytes, xsd__base64Binary& block) {
  refuseOversize(bytes);
  block.__ptr = reinterpret_cast<unsigned char*>(const_cast<char*>(bytes.constData())); // requests are only read
  block.__size = static_cast<int>(bytes.size());
}

RequestDescription::RequestDescription(dsns__DesktopInfoClass* record, const MapInfo& info, const QString& name,
                                       MapParts parts)
    : m_record(record), m_id(toGuid(info.mapID())), m_author(toWide(info.mapAuthor())),
      m_description(toWide(info.mapDescription())), m_name(toWide(name)), m_content(info.mapContent()),
      m_thumbnail(info.mapThumbnail()) {
  if (!record)
    return;
  // What may throw comes first: a record that is not reset must not point here.
  if (parts & WithContent) {
    refuseOversize(m_content);
    record->MapContent = ContextObject<xsd__base64Binary>(record->soap).release();
  }
  if (parts & WithThumbnail) {
    refuseOversize(m_thumbnail);
    record->Thumbnail = ContextObject<xsd__base64Binary>(record->soap).release();
  }
  if (record->MapContent)
    lendBytes(m_content, *record->MapContent);
  if (record->Thumbnail)
    lendBytes(m_thumbnail, *record->Thumbnail);
  record->MapId = m_id.data();
  if (parts & WithVersion)
    record->Version = info.version();
  record->Author = &m_author;
  record->Description = &m_description;
  record->IsPublished = info.mapPublished();
  record->LastModified = toSeconds(info.mapModificationDate());
  record->MapName = &m_name;
}

RequestDescription::~RequestDescription() {
  if (!m_record)
    return;
  for (xsd__base64Binary* const block : {m_record->MapContent, m_record->Thumbnail})
    if (block)
      block->soap_default(m_record->soap);
  m_record->soap_default(m_record->soap);
}

} // namespace tarnwell
