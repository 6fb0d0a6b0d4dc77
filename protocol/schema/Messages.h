// The request and response elements of the 23 operations. A request is one of twelve shapes, each a sequence of groups
// of elements; a response holds one result. What a pointer member points to is not owned by the message.
#pragma once

#include "protocol/schema/Operation.h"
#include "protocol/schema/SchemaTypes.h"

#include <tuple>

namespace tarnwell {

// The groups: members and rows in wire order. `Self` is the request that has the group.
namespace request {

struct Credentials {
  xsd__string* username = nullptr;
  xsd__string* pass = nullptr;

  template <class Self> static constexpr auto rows() {
    return std::array{row<Self, &Self::username>("dsns:username"), row<Self, &Self::pass>("dsns:pass")};
  }
};

struct Map {
  dsns__DesktopInfoClass* DesktopInfo = nullptr;

  template <class Self> static constexpr auto rows() {
    return std::array{row<Self, &Self::DesktopInfo>("dsns:DesktopInfo")};
  }
};

struct Published {
  bool IsPublished = false;

  template <class Self> static constexpr auto rows() {
    return std::array{row<Self, &Self::IsPublished>("dsns:IsPublished")};
  }
};

struct Forced {
  bool IsForced = false;

  template <class Self> static constexpr auto rows() { return std::array{row<Self, &Self::IsForced>("dsns:IsForced")}; }
};

struct Behaviour {
  xsd__string* behaviour = nullptr;

  template <class Self> static constexpr auto rows() {
    return std::array{row<Self, &Self::behaviour>("dsns:behaviour")};
  }
};

struct Formats {
  xsd__string* inFormat = nullptr;
  xsd__string* outFormat = nullptr;

  template <class Self> static constexpr auto rows() {
    return std::array{row<Self, &Self::inFormat>("dsns:inFormat"), row<Self, &Self::outFormat>("dsns:outFormat")};
  }
};

struct ApplicationUpdate {
  int applicationUpdateType = 0;

  template <class Self> static constexpr auto rows() {
    return std::array{row<Self, &Self::applicationUpdateType>("dsns:applicationUpdateType")};
  }
};

struct Version {
  xsd__string* version = nullptr;
  int desktopLiveUpdateType = 0;

  template <class Self> static constexpr auto rows() {
    return std::array{row<Self, &Self::version>("dsns:version"),
                      row<Self, &Self::desktopLiveUpdateType>("dsns:desktopLiveUpdateType")};
  }
};

struct Sender {
  xsd__string* name = nullptr;
  xsd__string* email = nullptr;

  template <class Self> static constexpr auto rows() {
    return std::array{row<Self, &Self::name>("dsns:name"), row<Self, &Self::email>("dsns:email")};
  }
};

struct Message {
  xsd__string* subject = nullptr;
  xsd__string* message = nullptr;

  template <class Self> static constexpr auto rows() {
    return std::array{row<Self, &Self::subject>("dsns:subject"), row<Self, &Self::message>("dsns:message")};
  }
};

struct Attachment {
  xsd__base64Binary* bytes = nullptr;
  xsd__string* filename = nullptr;

  template <class Self> static constexpr auto rows() {
    return std::array{row<Self, &Self::bytes>("dsns:bytes"), row<Self, &Self::filename>("dsns:filename")};
  }
};

} // namespace request

/// A request `Self` with the elements of these groups, in this order.
template <class Self, int number, class... Groups> class Request : public SchemaClass<Self, number>, public Groups... {
public:
  struct soap* soap = nullptr;

  static constexpr auto rows() {
    return std::apply([](auto... all) { return std::array{all...}; }, std::tuple_cat(Groups::template rows<Self>()...));
  }
};

template <class Self, int number> using CredentialsRequest = Request<Self, number, request::Credentials>;
template <class Self, int number> using ListRequest = Request<Self, number, request::Credentials, request::Published>;
template <class Self, int number>
using ListBehaviourRequest = Request<Self, number, request::Credentials, request::Published, request::Behaviour>;
/// Also of rename: the service expects the new name inside `DesktopInfo`.
template <class Self, int number> using MapRequest = Request<Self, number, request::Credentials, request::Map>;
template <class Self, int number>
using MapBehaviourRequest = Request<Self, number, request::Credentials, request::Map, request::Behaviour>;
template <class Self, int number>
using SaveRequest = Request<Self, number, request::Credentials, request::Map, request::Forced>;
template <class Self, int number>
using SaveBehaviourRequest =
    Request<Self, number, request::Credentials, request::Map, request::Forced, request::Behaviour>;
/// The service expects the formats before the map.
template <class Self, int number>
using ConvertRequest = Request<Self, number, request::Credentials, request::Formats, request::Map>;
template <class Self, int number> using VersionRequest = Request<Self, number, request::Version>;
/// The service expects the application's update type first.
template <class Self, int number>
using ExtendedVersionRequest = Request<Self, number, request::ApplicationUpdate, request::Version>;
template <class Self, int number> using FeedbackRequest = Request<Self, number, request::Sender, request::Message>;
/// The service expects no name and mail address here.
template <class Self, int number>
using AttachmentRequest = Request<Self, number, request::Message, request::Attachment>;

} // namespace tarnwell

#define TARNWELL_OPERATION(Name, Wire, Shape, ResultClass)                                                             \
  class _dsns__##Name : public tarnwell::Shape<_dsns__##Name, SOAP_TYPE__dsns__##Name> {};                             \
  class _dsns__##Name##Response                                                                                        \
      : public tarnwell::SchemaClass<_dsns__##Name##Response, SOAP_TYPE__dsns__##Name##Response> {                     \
  public:                                                                                                              \
    ResultClass* Name##Result = nullptr;                                                                               \
    struct soap* soap = nullptr;                                                                                       \
    static constexpr auto rows() { return std::array{row<&Self::Name##Result>("dsns:" Wire "Result")}; }               \
  };
#include "protocol/schema/Operations.inc"
#undef TARNWELL_OPERATION
