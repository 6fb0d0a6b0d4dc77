// The host's side of a test: a service of the library that talks to a scripted one, and records to compare.
#pragma once

#include "service/TarnwellService.h"
#include "tests/Messages.h"
#include "tests/ScriptedService.h"
#include "tests/Table.h"
#include "tests/Xml.h"

#include <gtest/gtest.h>

inline std::string text(const QString& value) {
  return value.isNull() ? "-" : value.isEmpty() ? "''" : value.toStdString();
}
inline std::string hex(const QByteArray& bytes) { return bytes.isEmpty() ? "-" : bytes.toHex().toStdString(); }
/// The members of a record in their order; "-" for nothing.
inline std::string show(const MapInfo& info) {
  return text(info.mapName()) + " " + (info.mapID().isNull() ? "-" : text(info.mapID().toString())) + " " +
         text(info.mapAuthor()) + " " + text(info.mapModificationDate().toString(Qt::ISODate)) + " " +
         text(info.mapDescription()) + " " + hex(info.mapThumbnail()) +
         (info.mapPublished() ? " published " : " private ") + hex(info.mapContent()) + " " +
         text(QString::number(info.version())) + (info.isTWLX() ? " twlx" : "");
}

const std::string knownId = "{67c8770b-44f1-410a-ab9a-f9b5446f13ee}";
/// A record with a value in every member.
inline MapInfo known() {
  MapInfo info;
  info.setMapName("plan");
  info.setMapID(QUuid(QString::fromStdString(knownId)));
  info.setMapAuthor("Ann");
  info.setMapModificationDate(QDateTime::fromSecsSinceEpoch(1330837567, Qt::OffsetFromUTC, 7200));
  info.setMapDescription("about");
  info.setMapThumbnail(QByteArray("T\0x", 3));
  info.setMapPublished(true);
  info.setMapContent("content");
  info.setVersion(1.5F);
  info.setIsTWLX(true);
  return info;
}

/// A service of the library and the scripted one that it talks to.
class ServiceUnderTest {
public:
  explicit ServiceUnderTest(const std::vector<Reply>& replies) : server(replies) {
    service.setEndPoint(QString::fromStdString(server.url()));
  }
  ServiceUnderTest(const std::string& operation, const std::string& result)
      : ServiceUnderTest({reply(200, message::answer(operation, result))}) {}
  void expectRequest(const std::string& body) const {
    EXPECT_EQ(canonical(message::request(body)), canonical(server.request().body));
  }
  ScriptedService server;
  TarnwellService service;
};
