// Every conversion between the host's values and the protocol's, and the description of a map that requests carry,
// with the owners of all that a request points to. Used by TarnwellService alone; any thread.
#pragma once

#include "client/ContextObject.h"
#include "service/MapInfo.h"

#include <ctime>
#include <string>
#include <string_view>

namespace tarnwell {

/// One unit per code point, an unpaired surrogate as U+FFFD; null as empty text. Throws std::bad_alloc, also for more
/// text than a QString of Qt 5 holds.
std::wstring toWide(const QString& text);
/// As QString::fromStdWString. Throws std::bad_alloc, also for more text than a QString of Qt 5 holds.
QString fromWide(std::wstring_view text);
/// Absent (null) as null.
inline QString fromWide(const std::wstring* text) { return text ? fromWide(std::wstring_view(*text)) : QString(); }

/// The only form that is sent: 38 characters, in braces, lower case; a null identifier is all zeros.
inline QByteArray toGuid(const QUuid& id) { return id.toByteArray(); }
/// With or without braces, any case; absent (null) or any other text as the null identifier.
inline QUuid fromGuid(const char* text) { return QUuid::fromString(QLatin1String(text)); }

/// Seconds since 1970 UTC, below 2^32 - 1; as QDateTime::toTime_t, that number itself for every date without such a
/// count: null, invalid, earlier, later.
std::time_t toSeconds(const QDateTime& date);
/// A UTC date-time, by the low 32 bits alone, without sign, as QDateTime::fromTime_t takes them: -1 is
/// 2106-02-07T06:28:15.
QDateTime fromSeconds(std::time_t seconds);

/// Lets `block`, of a request, point to the bytes. Requires: `bytes` outlives the use of `block`. Throws std::bad_alloc
/// for more than a block holds.
void lendBytes(const QByteArray& bytes, xsd__base64Binary& block);

/// The parts of a map that only some requests send. All of them send identifier, texts, published flag and
/// modification date.
enum MapParts : unsigned {
  WithVersion = 1,
  WithContent = 2,
  WithThumbnail = 4,

  IdentifyingParts = 0, ///< of delete and rename
  DownloadParts = WithVersion | WithThumbnail,
  UploadParts = WithVersion | WithContent | WithThumbnail,
};

/// Fills a request's record for the length of a scope and owns all that the record then points to, except the objects
/// of its blocks, which stay in the context, empty. Afterwards the record is at its defaults again.
class RequestDescription {
public:
  /// Requires: `record` outlives this; null (no context) is left alone. `name` takes the place of the name in `info`.
  /// Members that `parts` does not cover keep their defaults, also the format flag. Throws std::bad_alloc.
  RequestDescription(dsns__DesktopInfoClass* record, const MapInfo& info, const QString& name, MapParts parts);
  RequestDescription(const RequestDescription&) = delete;
  RequestDescription& operator=(const RequestDescription&) = delete;
  ~RequestDescription();

private:
  dsns__DesktopInfoClass* m_record;
  QByteArray m_id;
  std::wstring m_author;
  std::wstring m_description;
  std::wstring m_name;
  QByteArray m_content; ///< like the thumbnail the host's, implicitly shared
  QByteArray m_thumbnail;
};

} // namespace tarnwell
