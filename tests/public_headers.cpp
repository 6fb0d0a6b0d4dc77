// What a host does with the public headers, compiled as C++11, 17 and 20 by each compiler that is there.
#include "service/ITarnwellService.h"
#if __cplusplus >= 201703L
#include "service/CallMonitor.h"
#endif

static_assert(sizeof serviceFactoryName > 1, "a constant");

bool lists(ServiceFactory factory, MapInfo& wanted);
bool lists(ServiceFactory factory, MapInfo& wanted) {
  QList<MapInfo> maps;
  const int result = factory()->getDesktopMapsList(false, maps);
  return result == ResultOk && maps.first() == wanted && maps.contains(wanted);
}
