// What the local service remembers: accounts, maps, update information and reports, in one SQLite file. Used by the
// operations (Handlers.h) and by the command line. Knows no SOAP; texts are UTF-8.
// A Store belongs to one thread at a time. Any number of them, in any processes, may share a file. Every change is one
// transaction: after a crash the file holds the state before it or after it.
#pragma once

#include "localservice/Database.h"
#include "protocol/schema/Enumerations.h"

#include <functional>
#include <optional>
#include <string>

namespace localservice {

/// One map. A null text and absent bytes stand for what a request left out or was never stored. Everything pointed to
/// belongs to somebody else; in a MapVisitor it is valid until that returns.
struct MapRecord {
  const char* id = nullptr; ///< as canonicalIdentifier() gives it; from requests any form
  const char* name = nullptr;
  const char* author = nullptr;
  const char* description = nullptr;
  const char* formatType = nullptr;
  const char* formatVersion = nullptr;
  const char* formatHeader = nullptr;
  std::int64_t lastModified = 0; ///< seconds since 1970 UTC, as the client says
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

/// Which of a map's byte blocks are read; flags.
enum Blocks : unsigned { NoBlocks = 0, Thumbnail = 1, Preview = 2, Backup = 4, Content = 8 };

using MapVisitor = std::function<void(const MapRecord&)>;

/// What a user or a crashed program sent. Absent texts are null.
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

/// The newest set-up; both texts empty when none was announced.
struct Update {
  std::string version;
  std::string path;
};

/// Every function throws StoreError when the database does not do it; nothing has changed then.
/// A map operation gives, checked in this order: None, there is no such map; NoAccess, it belongs to another account;
/// MapRemoved, it was deleted; OngoingCollaboration, it is marked as such; FileExists, where said; else Success.
class Store {
public:
  /// The file is opened by the first function that needs it, or by open().
  Store(std::string databaseFile, Access databaseAccess);
  void open() { database(); }

  /// Adds an account, or gives an existing one this password and standing.
  void putAccount(const std::string& name, const std::string& password, bool premium);
  /// Removes an account and its maps. False when there is no such account.
  [[nodiscard]] bool removeAccount(const std::string& name);
  /// Every account, by name.
  void listAccounts(const std::function<void(const char* name, bool premium)>& visit);
  /// NotAUser, NotPremiumAccount or Success. Null texts belong to no account. An unknown name takes as long as a wrong
  /// password.
  [[nodiscard]] dsns__DesktopLoginEnumerators login(const char* name, const char* password);

  /// The maps of `owner` in the order of their first save, those that were deleted excepted.
  void listMaps(const std::string& owner, bool publishedOnly, unsigned blocks, const MapVisitor& visit);
  /// Calls `visit` on Success only.
  [[nodiscard]] dsns__DesktopMapAccess loadMap(const std::string& owner, const std::string& id, unsigned blocks,
                                               const MapVisitor& visit);
  /// Stores `map` under its identifier; under a fresh one when it has none or one that is not known, unless the owner
  /// has a map of that name: then that one is meant. What `map` leaves out stays as stored. A map that exists gives
  /// FileExists unless `forced`. On Success `id` is where it went.
  [[nodiscard]] dsns__DesktopMapAccess saveMap(const std::string& owner, const MapRecord& map, bool forced,
                                               std::string& id);
  /// FileExists when the owner has another map of that name; None also for a name that is null or empty.
  [[nodiscard]] dsns__DesktopMapAccess renameMap(const std::string& owner, const std::string& id, const char* name);
  /// The map's bytes are gone, its identifier is remembered.
  [[nodiscard]] dsns__DesktopMapAccess removeMap(const std::string& owner, const std::string& id);

  /// False when there is no such map.
  [[nodiscard]] bool markCollaboration(const std::string& id, bool ongoing);
  /// Every map of every account, with its owner and "stored", "collaboration" or "removed".
  void describeMaps(const std::function<void(const char* owner, const char* state, const MapRecord&)>& visit);

  void putUpdate(const Update& update);
  [[nodiscard]] Update update();

  /// `number` and `received` of the argument are not looked at. Anybody may report, so a report may have 8 MiB, and the
  /// latest 100 are kept.
  void addReport(const Report& report);
  void listReports(const std::function<void(const Report&)>& visit);

private:
  [[nodiscard]] dsns__DesktopMapAccess accessTo(const std::string& owner, const std::string& id);
  [[nodiscard]] std::string findByName(const std::string& owner, const char* name);
  SQLite::Database& database();

  const std::string file;
  const Access mode;
  std::optional<SQLite::Database> opened;
};

} // namespace localservice
