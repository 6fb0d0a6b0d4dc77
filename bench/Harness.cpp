#include "bench/Harness.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QDataStream>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

namespace bench {

namespace {

long long nanoseconds(clockid_t clock) {
  timespec time;
  clock_gettime(clock, &time);
  return time.tv_sec * 1000000000LL + time.tv_nsec;
}

/// Resident memory of this process in KiB: now, and the highest so far.
struct Memory {
  long resident = 0;
  long peak = 0;
};

Memory memory() {
  Memory memory;
  FILE* status = fopen("/proc/self/status", "r");
  char line[256];
  while (status && fgets(line, sizeof line, status)) {
    if (strncmp(line, "VmRSS:", 6) == 0)
      memory.resident = strtol(line + 6, nullptr, 10);
    if (strncmp(line, "VmHWM:", 6) == 0)
      memory.peak = strtol(line + 6, nullptr, 10);
  }
  if (status)
    fclose(status);
  return memory;
}

/// The values of the map that get and save send.
MapInfo sampleMap() {
  MapInfo map;
  map.setMapName(QStringLiteral("Quarterly plan"));
  map.setMapAuthor(QStringLiteral("anna.lind"));
  map.setMapDescription(QStringLiteral("Goals & open points"));
  map.setMapID(QUuid(QStringLiteral("{67c8770b-44f1-410a-ab9a-f9b5446f13ee}")));
  map.setMapModificationDate(QDateTime::fromSecsSinceEpoch(1330837507, Qt::UTC));
  map.setMapPublished(true);
  map.setVersion(3.5F);
  return map;
}

QByteArray sampleThumbnail() {
  QByteArray bytes(8192, 0);
  unsigned state = 12345;
  for (char& byte : bytes) {
    state = state * 1103515245U + 12345U;
    byte = static_cast<char>(state >> 16);
  }
  return bytes;
}

/// One operation's code and the maps that it delivered.
struct Outcome {
  int code = 0;
  QList<MapInfo> maps;
};

Outcome perform(Peer& peer, const std::string& operation, const char* file) {
  Outcome outcome;
  if (operation == "login") {
    outcome.code = peer.login(QStringLiteral("anna"), QStringLiteral("secret"));
    return outcome;
  }
  if (operation == "list") {
    outcome.code = peer.list(outcome.maps);
    return outcome;
  }
  MapInfo map = sampleMap();
  if (operation == "get") {
    outcome.code = peer.get(map);
  } else {
    outcome.code = peer.save(QString::fromLocal8Bit(file), map, sampleThumbnail());
    // The plug-in's save also stores the file's owner and date in the record; the other peers do not.
    map.setMapAuthor(sampleMap().mapAuthor());
    map.setMapModificationDate(sampleMap().mapModificationDate());
  }
  outcome.maps.append(map);
  return outcome;
}

QByteArray digest(const Outcome& outcome) {
  QByteArray bytes;
  QDataStream stream(&bytes, QIODevice::WriteOnly);
  for (const MapInfo& map : outcome.maps) {
    stream << map.mapName() << map.mapAuthor() << map.mapDescription() << map.mapID() << map.mapModificationDate()
           << map.mapThumbnail() << map.mapContent() << map.mapPublished() << map.isTWLX() << map.version();
  }
  return QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex();
}

} // namespace

int run(int argc, char** argv, std::unique_ptr<Peer> (*connect)(const char* endpoint)) {
  const std::string operation = argc > 2 ? argv[2] : "";
  const bool known = operation == "login" || operation == "list" || operation == "get" || operation == "save";
  if (!known || argc != (operation == "save" ? 5 : 4)) {
    fprintf(stderr, "usage: %s ENDPOINT login|list|get|save REPEAT [FILE]\n", argv[0]);
    return 2;
  }
  const std::unique_ptr<Peer> peer = connect(argv[1]);
  const long idle = memory().resident;
  for (int left = atoi(argv[3]); left > 0; --left) {
    const long long wallStart = nanoseconds(CLOCK_MONOTONIC);
    const long long cpuStart = nanoseconds(CLOCK_PROCESS_CPUTIME_ID);
    const Outcome outcome = perform(*peer, operation, argv[argc - 1]);
    const long long cpu = nanoseconds(CLOCK_PROCESS_CPUTIME_ID) - cpuStart;
    const long long wall = nanoseconds(CLOCK_MONOTONIC) - wallStart;
    const Memory used = memory();
    const QByteArray values = getenv("BENCH_DIGEST") ? digest(outcome) : "-";
    printf("cpu_ns=%lld wall_ns=%lld idle_kib=%ld peak_kib=%ld resident_kib=%ld code=%d maps=%d digest=%s\n", cpu, wall,
           idle, used.peak, used.resident, outcome.code, outcome.maps.size(), values.constData());
    if (outcome.code)
      return 1;
  }
  return 0;
}

} // namespace bench
