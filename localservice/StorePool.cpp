#include "localservice/StorePool.h"

#include <utility>

namespace localservice {

namespace {

constexpr std::size_t mostIdle = 16; // each keeps up to 2 MiB of pages in memory

} // namespace

StorePool::Lease StorePool::take() {
  std::unique_ptr<Store> store;
  {
    const std::lock_guard<std::mutex> lock(mutex);
    if (idle.empty()) {
      store = std::make_unique<Store>(file);
    } else {
      store = std::move(idle.back());
      idle.pop_back();
    }
  }
  store->followFile();
  return {store.release(), [this](Store* used) {
            std::unique_ptr<Store> returned(used);
            const std::lock_guard<std::mutex> lock(mutex);
            if (idle.size() < mostIdle)
              idle.push_back(std::move(returned));
          }};
}

} // namespace localservice
