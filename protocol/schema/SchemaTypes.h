// The schema's types as they stand in memory. Members in wire order, the owning context last; which of them are
// optional follows from their types: a pointer may be absent, a value and the guid are always written.
// Objects and strings that the reader builds belong to the context. Beside the members stand their rows, one per
// element.
#pragma once

#include "protocol/binding/Block.h"
#include "protocol/binding/SchemaObject.h"
#include "protocol/schema/Enumerations.h"
#include "protocol/schema/TypeNumbers.h"

#include <array>
#include <ctime>
#include <string>
#include <vector>

/// NUL-terminated text of a map identifier, its form not tested.
using dsns2__guid = char*;

namespace tarnwell {
template <> inline constexpr int typeNumber<dsns__DesktopLoginEnumerators> = SOAP_TYPE_dsns__DesktopLoginEnumerators;
template <> inline constexpr int typeNumber<dsns__DesktopMapAccess> = SOAP_TYPE_dsns__DesktopMapAccess;
} // namespace tarnwell

/// "dsns:DesktopLoginResponseClass"
class dsns__DesktopLoginResponseClass
    : public tarnwell::SchemaClass<dsns__DesktopLoginResponseClass, SOAP_TYPE_dsns__DesktopLoginResponseClass> {
public:
  dsns__DesktopLoginEnumerators DesktopLoginValue = dsns__DesktopLoginEnumerators__NotAUser;
  struct soap* soap = nullptr;

  static constexpr auto rows() { return std::array{row<&Self::DesktopLoginValue>("dsns:DesktopLoginValue")}; }
};

/// "dsns:DesktopInfoClass": one map with its metadata and, depending on the operation, its content.
class dsns__DesktopInfoClass : public tarnwell::SchemaClass<dsns__DesktopInfoClass, SOAP_TYPE_dsns__DesktopInfoClass> {
public:
  xsd__string* MapName = nullptr;
  dsns2__guid MapId = nullptr;
  xsd__string* Author = nullptr;
  xsd__dateTime LastModified = 0;
  xsd__dateTime Created = 0;
  xsd__string* Description = nullptr;
  xsd__base64Binary* Thumbnail = nullptr;
  bool IsPublished = false;
  xsd__base64Binary* MapContent = nullptr;
  bool AllowInclusion = false;
  float Version = 0;
  xsd__base64Binary* Preview = nullptr;
  xsd__base64Binary* OldTwlxBackUp = nullptr;
  bool Format_IsTwlx = false;
  xsd__string* Format_Type = nullptr;
  xsd__string* Format_Version = nullptr;
  xsd__string* Format_Header = nullptr;
  struct soap* soap = nullptr;

  static constexpr auto rows() {
    return std::array{row<&Self::MapName>("dsns:MapName"),
                      row<&Self::MapId>("dsns:MapId", SOAP_TYPE_dsns2__guid, tarnwell::Occurs::RequiredNillable),
                      row<&Self::Author>("dsns:Author"),
                      row<&Self::LastModified>("dsns:LastModified"),
                      row<&Self::Created>("dsns:Created"),
                      row<&Self::Description>("dsns:Description"),
                      row<&Self::Thumbnail>("dsns:Thumbnail"),
                      row<&Self::IsPublished>("dsns:IsPublished"),
                      row<&Self::MapContent>("dsns:MapContent"),
                      row<&Self::AllowInclusion>("dsns:AllowInclusion"),
                      row<&Self::Version>("dsns:Version"),
                      row<&Self::Preview>("dsns:Preview"),
                      row<&Self::OldTwlxBackUp>("dsns:OldTwlxBackUp"),
                      row<&Self::Format_IsTwlx>("dsns:Format_IsTwlx"),
                      row<&Self::Format_Type>("dsns:Format_Type"),
                      row<&Self::Format_Version>("dsns:Format_Version"),
                      row<&Self::Format_Header>("dsns:Format_Header")};
  }
};

/// "dsns:ArrayOfDesktopInfoClass"; a null entry is not written and stands for a nil one read.
class dsns__ArrayOfDesktopInfoClass
    : public tarnwell::SchemaClass<dsns__ArrayOfDesktopInfoClass, SOAP_TYPE_dsns__ArrayOfDesktopInfoClass> {
public:
  std::vector<dsns__DesktopInfoClass*> DesktopInfoClass;
  struct soap* soap = nullptr;

  static constexpr auto rows() { return std::array{row<&Self::DesktopInfoClass>("dsns:DesktopInfoClass")}; }
};

/// "dsns:CompleteDesktopResponse": the result of the list operations.
class dsns__CompleteDesktopResponse
    : public tarnwell::SchemaClass<dsns__CompleteDesktopResponse, SOAP_TYPE_dsns__CompleteDesktopResponse> {
public:
  dsns__ArrayOfDesktopInfoClass* DesktopInfoObjectList = nullptr;
  dsns__DesktopLoginResponseClass* DesktopLoginResponseObject = nullptr;
  struct soap* soap = nullptr;

  static constexpr auto rows() {
    return std::array{row<&Self::DesktopInfoObjectList>("dsns:DesktopInfoObjectList"),
                      row<&Self::DesktopLoginResponseObject>("dsns:DesktopLoginResponseObject")};
  }
};

/// "dsns:GetMapResponse": the result of the content operations.
class dsns__GetMapResponse : public tarnwell::SchemaClass<dsns__GetMapResponse, SOAP_TYPE_dsns__GetMapResponse> {
public:
  dsns__DesktopMapAccess DesktopMapAccess = dsns__DesktopMapAccess__DbError;
  dsns__DesktopLoginResponseClass* DesktopLoginResponseObject = nullptr;
  dsns__DesktopInfoClass* DesktopInfo = nullptr;
  struct soap* soap = nullptr;

  static constexpr auto rows() {
    return std::array{row<&Self::DesktopMapAccess>("dsns:DesktopMapAccess"),
                      row<&Self::DesktopLoginResponseObject>("dsns:DesktopLoginResponseObject"),
                      row<&Self::DesktopInfo>("dsns:DesktopInfo")};
  }
};

/// "dsns:MapActionResponse": the result of save, rename, delete and feedback. The service names its map
/// otherwise than that of dsns__GetMapResponse.
class dsns__MapActionResponse
    : public tarnwell::SchemaClass<dsns__MapActionResponse, SOAP_TYPE_dsns__MapActionResponse> {
public:
  dsns__DesktopMapAccess DesktopMapAccess = dsns__DesktopMapAccess__DbError;
  dsns__DesktopLoginResponseClass* DesktopLoginResponseObject = nullptr;
  dsns__DesktopInfoClass* DesktopInfoClass = nullptr;
  struct soap* soap = nullptr;

  static constexpr auto rows() {
    return std::array{row<&Self::DesktopMapAccess>("dsns:DesktopMapAccess"),
                      row<&Self::DesktopLoginResponseObject>("dsns:DesktopLoginResponseObject"),
                      row<&Self::DesktopInfoClass>("dsns:DesktopInfoClass")};
  }
};

/// "dsns:DesktopVersioningClass": the result of the version checks. `Version` is a text here, not a number.
class dsns__DesktopVersioningClass
    : public tarnwell::SchemaClass<dsns__DesktopVersioningClass, SOAP_TYPE_dsns__DesktopVersioningClass> {
public:
  xsd__string* Path = nullptr;
  xsd__string* Version = nullptr;
  struct soap* soap = nullptr;

  static constexpr auto rows() {
    return std::array{row<&Self::Path>("dsns:Path"), row<&Self::Version>("dsns:Version")};
  }
};
