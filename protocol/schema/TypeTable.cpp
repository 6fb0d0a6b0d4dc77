#include "protocol/binding/Describe.h"
#include "protocol/schema/Envelope.h"
#include "protocol/schema/Messages.h"

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

/// The type table, by number.
constexpr Type types[] = {
    {},
    describe<char>(SOAP_TYPE_xsd__byte, "xsd:byte", byteCodec, ":byte:"),
    describe<unsigned char>(SOAP_TYPE_xsd__unsignedByte, "xsd:unsignedByte", unsignedByteCodec, ":unsignedByte:"),
    describe<int>(SOAP_TYPE_xsd__int, "xsd:int", intCodec, ":int:short:byte:"),
    describe<unsigned>(SOAP_TYPE_xsd__unsignedInt, "xsd:unsignedInt", unsignedIntCodec,
                       ":unsignedInt:unsignedShort:unsignedByte:"),
    describe<float>(
        SOAP_TYPE_xsd__float, "xsd:float", floatCodec,
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

} // namespace

const Type* findType(int number) noexcept { return number > 0 && number < SOAP_TYPE_count ? &types[number] : nullptr; }

const Type& typeOf(int number) noexcept { return types[number]; }

} // namespace tarnwell
