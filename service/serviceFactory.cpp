#include "service/ITarnwellService.h"

#include "service/TarnwellService.h"

__attribute__((visibility("default"))) ITarnwellService* serviceFactory() { return new TarnwellService; }
