// The database of the local service: accounts, maps, update information and reports, in one SQLite file. Used by the
// operations (Handlers.h) and the command line (Administration.h). Knows no SOAP; texts are UTF-8.
// A Store belongs to one thread at a time. Any number of Stores, in any processes, may share a file. Every change is
// one transaction: after a crash the file has the state before it or after it.
#pragma once

#include "localservice/Database.h"
#include "protocol/schema/Enumerations.h"

#include <functional>
#include <optional>
#include <string>

namespace localservice {

/// One map. Null texts and absent bytes were not in the request, or were never stored. The record owns nothing; in a
/// MapVisitor its pointers are valid until the visitor returns.
struct MapRecord {
  const char* id = nullptr; ///< in the form of canonicalIdentifier(); in requests, in any form
  const char* name = nullptr;
  const char* author = nullptr;
  const char* description = nullptr;
  const char* formatType = nullptr;
  const char* formatVersion = nullptr;
  const char* formatHeader = nullptr;
  std::int64_t lastModified = 0; ///< seconds since 1970 UTC, given by the client
  std::int64_t created = 0;      ///< seconds since 1970 UTC, set by the first save
  std::int64_t version = 0;      ///< number of saves
  bool isPublished = false;
  bool allowInclusion = false;
  bool isTwlx = false;
  Bytes thumbnail;
  Bytes preview;
  Bytes backup;
  Bytes content;
};

/// The byte blocks of a map to read; flags.
enum Blocks : unsigned { NoBlocks = 0, Thumbnail = 1, Preview = 2, Backup = 4, Content = 8 };

using MapVisitor = std::function<void(const MapRecord&)>;

/// A crash report, or a message from a user. Absent texts are null.
struct Report {
  std::int64_t number = 0;   ///< given by the store
  std::int64_t received = 0; ///< seconds since 1970 UTC, given by the store
  const char* name = nullptr;
  const char* email = nullptr;
  const char* subject = nullptr;
  const char* message = nullptr;
  const char* fileName = nullptr;
  Bytes attachment;
};

/// The newest setup. Both texts are empty when none was announced.
struct Update {
  std::string version;
  std::string path;
};

/// Every function throws StoreError when the database fails; the file is then unchanged.
/// The first of these that applies is the result of a map operation: None, there is no such map; NoAccess, it belongs
/// to another account; MapRemoved, it was deleted; OngoingCollaboration, it has this mark; FileExists, see saveMap()
/// and renameMap(); Success.
class Store {
public:
  /// Does not connect: the first function that needs a connection does, or open(). `databaseFile` outlives this object.
  explicit Store(const DatabaseFile& databaseFile) : file(databaseFile) {}
  void open() { connection(); }
  /// Closes the connection if the file of this name is now another one: the next function opens that one.
  void followFile();

  /// Adds an account, or changes password and premium flag of an existing one. Throws std::runtime_error for a password
  /// of more than 511 bytes.
  void putAccount(const std::string& name, const std::string& password, bool premium);
  /// Removes an account and its maps. False when there is no such account.
  [[nodiscard]] bool removeAccount(const std::string& name);
  /// Calls `visit` for every account, in the order of their names.
  void listAccounts(const std::function<void(const char* name, bool premium)>& visit);
  /// Returns NotAUser, NotPremiumAccount or Success; for null texts NotAUser. An unknown name takes as long as a wrong
  /// password.
  [[nodiscard]] dsns__DesktopLoginEnumerators login(const char* name, const char* password);

  /// Calls `visit` for each map of `owner` that is not deleted, in the order of their first save.
  void listMaps(const std::string& owner, bool publishedOnly, unsigned blocks, const MapVisitor& visit);
  /// Calls `visit` on Success only.
  [[nodiscard]] dsns__DesktopMapAccess loadMap(const std::string& owner, const std::string& id, unsigned blocks,
                                               const MapVisitor& visit);
  /// Bytes that listMaps() and loadMap() need with these arguments, the visitor's copies included.
  [[nodiscard]] std::uint64_t memoryOfList(const std::string& owner, bool publishedOnly, unsigned blocks);
  [[nodiscard]] std::uint64_t memoryOfMap(const std::string& id, unsigned blocks);
  /// Stores `map` over the map with its identifier or, if that is not known, over the owner's map of the same name; if
  /// there is none, under a new identifier. Without `forced` an existing map gives FileExists. Values that `map` does
  /// not have keep their stored ones. On Success `id` is the stored map's identifier.
  [[nodiscard]] dsns__DesktopMapAccess saveMap(const std::string& owner, const MapRecord& map, bool forced,
                                               std::string& id);
  /// FileExists: the owner has another map of this name. None also for a name that is null or empty.
  [[nodiscard]] dsns__DesktopMapAccess renameMap(const std::string& owner, const std::string& id, const char* name);
  /// Deletes the map's byte blocks. Its record stays, marked as removed.
  [[nodiscard]] dsns__DesktopMapAccess removeMap(const std::string& owner, const std::string& id);

  /// False when there is no such map.
  [[nodiscard]] bool markCollaboration(const std::string& id, bool ongoing);
  /// Calls `visit` for every map of every account. `state`: "stored", "collaboration" or "removed".
  void listAllMaps(const std::function<void(const char* owner, const char* state, const MapRecord&)>& visit);

  /// Replaces the setup that was announced before.
  void announceUpdate(const Update& update);
  [[nodiscard]] Update announcedUpdate();

  /// Ignores `number` and `received` of the argument. Needs no account; therefore a report has at most 8 MiB, and only
  /// the latest 100 reports are kept.
  void addReport(const Report& report);
  void listReports(const std::function<void(const Report&)>& visit);

private:
  [[nodiscard]] dsns__DesktopMapAccess accessTo(const std::string& owner, const std::string& id);
  [[nodiscard]] std::string findByName(const std::string& owner, const char* name);
  Connection& connection();

  const DatabaseFile& file;
  std::optional<Connection> opened;
};

} // namespace localservice
