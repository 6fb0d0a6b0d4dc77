// Stores whose connections stay open between requests: opening a connection costs more than most operations. Used by
// RequestHandler. Any thread.
#pragma once

#include "localservice/Store.h"

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace localservice {

/// Stores that are in use, and a few that are not.
class StorePool {
public:
  /// `databaseFile` outlives this object.
  explicit StorePool(const DatabaseFile& databaseFile) : file(databaseFile) {}

  /// A store for one thread; it goes back to the pool at its end.
  using Lease = std::unique_ptr<Store, std::function<void(Store*)>>;
  [[nodiscard]] Lease take();

private:
  const DatabaseFile& file;
  std::mutex mutex;
  std::vector<std::unique_ptr<Store>> idle;
};

} // namespace localservice
