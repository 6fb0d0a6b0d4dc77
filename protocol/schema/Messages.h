// The request and response elements of the 23 operations. A request has one of twelve shapes; a response holds one
// result. What a pointer member points to is not owned by the message.
#pragma once

#include "protocol/schema/Operation.h"
#include "protocol/schema/SchemaTypes.h"

namespace tarnwell {

template <class Self> class CredentialsRequest : public SchemaClass<Self> {
public:
  xsd__string* username = nullptr;
  xsd__string* pass = nullptr;
  struct soap* soap = nullptr;

  static constexpr auto rows() {
    return std::array{row<Self, &Self::username>("dsns:username"), row<Self, &Self::pass>("dsns:pass")};
  }
};

template <class Self> class ListRequest : public SchemaClass<Self> {
public:
  xsd__string* username = nullptr;
  xsd__string* pass = nullptr;
  bool IsPublished = false;
  struct soap* soap = nullptr;

  static constexpr auto rows() {
    return std::array{row<Self, &Self::username>("dsns:username"), row<Self, &Self::pass>("dsns:pass"),
                      row<Self, &Self::IsPublished>("dsns:IsPublished")};
  }
};

template <class Self> class ListBehaviourRequest : public SchemaClass<Self> {
public:
  xsd__string* username = nullptr;
  xsd__string* pass = nullptr;
  bool IsPublished = false;
  xsd__string* behaviour = nullptr;
  struct soap* soap = nullptr;

  static constexpr auto rows() {
    return std::array{row<Self, &Self::username>("dsns:username"), row<Self, &Self::pass>("dsns:pass"),
                      row<Self, &Self::IsPublished>("dsns:IsPublished"), row<Self, &Self::behaviour>("dsns:behaviour")};
  }
};

/// Also of rename, whose new name deliberately travels inside `DesktopInfo`.
template <class Self> class MapRequest : public SchemaClass<Self> {
public:
  xsd__string* username = nullptr;
  xsd__string* pass = nullptr;
  dsns__DesktopInfoClass* DesktopInfo = nullptr;
  struct soap* soap = nullptr;

  static constexpr auto rows() {
    return std::array{row<Self, &Self::username>("dsns:username"), row<Self, &Self::pass>("dsns:pass"),
                      row<Self, &Self::DesktopInfo>("dsns:DesktopInfo")};
  }
};

template <class Self> class MapBehaviourRequest : public SchemaClass<Self> {
public:
  xsd__string* username = nullptr;
  xsd__string* pass = nullptr;
  dsns__DesktopInfoClass* DesktopInfo = nullptr;
  xsd__string* behaviour = nullptr;
  struct soap* soap = nullptr;

  static constexpr auto rows() {
    return std::array{row<Self, &Self::username>("dsns:username"), row<Self, &Self::pass>("dsns:pass"),
                      row<Self, &Self::DesktopInfo>("dsns:DesktopInfo"), row<Self, &Self::behaviour>("dsns:behaviour")};
  }
};

template <class Self> class SaveRequest : public SchemaClass<Self> {
public:
  xsd__string* username = nullptr;
  xsd__string* pass = nullptr;
  dsns__DesktopInfoClass* DesktopInfo = nullptr;
  bool IsForced = false;
  struct soap* soap = nullptr;

  static constexpr auto rows() {
    return std::array{row<Self, &Self::username>("dsns:username"), row<Self, &Self::pass>("dsns:pass"),
                      row<Self, &Self::DesktopInfo>("dsns:DesktopInfo"), row<Self, &Self::IsForced>("dsns:IsForced")};
  }
};

template <class Self> class SaveBehaviourRequest : public SchemaClass<Self> {
public:
  xsd__string* username = nullptr;
  xsd__string* pass = nullptr;
  dsns__DesktopInfoClass* DesktopInfo = nullptr;
  bool IsForced = false;
  xsd__string* behaviour = nullptr;
  struct soap* soap = nullptr;

  static constexpr auto rows() {
    return std::array{row<Self, &Self::username>("dsns:username"), row<Self, &Self::pass>("dsns:pass"),
                      row<Self, &Self::DesktopInfo>("dsns:DesktopInfo"), row<Self, &Self::IsForced>("dsns:IsForced"),
                      row<Self, &Self::behaviour>("dsns:behaviour")};
  }
};

/// The formats deliberately come before the map.
template <class Self> class ConvertRequest : public SchemaClass<Self> {
public:
  xsd__string* username = nullptr;
  xsd__string* pass = nullptr;
  xsd__string* inFormat = nullptr;
  xsd__string* outFormat = nullptr;
  dsns__DesktopInfoClass* DesktopInfo = nullptr;
  struct soap* soap = nullptr;

  static constexpr auto rows() {
    return std::array{row<Self, &Self::username>("dsns:username"), row<Self, &Self::pass>("dsns:pass"),
                      row<Self, &Self::inFormat>("dsns:inFormat"), row<Self, &Self::outFormat>("dsns:outFormat"),
                      row<Self, &Self::DesktopInfo>("dsns:DesktopInfo")};
  }
};

template <class Self> class VersionRequest : public SchemaClass<Self> {
public:
  xsd__string* version = nullptr;
  int desktopLiveUpdateType = 0;
  struct soap* soap = nullptr;

  static constexpr auto rows() {
    return std::array{row<Self, &Self::version>("dsns:version"),
                      row<Self, &Self::desktopLiveUpdateType>("dsns:desktopLiveUpdateType")};
  }
};

/// The application's update type deliberately comes first.
template <class Self> class ExtendedVersionRequest : public SchemaClass<Self> {
public:
  int applicationUpdateType = 0;
  xsd__string* version = nullptr;
  int desktopLiveUpdateType = 0;
  struct soap* soap = nullptr;

  static constexpr auto rows() {
    return std::array{row<Self, &Self::applicationUpdateType>("dsns:applicationUpdateType"),
                      row<Self, &Self::version>("dsns:version"),
                      row<Self, &Self::desktopLiveUpdateType>("dsns:desktopLiveUpdateType")};
  }
};

template <class Self> class FeedbackRequest : public SchemaClass<Self> {
public:
  xsd__string* name = nullptr;
  xsd__string* email = nullptr;
  xsd__string* subject = nullptr;
  xsd__string* message = nullptr;
  struct soap* soap = nullptr;

  static constexpr auto rows() {
    return std::array{row<Self, &Self::name>("dsns:name"), row<Self, &Self::email>("dsns:email"),
                      row<Self, &Self::subject>("dsns:subject"), row<Self, &Self::message>("dsns:message")};
  }
};

/// Deliberately without name and mail address.
template <class Self> class AttachmentRequest : public SchemaClass<Self> {
public:
  xsd__string* subject = nullptr;
  xsd__string* message = nullptr;
  xsd__base64Binary* bytes = nullptr;
  xsd__string* filename = nullptr;
  struct soap* soap = nullptr;

  static constexpr auto rows() {
    return std::array{row<Self, &Self::subject>("dsns:subject"), row<Self, &Self::message>("dsns:message"),
                      row<Self, &Self::bytes>("dsns:bytes"), row<Self, &Self::filename>("dsns:filename")};
  }
};

} // namespace tarnwell

#define TARNWELL_OPERATION(Name, Wire, Shape, ResultClass)                                                             \
  class _dsns__##Name : public tarnwell::Shape<_dsns__##Name> {                                                        \
  public:                                                                                                              \
    static constexpr int number = SOAP_TYPE__dsns__##Name;                                                             \
  };                                                                                                                   \
  class _dsns__##Name##Response : public tarnwell::SchemaClass<_dsns__##Name##Response> {                              \
  public:                                                                                                              \
    ResultClass* Name##Result = nullptr;                                                                               \
    struct soap* soap = nullptr;                                                                                       \
    static constexpr int number = SOAP_TYPE__dsns__##Name##Response;                                                   \
    static constexpr auto rows() {                                                                                     \
      return std::array{                                                                                               \
          tarnwell::row<_dsns__##Name##Response, &_dsns__##Name##Response::Name##Result>("dsns:" Wire "Result")};      \
    }                                                                                                                  \
  };
#include "protocol/schema/Operations.inc"
#undef TARNWELL_OPERATION
