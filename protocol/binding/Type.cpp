#include "protocol/binding/Type.h"

#include "protocol/runtime/RuntimeInternals.h"

namespace tarnwell {

const Type* findTypeNamed(struct soap* soap, const char* name, const char* element) {
  for (int number = 1; const Type* const type = findType(number); ++number)
    if (soap_match_tag(soap, type->message ? element : name, type->name) == SOAP_OK)
      return type;
  return nullptr;
}

void* instantiate(struct soap* soap, int count, const Type& type, std::size_t* size) {
  constexpr auto destroy = [](void* made, int number, bool isArray) { typeOf(number).destroy(made, isArray); };
  void* const object = own<destroy>(soap, type.create(soap, count), type.number, count);
  if (object && size)
    *size = type.size * (count < 0 ? 1 : static_cast<std::size_t>(count));
  return object;
}

void resolve(struct soap*, int sourceType, int targetType, void* to, std::size_t, const void* from, void**) {
  if (sourceType == targetType && to != from)
    typeOf(targetType).copy(to, from);
}

void resolveValue(struct soap* soap, int sourceType, int targetType, void* to, std::size_t index, const void* from,
                  void** shared) {
  resolve(soap, sourceType, targetType, to, index, *static_cast<void* const*>(from), shared);
}

} // namespace tarnwell
