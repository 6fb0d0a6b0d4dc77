// The record of one map that host and library exchange. Header-only: the host compiles it and links nothing of
// the library. A plain value: copies are independent, Qt's containers share their bytes until written to.
// Use one record from one thread at a time.
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QDateTime>
#include <QtCore/QString>
#include <QtCore/QUuid>

#include <utility>

/// One cloud map: identity, description, preview image, content and format flags. No setter validates.
/// The layout (one virtual slot pair, then the members in this order) is part of the plug-in's contract.
class MapInfo {
public:
  /// A record of no map: empty texts and bytes, null identifier, invalid date.
  MapInfo() = default;
  /// Copies share their bytes until one is written to.
  MapInfo(const MapInfo&) = default;
  /// The same.
  MapInfo& operator=(const MapInfo&) = default;
  /// Virtual, so that a host may delete a record that the library appended to its list.
  virtual ~MapInfo() = default;

  /// Whether both records mean the same map: compares the identifier, by which the service finds a map, and nothing
  /// else, so two records that were never filled are equal. Not const, because hosts were built against it.
#if QT_VERSION_MAJOR < 6
  bool operator==(const MapInfo& other) { return m_mapID == other.m_mapID; }
  /// The same: without it, C++20 warns that the comparison of two records that are not const is ambiguous.
  bool operator==(MapInfo& other) { return m_mapID == other.m_mapID; }
#else // whose lists compare records that are const
  bool operator==(const MapInfo& other) const { return m_mapID == other.m_mapID; }
#endif

  ///@{
  /// Display name.
  void setMapName(QString name) { m_mapName = std::move(name); }
  QString mapName() const { return m_mapName; }
  ///@}

  ///@{
  /// Identity on the service; null for a map that was never stored.
  void setMapID(QUuid id) { m_mapID = id; }
  QUuid mapID() const { return m_mapID; }
  ///@}

  ///@{
  /// Name of the author; of a map that was uploaded, the owner of its file.
  void setMapAuthor(QString author) { m_mapAuthor = std::move(author); }
  QString mapAuthor() const { return m_mapAuthor; }
  ///@}

  ///@{
  /// Last modification; records filled by the library hold a UTC date-time.
  void setMapModificationDate(QDateTime date) { m_mapModificationDate = std::move(date); }
  QDateTime mapModificationDate() const { return m_mapModificationDate; }
  ///@}

  ///@{
  /// Text for people about the content.
  void setMapDescription(QString description) { m_mapDescription = std::move(description); }
  QString mapDescription() const { return m_mapDescription; }
  ///@}

  ///@{
  /// Preview image, raw bytes (not base64).
  void setMapThumbnail(QByteArray thumbnail) { m_mapThumbnail = std::move(thumbnail); }
  QByteArray mapThumbnail() const { return m_mapThumbnail; }
  ///@}

  ///@{
  /// Whether others may see the map.
  void setMapPublished(bool published) { m_mapPublished = published; }
  bool mapPublished() const { return m_mapPublished; }
  ///@}

  ///@{
  /// The map document, raw bytes.
  void setMapContent(QByteArray content) { m_mapContent = std::move(content); }
  QByteArray mapContent() const { return m_mapContent; }
  ///@}

  ///@{
  /// Format version of the content; -1 while it is not known, which no real map has.
  void setVersion(float version) { m_version = version; }
  float version() const { return m_version; }
  ///@}

  ///@{
  /// Whether the content is in the TWLX map format.
  void setIsTWLX(bool isTWLX) { m_isTWLX = isTWLX; }
  bool isTWLX() const { return m_isTWLX; }
  ///@}

private:
  QString m_mapName;
  QUuid m_mapID;
  QString m_mapAuthor;
  QDateTime m_mapModificationDate;
  QString m_mapDescription;
  QByteArray m_mapThumbnail;
  bool m_mapPublished = false;
  QByteArray m_mapContent;
  float m_version = -1.0F;
  bool m_isTWLX = false;
};
