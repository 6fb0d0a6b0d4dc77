#include "service/Conversions.h"

#include "protocol/Block.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

namespace tarnwell {
namespace {

static_assert(sizeof(wchar_t) == 4, "the protocol's texts hold one code point per unit");

/// A big block in a byte array.
class ArrayBlock : public BigBlock {
public:
  unsigned char* resize(std::size_t size) noexcept override try {
    if (size > static_cast<std::size_t>(std::numeric_limits<int>::max()))
      return nullptr;
    const bool shrinks = static_cast<int>(size) < bytes.size();
    bytes.resize(static_cast<int>(size));
    if (shrinks) // by what the answer claimed to have: not for the host to keep
      bytes.squeeze();
    return reinterpret_cast<unsigned char*>(bytes.data());
  } catch (const std::bad_alloc&) {
    return nullptr;
  }

  QByteArray bytes;
};

std::unique_ptr<BigBlock> makeArrayBlock() noexcept { return std::unique_ptr<BigBlock>(new (std::nothrow) ArrayBlock); }

} // namespace

QString fromWide(const std::wstring* text) {
  if (!text)
    return QString();
  wchar_t allBits = 0;
  for (const wchar_t unit : *text)
    allBits |= unit;
  const bool startsWithMark = !text->empty() && text->front() == QChar::ByteOrderMark;
  if (startsWithMark || static_cast<unsigned>(allBits) > 0xFFFF)
    return QString::fromStdWString(*text);
  // One unit each: Qt's conversion, some fifty instructions a character, does no more than this.
  QString result(static_cast<int>(text->size()), Qt::Uninitialized);
  std::transform(text->begin(), text->end(), result.begin(), [](wchar_t unit) { return QChar(unit); });
  return result;
}

std::time_t toSeconds(const QDateTime& date) {
  constexpr qint64 noSeconds = std::numeric_limits<quint32>::max();
  // Converted before it is tested: a local time that a clock change skips is invalid, its digits as UTC are not.
  const QDateTime utc = date.toTimeSpec(Qt::UTC);
  const qint64 seconds = utc.isValid() ? utc.toSecsSinceEpoch() : noSeconds;
  return seconds >= 0 && seconds < noSeconds ? seconds : noSeconds;
}

QDateTime fromSeconds(std::time_t seconds) {
  return QDateTime::fromSecsSinceEpoch(static_cast<quint32>(seconds), Qt::UTC);
}

void readIntoArrays(struct soap* soap) { setBigBlocks(soap, makeArrayBlock); }

QByteArray fromBlock(const xsd__base64Binary& block) {
  const auto* const bytes = reinterpret_cast<const char*>(block.__ptr);
  if (const auto* const big = dynamic_cast<const ArrayBlock*>(lastBigBlock(block.soap)))
    if (big->bytes.constData() == bytes)
      return big->bytes;
  return bytes ? QByteArray(bytes, block.__size) : QByteArray(); // also of a size that says otherwise
}

void lendBytes(const QByteArray& bytes, xsd__base64Binary& block) {
  block.__ptr = reinterpret_cast<unsigned char*>(const_cast<char*>(bytes.constData())); // requests are only read
  block.__size = bytes.size();
}

RequestDescription::RequestDescription(dsns__DesktopInfoClass* record, const MapInfo& info, const QString& name,
                                       MapParts parts)
    : m_record(record), m_id(toGuid(info.mapID())), m_author(toWide(info.mapAuthor())),
      m_description(toWide(info.mapDescription())), m_name(toWide(name)), m_content(info.mapContent()),
      m_thumbnail(info.mapThumbnail()) {
  if (!record)
    return;
  // What may throw comes first: a record that is not reset must not point here.
  if (parts & WithContent)
    record->MapContent = ContextObject<xsd__base64Binary>(record->soap).release();
  if (parts & WithThumbnail)
    record->Thumbnail = ContextObject<xsd__base64Binary>(record->soap).release();
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
