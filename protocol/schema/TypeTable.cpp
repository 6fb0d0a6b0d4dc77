#include "protocol/binding/Codecs.h"
#include "protocol/schema/Messages.h"
#include "protocol/schema/SchemaFunctions.h"
#include "protocol/soap/Envelope.h"

#include <array>
#include <new>

namespace tarnwell {
namespace {

constexpr Enumerator loginNames[] = {
    {"NotAUser", dsns__DesktopLoginEnumerators__NotAUser},
    {"NotPremiumAccount", dsns__DesktopLoginEnumerators__NotPremiumAccount},
    {"Success", dsns__DesktopLoginEnumerators__Success},
    {"DbError", dsns__DesktopLoginEnumerators__DbError},
    {"None", dsns__DesktopLoginEnumerators__None},
};

constexpr Enumerator mapAccessNames[] = {
    {"DbError", dsns__DesktopMapAccess__DbError},
    {"FileExists", dsns__DesktopMapAccess__FileExists},
    {"Success", dsns__DesktopMapAccess__Success},
    {"None", dsns__DesktopMapAccess__None},
    {"NoAccess", dsns__DesktopMapAccess__NoAccess},
    {"OngoingCollaboration", dsns__DesktopMapAccess__OngoingCollaboration},
    {"MapRemoved", dsns__DesktopMapAccess__MapRemoved},
};

template <class T, class = void> constexpr bool hasContext = false;
template <class T> constexpr bool hasContext<T, std::void_t<decltype(T::soap)>> = true;

template <class T, class = void> constexpr bool hasRows = false;
template <class T> constexpr bool hasRows<T, std::void_t<decltype(T::rows())>> = true;

/// The rows of a record as static data.
template <class T> constexpr auto rowsOf = T::rows();

/// A type held as `T`. `accepts`, of a simple type: local parts that its xsi:type may have besides its own name.
template <class T>
constexpr Type describe(int number, const char* name, const Codec& codec, const char* accepts = nullptr) {
  Type type{};
  type.number = number;
  type.name = name;
  type.codec = &codec;
  type.accepts = accepts;
  type.size = sizeof(T);
  type.setDefault = [](struct soap* soap, void* value) {
    *static_cast<T*>(value) = T();
    if constexpr (hasContext<T>)
      static_cast<T*>(value)->soap = soap;
  };
  type.copy = [](void* to, const void* from) { *static_cast<T*>(to) = *static_cast<const T*>(from); };
  type.create = [](struct soap* soap, int count) -> void* {
    T* const made = count < 0 ? new (std::nothrow) T() : new (std::nothrow) T[static_cast<std::size_t>(count)]();
    if constexpr (hasContext<T>)
      for (int i = 0; made && i < (count < 0 ? 1 : count); ++i)
        made[i].soap = soap;
    return made;
  };
  type.destroy = [](void* value, bool array) {
    if (array)
      delete[] static_cast<T*>(value);
    else
      delete static_cast<T*>(value);
  };
  if constexpr (hasRows<T>) {
    type.rows = rowsOf<T>.data();
    type.rowCount = rowsOf<T>.size();
    static_assert(rowsOf<T>.size() <= sizeof(long) * 8, "the reader marks rows in one word");
  }
  return type;
}

template <class T, std::size_t count>
constexpr Type enumeration(int number, const char* name, const Enumerator (&names)[count]) {
  Type type = describe<T>(number, name, enumerationCodec, "");
  type.names = names;
  type.nameCount = count;
  return type;
}

template <class T> constexpr Type record(const char* name, const Codec& codec = recordCodec) {
  return describe<T>(T::number, name, codec);
}

template <class T> constexpr Type message(const char* element) {
  Type type = record<T>(element);
  type.message = true;
  return type;
}

/// The type table, by number.
constexpr Type types[] = {
    {},
    describe<char>(SOAP_TYPE_xsd__byte, "xsd:byte", byteCodec, ":byte:"),
    describe<unsigned char>(SOAP_TYPE_xsd__unsignedByte, "xsd:unsignedByte", unsignedByteCodec, ":unsignedByte:"),
    describe<int>(SOAP_TYPE_xsd__int, "xsd:int", intCodec, ":int:short:byte:"),
    describe<unsigned>(SOAP_TYPE_xsd__unsignedInt, "xsd:unsignedInt", unsignedIntCodec,
                       ":unsignedInt:unsignedShort:unsignedByte:"),
    describe<float>(SOAP_TYPE_xsd__float, "xsd:float", floatCodec,
                    ":float:double:decimal:integer:positiveInteger:negativeInteger:nonPositiveInteger:nonNegativeInteger:"
                    "long:int:short:byte:unsignedLong:unsignedInt:unsignedShort:unsignedByte:"),
    describe<bool>(SOAP_TYPE_xsd__boolean, "xsd:boolean", booleanCodec, ":boolean:"),
    describe<std::time_t>(SOAP_TYPE_xsd__dateTime, "xsd:dateTime", dateTimeCodec, ":dateTime:"),
    describe<std::wstring>(SOAP_TYPE_xsd__string, "xsd:string", wideTextCodec),
    describe<char*>(SOAP_TYPE_xsd__QName, "xsd:QName", qualifiedNameCodec),
    describe<char*>(SOAP_TYPE_string, "xsd:string", charactersCodec),
    describe<xsd__base64Binary>(SOAP_TYPE_xsd__base64Binary, "xsd:base64Binary", blockCodec, ":base64Binary:base64:"),
    record<SOAP_ENV__Header>("SOAP-ENV:Header", headerCodec),
    record<SOAP_ENV__Code>("SOAP-ENV:Code"),
    record<SOAP_ENV__Reason>("SOAP-ENV:Reason", reasonCodec),
    record<SOAP_ENV__Detail>("SOAP-ENV:Detail", detailCodec),
    record<SOAP_ENV__Fault>("SOAP-ENV:Fault"),
    describe<char*>(SOAP_TYPE_dsns2__guid, "dsns2:guid", charactersCodec),
    enumeration<dsns__DesktopLoginEnumerators>(SOAP_TYPE_dsns__DesktopLoginEnumerators, "dsns:DesktopLoginEnumerators",
                                               loginNames),
    enumeration<dsns__DesktopMapAccess>(SOAP_TYPE_dsns__DesktopMapAccess, "dsns:DesktopMapAccess", mapAccessNames),
    record<dsns__DesktopLoginResponseClass>("dsns:DesktopLoginResponseClass"),
    record<dsns__DesktopInfoClass>("dsns:DesktopInfoClass"),
    record<dsns__ArrayOfDesktopInfoClass>("dsns:ArrayOfDesktopInfoClass"),
    record<dsns__CompleteDesktopResponse>("dsns:CompleteDesktopResponse"),
    record<dsns__GetMapResponse>("dsns:GetMapResponse"),
    record<dsns__MapActionResponse>("dsns:MapActionResponse"),
    record<dsns__DesktopVersioningClass>("dsns:DesktopVersioningClass"),
#define TARNWELL_OPERATION(Name, Wire, Shape, Result)                                                                  \
  message<_dsns__##Name>("dsns:" Wire), message<_dsns__##Name##Response>("dsns:" Wire "Response"),
#include "protocol/schema/Operations.inc"
#undef TARNWELL_OPERATION
};

constexpr bool everyTypeInItsPlace() {
  for (int i = 1; i < SOAP_TYPE_count; ++i)
    if (types[i].number != i)
      return false;
  return sizeof types / sizeof *types == SOAP_TYPE_count;
}
static_assert(everyTypeInItsPlace(), "a type's number is its place in the table");

int deleteValue(struct soap*, soap_clist* entry) {
  types[entry->type].destroy(entry->ptr, entry->size >= 0);
  return SOAP_OK;
}

} // namespace

const Type* findType(int number) noexcept { return number > 0 && number < SOAP_TYPE_count ? &types[number] : nullptr; }

const Type& typeOf(int number) noexcept { return types[number]; }

const Type* findTypeNamed(struct soap* soap, const char* name, const char* element) {
  for (int i = 1; i < SOAP_TYPE_count; ++i)
    if (soap_match_tag(soap, types[i].message ? element : name, types[i].name) == SOAP_OK)
      return &types[i];
  return nullptr;
}

void* instantiate(struct soap* soap, int count, const Type& type, std::size_t* size) {
  soap_clist* const entry = soap_link(soap, type.number, count, deleteValue);
  if (!entry)
    return nullptr;
  entry->ptr = type.create(soap, count);
  if (!entry->ptr) {
    soap->error = SOAP_EOM;
    return nullptr;
  }
  if (size)
    *size = type.size * (count < 0 ? 1 : static_cast<std::size_t>(count));
  return entry->ptr;
}

void resolve(struct soap*, int sourceType, int targetType, void* to, std::size_t, const void* from, void**) {
  if (sourceType == targetType && to != from)
    types[targetType].copy(to, from);
}

} // namespace tarnwell

const char* soap_dsns__DesktopLoginEnumerators2s(struct soap* soap, dsns__DesktopLoginEnumerators value) {
  return tarnwell::enumerationText(soap, tarnwell::typeOf(SOAP_TYPE_dsns__DesktopLoginEnumerators), value);
}

const char* soap_dsns__DesktopMapAccess2s(struct soap* soap, dsns__DesktopMapAccess value) {
  return tarnwell::enumerationText(soap, tarnwell::typeOf(SOAP_TYPE_dsns__DesktopMapAccess), value);
}

int soap_s2dsns__DesktopLoginEnumerators(struct soap* soap, const char* text, dsns__DesktopLoginEnumerators* value) {
  return tarnwell::enumerationValue(soap, tarnwell::typeOf(SOAP_TYPE_dsns__DesktopLoginEnumerators), text, value);
}

int soap_s2dsns__DesktopMapAccess(struct soap* soap, const char* text, dsns__DesktopMapAccess* value) {
  return tarnwell::enumerationValue(soap, tarnwell::typeOf(SOAP_TYPE_dsns__DesktopMapAccess), text, value);
}
